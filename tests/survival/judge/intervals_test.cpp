// PrepareIntervalData: classification, order, summary, codes.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <random>

#include "survival/calls/judge.h"
#include "survival/judge/judge.h"
#include "tests/support/matrices.h"

namespace survmeth::test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// One subject per row of answers; outputs are filled with 777 unless a caller passes zeros.
struct Intervals {
  Intervals(const std::vector<std::vector<double>>& table, const std::vector<double>& inspections,
            int covariateCount = 0)
      : n(static_cast<int>(table.size())),
        k(static_cast<int>(inspections.size())),
        p(covariateCount),
        answers(table),
        times(inspections),
        covariates(n, p, 0),
        flags(n, 1, 0),
        bounds(n, 2, 777),
        type(n, 1, 777),
        sortKey(n, 1, 777),
        covariatesOut(n, p, 777),
        summary(k, 2, 777) {
    for (int i = 1; i <= n; ++i) {
      for (int j = 1; j <= p; ++j) covariates.vbset(i, j, 10 * i + j);
    }
  }

  int run() {
    return PrepareIntervalData(&answers, n, k, &times, &covariates, p, &removed, &flags, &kept,
                               &bounds, &type, &sortKey, &covariatesOut, &summary);
  }

  int n;
  int k;
  int p;
  Rows answers;
  Column times;
  matrix covariates;
  matrixInt flags;
  matrix bounds;
  matrix type;
  matrix sortKey;
  matrix covariatesOut;
  matrix summary;
  int removed = 777;
  int kept = 777;
};

// Type, lower bound, upper bound and sort time of a single subject.
std::vector<double> rowOf(const std::vector<double>& answers, const std::vector<double>& times) {
  Intervals data({answers}, times);
  data.run();
  return {data.type.vbget(1, 1), data.bounds.vbget(1, 1), data.bounds.vbget(1, 2),
          data.sortKey.vbget(1, 1)};
}

using Values = std::vector<double>;

TEST(IntervalData, YesThroughoutIsRightCensoredAtTheLastInspection) {
  EXPECT_EQ((Values{0.0, 777.0, 777.0, 9.0}), rowOf({1, 1, 1}, {2, 5, 9}));
}

TEST(IntervalData, AChangeToNoIsAnInterval) {
  EXPECT_EQ((Values{3.0, 2.0, 5.0, 2.0}), rowOf({1, 0, 0}, {2, 5, 9}));
  EXPECT_EQ((Values{3.0, 5.0, 9.0, 5.0}), rowOf({1, 1, 0}, {2, 5, 9}));
}

TEST(IntervalData, AnIntervalFromZeroMovesOneInspectionOn) {
  EXPECT_EQ((Values{3.0, 5.0, 9.0, 5.0}), rowOf({1, 0, 0}, {0, 5, 9}));
  // Past the last inspection the bound is the -1 that lies there.
  EXPECT_EQ((Values{3.0, 5.0, -1.0, 5.0}), rowOf({1, 0}, {0, 5}));
  // A negative zero is a zero, a tiny time is not.
  EXPECT_EQ((Values{3.0, 5.0, 9.0, 5.0}), rowOf({1, 0, 0}, {-0.0, 5, 9}));
  EXPECT_EQ((Values{3.0, 1e-300, 5.0, 1e-300}), rowOf({1, 0, 0}, {1e-300, 5, 9}));
}

TEST(IntervalData, ALaterYesIsLeftCensoredAtTheFirstNo) {
  // The bounds stay those of the first change.
  EXPECT_EQ((Values{2.0, 2.0, 5.0, 5.0}), rowOf({1, 0, 1}, {2, 5, 9}));
  EXPECT_EQ((Values{2.0, 2.0, 5.0, 5.0}), rowOf({1, 0, 0, 1}, {2, 5, 9, 12}));
}

TEST(IntervalData, ANoAfterThatIsAnIntervalUpToIt) {
  EXPECT_EQ((Values{3.0, 2.0, 12.0, 5.0}), rowOf({1, 0, 1, 0}, {2, 5, 9, 12}));
  // Only the first no after a yes moves the bound; the next yes undoes it.
  EXPECT_EQ((Values{3.0, 2.0, 12.0, 5.0}), rowOf({1, 0, 1, 0, 0}, {2, 5, 9, 12, 15}));
  EXPECT_EQ((Values{2.0, 2.0, 12.0, 5.0}), rowOf({1, 0, 1, 0, 1}, {2, 5, 9, 12, 15}));
}

TEST(IntervalData, ANoAtTheTimeOfTheLowerBoundDoesNotCount) {
  // Inspections 1 and 4 share a time; the lower bound is that of inspection 1.
  EXPECT_EQ((Values{2.0, 2.0, 5.0, 5.0}), rowOf({1, 0, 1, 0}, {2, 5, 9, 2}));
}

