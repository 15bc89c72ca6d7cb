// The table of labelled data.
#include "survival/roc/roc.h"
#include "tests/support/matrices.h"
#include "tests/survival/roc/support.h"

namespace {

using namespace survmeth::test::roc;
using Doubles = std::vector<double>;

struct Labelled {
  std::vector<std::wstring> labels{L"sick", L"well", L"sick", L"well", L"Sick", L"sick ", L""};
  std::wstring positive = L"sick";
  Doubles values{1, 1, 3, 3, 2, 2, 2};
  Doubles weights{1, 2, 4, 8, 16, 32, 64};
  short exactMatch = 0;
  double threshold = 2;
  int rule = 3;
  Doubles table{0, 0, 0, 0};

  // Row by row: test positive and truly so, falsely so, test negative falsely, truly.
  Doubles run() {
    std::vector<wchar_t*> pointers;
    for (std::wstring& label : labels) pointers.push_back(label.data());
    Cpp_CreateROCContingencyTable(pointers.data(), static_cast<int>(labels.size()), positive.data(),
                                  values.data(), exactMatch, threshold, rule, weights.data(),
                                  table.data());
    return {table[0], table[2], table[1], table[3]};
  }
};

TEST(RocLabels, RulesAreNumberedFromOne) {
  const double others = 16 + 32 + 64;  // negatives at the threshold
  const Doubles expected[] = {
      {1, 2, 4, 8 + others}, {1, 2 + others, 4, 8}, {4, 8 + others, 1, 2}, {4, 8, 1, 2 + others}};
  for (int rule = 1; rule <= 4; ++rule) {
    Labelled data;
    data.rule = rule;
    EXPECT_EQ(data.run(), expected[rule - 1]) << rule;
  }
}

TEST(RocLabels, AnyOtherRuleCallsNothingPositive) {
  for (const int rule : {0, 5, -1, 99}) {
    Labelled data;
    data.rule = rule;
    EXPECT_EQ(data.run(), (Doubles{0, 0, 5, 122}));
  }
}

TEST(RocLabels, CaseBlanksAndEmptyLabelsAreNegative) {
  Labelled data;
  EXPECT_EQ(data.run(), (Doubles{4, 8 + 16 + 32 + 64, 1, 2}));
}

TEST(RocLabels, AnEmptyPositiveLabelMatchesEmptyLabels) {
  Labelled data;
  data.positive = L"";
  EXPECT_EQ(data.run(), (Doubles{64, 4 + 8 + 16 + 32, 0, 3}));
}

TEST(RocLabels, LabelsBeyondTheBasicPlaneAreCompared) {
  Labelled data;
  data.labels[1] = L"\u00e9t\u00e9";
  data.positive = L"\u00e9t\u00e9";
  EXPECT_EQ(data.run(), (Doubles{0, 4 + 8 + 16 + 32 + 64, 2, 1}));
}

TEST(RocLabels, AnExactMatchIgnoresTheRule) {
  for (const int rule : {1, 4, 0}) {
    Labelled data;
    data.exactMatch = -1;
    data.rule = rule;
    data.values[0] = std::nextafter(2.0, 3.0);
    data.values[2] = 2.0;
    EXPECT_EQ(data.run(), (Doubles{4, 16 + 32 + 64, 1, 10}));
  }
}

TEST(RocLabels, AFlagOfOneIsNotAnExactMatch) {
  for (const short flag : {short{1}, short{2}, short{-2}}) {
    Labelled data;
    data.exactMatch = flag;
    EXPECT_EQ(data.run(), (Doubles{4, 120, 1, 2}));
  }
}

TEST(RocLabels, WeightsAreAddedToWhatTheTableHolds) {
  Labelled data;
  data.table = {100, 200, 300, 400};
  EXPECT_EQ(data.run(), (Doubles{104, 420, 201, 402}));
}

TEST(RocLabels, MissingAndUnusualValuesAreComparedAsTheyStand) {
  Labelled data;
  data.values = {kMissing, kNaN, kInf, -kInf, kNaN, 2, kMissing};
  EXPECT_EQ(data.run(), (Doubles{4, 32, 1, 2 + 8 + 16 + 64}));
  data = Labelled();
  data.threshold = kNaN;
  EXPECT_EQ(data.run(), (Doubles{0, 0, 5, 122}));
}

TEST(RocLabels, NoObservationsLeaveTheTable) {
  Doubles table{1, 2, 3, 4};
  wchar_t label[] = L"sick";
  for (const int n : {0, -1, -2147483647 - 1}) {
    Cpp_CreateROCContingencyTable(nullptr, n, label, nullptr, 0, 2, 3, nullptr, table.data());
  }
  EXPECT_EQ(table, (Doubles{1, 2, 3, 4}));
}

TEST(RocLabels, TheMatrixFormStopsAtTheEndOfTheColumns) {
  wchar_t sick[] = L"sick";
  wchar_t* pointers[] = {sick, sick};
  Smatrix labels(2, 1, pointers, 0, 0);
  survmeth::test::Column values({1, 3});
  survmeth::test::Column weights({1, 2});
  matrix table(2, 2, 0);
  EXPECT_EQ(
      CreateROCContingencyTable(&labels, 2147483647, L"sick", &values, 0, 2, 3, &weights, &table),
      0);
  EXPECT_EQ(survmeth::test::elements(table), (Doubles{2, 1, 0, 0}));
}

}  // namespace
