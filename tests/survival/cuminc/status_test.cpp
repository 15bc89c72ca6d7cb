// Status check of competing-risks data.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "survival/calls/cuminc.h"
#include "survival/cuminc/cuminc.h"
#include "tests/support/matrices.h"

namespace {

using survmeth::test::Column;
using survmeth::test::elements;
using Vector = std::vector<double>;

struct Checked {
  int code;
  Vector codes;  // 88 where not written
  int count;     // 77 where not written
  Vector recoded;
};

Checked check(Vector status, int censorCode) {
  const int n = static_cast<int>(status.size());
  Checked result{0, Vector(status.size(), 88.0), 77, Vector(status.size(), 66.0)};
  const Vector before = status;
  result.code = Cpp_CheckStatusFormat(status.data(), n, result.codes.data(), &result.count,
                                      censorCode, result.recoded.data());
  EXPECT_EQ(std::memcmp(status.data(), before.data(), status.size() * sizeof(double)), 0);
  return result;
}

TEST(CheckStatusFormat, CodesAreNumberedInOrderOfFirstAppearance) {
  const Checked result = check({0, 2, 0, 5, 2}, 0);
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.count, 2);
  EXPECT_EQ(result.codes, (Vector{2, 5, 88, 88, 88}));
  EXPECT_EQ(result.recoded, (Vector{0, 1, 0, 2, 1}));
}

TEST(CheckStatusFormat, AnEventInTheFirstRowBecomesTypeOne) {
  const Checked result = check({7, 9, 3, 7}, 9);
  EXPECT_EQ(result.recoded, (Vector{1, 0, 2, 1}));
  EXPECT_EQ(result.codes, (Vector{7, 3, 88, 88}));
}

TEST(CheckStatusFormat, ACensoredFirstRowKeepsItsRawCode) {
  const Checked result = check({9, 9, 4, 9}, 9);
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.count, 1);
  EXPECT_EQ(result.recoded, (Vector{9, 0, 1, 0}));
}

TEST(CheckStatusFormat, WithoutAnyEventThePositionPastTheEndBecomesEventCodeMinusOne) {
  const Checked zero = check({0, 0, 0}, 0);
  EXPECT_EQ(zero.code, 0);
  EXPECT_EQ(zero.count, 1);
  EXPECT_EQ(zero.codes, (Vector{-1, 88, 88}));
  EXPECT_EQ(zero.recoded, (Vector{0, 0, 0}));

  const Checked two = check({2, 2, 2}, 2);
  EXPECT_EQ(two.code, 0);
  EXPECT_EQ(two.codes, (Vector{-1, 88, 88}));
  EXPECT_EQ(two.recoded, (Vector{2, 0, 0}));
}

TEST(CheckStatusFormat, WithoutAnyEventAndCensoringCodeMinusOneTheDataAreRefused) {
  const Checked result = check({-1, -1, -1}, -1);
  EXPECT_EQ(result.code, -1);
  EXPECT_EQ(result.count, 77);
  EXPECT_EQ(result.codes, (Vector{88, 88, 88}));
  EXPECT_EQ(result.recoded, (Vector{-1, -1, -1}));
}

TEST(CheckStatusFormat, CodesAreComparedAsNumbers) {
  const Checked result = check({0.5, -0.0, 0.0, 0.25, 0.5, -3}, 0);
  EXPECT_EQ(result.recoded, (Vector{1, 0, 0, 2, 1, 3}));
  EXPECT_EQ(result.codes, (Vector{0.5, 0.25, -3, 88, 88, 88}));
}

TEST(CheckStatusFormat, InfinitiesAreCodesAndEachNotANumberIsANewOne) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Checked result = check({inf, nan, -inf, nan, inf, -inf}, 0);
  EXPECT_EQ(result.count, 4);
  EXPECT_EQ(result.recoded, (Vector{1, 2, 3, 4, 1, 3}));
  EXPECT_TRUE(std::isnan(result.codes[1]));
  EXPECT_TRUE(std::isnan(result.codes[3]));
}