TEST(IntervalData, OtherAnswersAreNeitherYesNorNo) {
  EXPECT_EQ((Values{0.0, 777.0, 777.0, 9.0}), rowOf({0.5, kNaN, 2}, {2, 5, 9}));
  EXPECT_EQ((Values{3.0, 2.0, 5.0, 2.0}), rowOf({kNaN, 0, 0.999}, {2, 5, 9}));
  EXPECT_EQ((Values{3.0, 2.0, 5.0, 2.0}), rowOf({1, -0.0, 0}, {2, 5, 9}));
}

TEST(IntervalData, WithOneInspectionAYesGetsNothing) {
  EXPECT_EQ((Values{777.0, 777.0, 777.0, 777.0}), rowOf({1}, {2}));
}

TEST(IntervalData, AFirstNoDropsTheSubject) {
  Intervals data({{0, 1, 1}}, {2, 5, 9});
  EXPECT_EQ(-2, data.run());
  EXPECT_EQ(1, data.flags.vbget(1, 1));
  EXPECT_EQ(-1.0, data.type.vbget(1, 1));
  EXPECT_EQ(777.0, data.sortKey.vbget(1, 1));
  EXPECT_EQ(777.0, data.bounds.vbget(1, 1));
  EXPECT_EQ(1, data.removed);
  EXPECT_EQ(0, data.kept);
  // The summary of no rows.
  EXPECT_EQ((Values{0, 0, 0, 0, 0, 0}), elements(data.summary));
}

TEST(IntervalData, SubjectsAreSortedAndDroppedOnesTakenOut) {
  // Sort times: 9, (dropped, 0), 2, 5; the dropped subject comes first and leaves no trace.
  Intervals data({{1, 1, 1}, {0, 1, 1}, {1, 0, 0}, {1, 1, 0}}, {2, 5, 9}, 2);
  data.sortKey.vbset(2, 1, 0.0);
  EXPECT_EQ(0, data.run());
  EXPECT_EQ(1, data.removed);
  EXPECT_EQ(3, data.kept);
  EXPECT_EQ((Values{3.0, 3.0, 0.0, 0.0}), elements(data.type));
  EXPECT_EQ((Values{2.0, 5.0, 9.0, 9.0}), elements(data.sortKey));
  EXPECT_EQ((std::vector<int>{1, 0, 0, 0}), elements(data.flags));
  // The bounds are sorted, the dropped subject's row included.
  EXPECT_EQ((Values{777.0, 2.0, 5.0, 777.0, 777.0, 5.0, 9.0, 777.0}), elements(data.bounds));
  EXPECT_EQ((Values{31.0, 41.0, 11.0, 777.0, 32.0, 42.0, 12.0, 777.0}),
            elements(data.covariatesOut));
}

TEST(IntervalData, ADroppedSubjectThatSortsLastMakesTheResultMinusOne) {
  Intervals data({{0, 1, 1}, {1, 0, 0}}, {2, 5, 9});
  EXPECT_EQ(-1, data.run());
  EXPECT_EQ((Values{3.0, -1.0}), elements(data.type));
  EXPECT_EQ((Values{2.0, 777.0}), elements(data.sortKey));
  EXPECT_EQ(1, data.kept);
}

TEST(IntervalData, ACodePassedForAnUnclassifiedSubjectIsChecked) {
  for (const double code : {-0.5, 3.5, 0.0, 3.0, kNaN}) {
    Intervals data({{1}, {1}}, {2});
    data.type.vbset(1, 1, code);
    data.type.vbset(2, 1, 1.0);
    EXPECT_EQ(code < 0.0 || code > 3.0 ? -1 : 0, data.run());
  }
}

TEST(IntervalData, EqualSortTimesKeepTheirOrder) {
  Intervals data({{1, 0}, {1, 0}, {1, 1}, {1, 0}}, {2, 5}, 1);
  EXPECT_EQ(0, data.run());
  EXPECT_EQ((Values{11.0, 21.0, 41.0, 31.0}), elements(data.covariatesOut));
}

TEST(IntervalData, TheSummaryTakesTheFirstRowsOfTheAnswersAsPassed) {
  // Two kept: the first two rows, dropped subject included, in percent of all three.
  Intervals data({{0, 1}, {1, 1}, {1, 0}}, {2, 5});
  data.sortKey.vbset(1, 1, 0.0);
  EXPECT_EQ(0, data.run());
  EXPECT_EQ(2, data.kept);
  EXPECT_EQ((Values{1.0, 2.0, 100.0 / 3.0, 200.0 / 3.0}), elements(data.summary));
}

TEST(IntervalData, FlagsPassedInTakePart) {
  Intervals data({{1, 0}, {1, 1}}, {2, 5});
  data.flags.vbset(2, 1, 1);
  EXPECT_EQ(0, data.run());
  EXPECT_EQ(1, data.removed);
  EXPECT_EQ((Values{3.0, 0.0}), elements(data.type));
  // A flag of 3 counts three subjects: nothing that can be kept, and one row too few.
  Intervals three({{1, 0}, {1, 1}}, {2, 5});
  three.flags.vbset(1, 1, 3);
  EXPECT_EQ(0, three.run());
  EXPECT_EQ(3, three.removed);
  EXPECT_EQ(-1, three.kept);
  EXPECT_EQ(0.0, three.summary.vbget(1, 1));
}

TEST(IntervalData, RowsPastTheAnswersCountMinusOneInTheSummary) {
  // A flag of -2: four rows are summed, two of them past the end of the last column.
  Intervals data({{1, 1}, {1, 1}}, {2, 5});
  data.flags.vbset(2, 1, -2);
  EXPECT_EQ(0, data.run());
  EXPECT_EQ(4, data.kept);
  EXPECT_EQ(4.0, data.summary.vbget(1, 1));
  EXPECT_EQ(0.0, data.summary.vbget(2, 1));
  Intervals absurd({{1, 1}, {1, 1}}, {2, 5});
  absurd.flags.vbset(2, 1, -2000000000);
  EXPECT_EQ(0, absurd.run());
  EXPECT_EQ(2000000002, absurd.kept);
  EXPECT_EQ(4.0 - (2000000002.0 - 4.0), absurd.summary.vbget(1, 1));
}

TEST(IntervalData, CountsOfZeroAndBelow) {
  Intervals none({}, {2, 5});
  EXPECT_EQ(-2, none.run());
  EXPECT_EQ(0, none.kept);
  Intervals negative({{1, 0}}, {2, 5});
  negative.n = -3;
  EXPECT_EQ(0, negative.run());
  EXPECT_EQ(-3, negative.kept);
  EXPECT_EQ(0.0, negative.summary.vbget(1, 1));
  Intervals blank({{1, 0}}, {2, 5});
  blank.k = -1;
  blank.p = -1;
  EXPECT_EQ(-1, blank.run());
  EXPECT_EQ(777.0, blank.summary.vbget(1, 1));
  // Inspections past the table end the scan; the last time reads -1.
  Intervals wide({{1, 1}}, {2, 5});
  wide.k = std::numeric_limits<int>::max();
  EXPECT_EQ(0, wide.run());
  EXPECT_EQ(-1.0, wide.sortKey.vbget(1, 1));
}

// A second classification, by runs of answers instead of one after the other.
struct Classified {
  bool dropped = false;
  bool written = false;
  double type = 777.0, lower = 777.0, upper = 777.0, key = 777.0;
};

Classified classifyByRuns(const Values& a, const Values& t) {
  Classified row;
  const int k = static_cast<int>(a.size());
  const auto time = [&](int j) { return j < static_cast<int>(t.size()) ? t[j] : -1.0; };
  if (a[0] == 0.0) {
    row.dropped = true;
    row.type = -1.0;
    return row;
  }
  if (k < 2) return row;
  row.written = true;
  const int no = static_cast<int>(std::find(a.begin() + 1, a.end(), 0.0) - a.begin());
  if (no == k) {
    row.type = 0.0;
    row.key = t.back();
    return row;
  }
  const int from = t[no - 1] == 0.0 ? no : no - 1;
  row.lower = row.key = time(from);
  row.upper = time(from + 1);
  row.type = 3.0;
  // Every yes after the first no opens a run that lasts to the next yes; what it leaves depends
  // on its own answers only.
  for (int yes = no; yes < k; ++yes) {
    if (a[yes] != 1.0) continue;
    row.key = t[no];
    row.type = 2.0;
    const int end = static_cast<int>(std::find(a.begin() + yes + 1, a.end(), 1.0) - a.begin());
    for (int j = end - 1; j > yes; --j) {
      if (a[j] != 0.0 || t[j] == row.lower) continue;
      row.type = 3.0;
      row.upper = t[j];
    }
  }
  return row;
}