TEST(CheckStatusFormat, NoRowsStillMeetThePositionPastTheEnd) {
  double none = 0.0;
  int count = 5;
  EXPECT_EQ(Cpp_CheckStatusFormat(&none, 0, &none, &count, 0, &none), 0);
  EXPECT_EQ(count, 1);
  count = 5;
  EXPECT_EQ(Cpp_CheckStatusFormat(&none, 0, &none, &count, -1, &none), -1);
  EXPECT_EQ(Cpp_CheckStatusFormat(&none, -1, &none, &count, 0, &none), -1);
  EXPECT_EQ(Cpp_CheckStatusFormat(&none, std::numeric_limits<int>::min(), &none, &count, 0, &none),
            -1);
  EXPECT_EQ(count, 5);
  EXPECT_EQ(none, 0.0);
}

TEST(CheckStatusFormat, ACountBeyondTheColumnsReadsMinusOneThere) {
  for (const int n : {6, std::numeric_limits<int>::max()}) {
    Column status({0, 3, 0});
    Column codes({88, 88, 88});
    Column recoded({66, 66, 66});
    int count = 0;
    EXPECT_EQ(CheckStatusFormat(&status, n, &codes, &count, 0, &recoded), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(elements(codes), (Vector{3, -1, 88}));
    EXPECT_EQ(elements(recoded), (Vector{0, 1, 0}));
  }
}

// The same by plain loops over the containers.
int literalCheck(matrix* status, int n, matrix* codes, int* count, int censorCode,
                 matrix* recoded) {
  for (int i = 1; i <= n; ++i) recoded->vbset(i, 1, status->vbget(i, 1));
  int first = 1;
  while (first <= n + 1 && status->vbget(first, 1) == censorCode) ++first;
  if (first > n + 1) return -1;
  recoded->vbset(first, 1, 1);
  *count = 1;
  codes->vbset(1, 1, status->vbget(first, 1));
  for (int i = 2; i <= n; ++i) {
    const double code = status->vbget(i, 1);
    if (code == censorCode) {
      recoded->vbset(i, 1, 0);
      continue;
    }
    int k = 1;
    while (k <= *count && codes->vbget(k, 1) != code) ++k;
    if (k > *count) {
      *count = k;
      codes->vbset(k, 1, code);
    }
    recoded->vbset(i, 1, k);
  }
  return 0;
}

TEST(CheckStatusFormat, AgreesWithLinearSearchForAllSizesOfTheArrays) {
  std::mt19937 random(1);
  for (int round = 0; round < 3000; ++round) {
    const auto upTo = [&](int limit) { return static_cast<int>(random() % (limit + 1)); };
    Vector raw(static_cast<std::size_t>(upTo(9)));
    for (double& code : raw) code = upTo(4) - 1;
    const int n = upTo(11);
    const int censorCode = upTo(2) - 1;
    const int listed = upTo(9);
    const int kept = upTo(9);
    Column status(raw);
    matrix codes(listed, 1, 50.0), wantedCodes(listed, 1, 50.0);
    matrix recoded(kept, 1, 60.0), wantedRecoded(kept, 1, 60.0);
    int count = 70, wantedCount = 70;
    const int wanted =
        literalCheck(&status, n, &wantedCodes, &wantedCount, censorCode, &wantedRecoded);
    ASSERT_EQ(CheckStatusFormat(&status, n, &codes, &count, censorCode, &recoded), wanted);
    ASSERT_EQ(count, wantedCount);
    ASSERT_EQ(elements(codes), elements(wantedCodes));
    ASSERT_EQ(elements(recoded), elements(wantedRecoded));
  }
}

TEST(CheckStatusFormat, ManyDifferentCodesTakeNoQuadraticTime) {
  Vector status(300000);
  for (std::size_t i = 0; i < status.size(); ++i) status[i] = static_cast<double>(i) + 1.0;
  const Checked result = check(status, 0);
  EXPECT_EQ(result.count, 300000);
  EXPECT_EQ(result.codes, status);
  EXPECT_EQ(result.recoded, status);
}

}  // namespace