TEST(IntervalData, AgreesWithASecondClassificationOnRandomTables) {
  std::mt19937 random(20130517);
  const auto pick = [&](int below) { return static_cast<int>(random() % below); };
  for (int trial = 0; trial < 4000; ++trial) {
    const int n = 1 + pick(9);
    const int k = 1 + pick(7);
    std::vector<Values> table(n, Values(k));
    for (Values& answers : table) {
      for (double& answer : answers) answer = pick(20) == 0 ? 0.5 : pick(3) == 0 ? 0.0 : 1.0;
    }
    Values times(k);
    for (double& time : times) time = pick(8);
    if (pick(4) != 0) std::sort(times.begin(), times.end());
    Intervals data(table, times, 2);
    for (int i = 1; i <= n; ++i) {
      data.sortKey.vbset(i, 1, pick(5));
      data.type.vbset(i, 1, 1.0);
    }

    std::vector<Classified> rows;
    std::vector<double> keys;
    for (int i = 0; i < n; ++i) {
      rows.push_back(classifyByRuns(table[i], times));
      keys.push_back(rows[i].written ? rows[i].key : data.sortKey.vbget(i + 1, 1));
      if (!rows[i].written && !rows[i].dropped) rows[i].type = 1.0;
    }
    std::vector<int> order(n);
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return keys[a] < keys[b]; });

    Values type, key, lower, upper, first;
    std::vector<int> flags;
    for (const int i : order) {
      type.push_back(rows[i].type);
      key.push_back(keys[i]);
      lower.push_back(rows[i].lower);
      upper.push_back(rows[i].upper);
      flags.push_back(rows[i].dropped ? 1 : 0);
    }
    Values typeOut = type, keyOut = key;
    int kept = 0;
    for (int r = 0; r < n; ++r) {
      if (flags[r] != 0) continue;
      typeOut[kept] = type[r];
      keyOut[kept] = key[r];
      first.push_back(10.0 * (order[r] + 1) + 1);
      ++kept;
    }
    const bool outside = std::any_of(typeOut.begin(), typeOut.end(),
                                     [](double code) { return code < 0.0 || code > 3.0; });
    ASSERT_EQ(kept == 0 ? -2 : outside ? -1 : 0, data.run());
    ASSERT_EQ(kept, data.kept);
    ASSERT_EQ(n - kept, data.removed);
    ASSERT_EQ(typeOut, elements(data.type));
    ASSERT_EQ(keyOut, elements(data.sortKey));
    ASSERT_EQ(flags, elements(data.flags));
    lower.insert(lower.end(), upper.begin(), upper.end());
    ASSERT_EQ(lower, elements(data.bounds));
    first.resize(n, 777.0);
    ASSERT_EQ(first, Values(data.covariatesOut.data(), data.covariatesOut.data() + n));
    for (int j = 0; j < k; ++j) {
      double sum = 0.0;
      for (int i = 0; i < kept; ++i) sum += table[i][j];
      ASSERT_EQ(sum, data.summary.vbget(j + 1, 1));
      ASSERT_EQ(sum * 100.0 / n, data.summary.vbget(j + 1, 2));
    }
  }
}

TEST(IntervalDataEntryPoint, GivesBackEverythingButItsInputs) {
  Values answers = {1, 0, 1, 1, 0, 1}, times = {2, 5}, covariates = {7, 8, 9};
  const Values given = covariates;
  std::vector<int> flags(3, 0);
  Values bounds(6, 777.0), type(3, 777.0), key = {777.0, 0.0, 777.0}, out(3, 777.0);
  Values summary(4, 777.0);
  int removed = 777, kept = 777;
  // Subjects: yes yes; no (dropped, sorts first); yes yes.
  EXPECT_EQ(0, Cpp_PrepareIntervalData(answers.data(), 3, 2, times.data(), covariates.data(), 1,
                                       &removed, flags.data(), &kept, bounds.data(), type.data(),
                                       key.data(), out.data(), summary.data()));
  EXPECT_EQ(given, covariates);
  EXPECT_EQ((Values{2, 5}), times);
  EXPECT_EQ(1, removed);
  EXPECT_EQ(2, kept);
  EXPECT_EQ((std::vector<int>{1, 0, 0}), flags);
  EXPECT_EQ((Values{0, 0, 0}), type);
  EXPECT_EQ((Values{5, 5, 5}), key);
  EXPECT_EQ((Values{7, 9, 777}), out);
  EXPECT_EQ(Values(6, 777.0), bounds);
  EXPECT_EQ((Values{1, 1, 100.0 / 3.0, 100.0 / 3.0}), summary);
}

TEST(IntervalDataEntryPoint, WithoutCovariatesTheirArraysStayAsTheyAre) {
  Values answers = {1, 0}, times = {2, 5}, cell = {777.0};
  std::vector<int> flags(1, 0);
  Values bounds(2), type(1), key(1), summary(4);
  int removed = 0, kept = 0;
  for (const int p : {0, -1}) {
    EXPECT_EQ(0, Cpp_PrepareIntervalData(answers.data(), 1, 2, times.data(), cell.data(), p,
                                         &removed, flags.data(), &kept, bounds.data(), type.data(),
                                         key.data(), cell.data(), summary.data()));
    EXPECT_EQ(777.0, cell[0]);
    EXPECT_EQ((Values{2.0, 5.0}), bounds);
  }
}

}  // namespace
}  // namespace survmeth::test
