// The worked examples of docs/statistics/judge.md.
#include <gtest/gtest.h>

#include <vector>

#include "survival/calls/judge.h"

namespace survmeth::test {
namespace {

using Values = std::vector<double>;

TEST(IntervalDocument, TheWorkedExampleHolds) {
  // Columns: inspections; rows A to F.
  Values answers = {1, 1, 0, 1, 1, 1, 1, 1, 0, 0, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 0, 1, 0};
  Values times = {1, 3, 6, 12}, covariates = {1, 2, 3, 4, 5, 6};
  std::vector<int> flags(6, 0);
  Values bounds(12, 0.0), type(6, 0.0), key(6, 0.0), out(6, 0.0), summary(8, 0.0);
  int removed = 0, kept = 0;
  EXPECT_EQ(0, Cpp_PrepareIntervalData(answers.data(), 6, 4, times.data(), covariates.data(), 1,
                                       &removed, flags.data(), &kept, bounds.data(), type.data(),
                                       key.data(), out.data(), summary.data()));
  EXPECT_EQ(1, removed);
  EXPECT_EQ(5, kept);
  EXPECT_EQ((std::vector<int>{1, 0, 0, 0, 0, 0}), flags);
  // F, B, D, E, A.
  EXPECT_EQ((Values{6, 2, 4, 5, 1, 0}), out);
  EXPECT_EQ((Values{3, 3, 3, 2, 0, 0}), type);
  EXPECT_EQ((Values{1, 3, 3, 3, 12, 12}), key);
  // C first, without bounds; E keeps those of its first change.
  EXPECT_EQ((Values{0, 1, 3, 1, 1, 0, 0, 3, 6, 12, 3, 0}), bounds);
  EXPECT_EQ((Values{4, 2, 2, 2}), Values(summary.begin(), summary.begin() + 4));
  EXPECT_NEAR(66.7, summary[4], 5e-2);
  for (int j = 5; j < 8; ++j) EXPECT_NEAR(33.3, summary[j], 5e-2);
}

TEST(JudgeDocument, TheWorkedExampleHolds) {
  Values rating = {5, 2, 9, 2}, key = {1, 2, 2, 3}, sizes = {1, 2, 1}, X = {0, 0, 0, 0};
  Values indicators(12, 0.0), subjectX(3, 0.0), levels(4, 0.0);
  EXPECT_EQ(0, Cpp_TransformJudgeToInt(rating.data(), 4, 4, key.data(), 3, sizes.data(), X.data(),
                                       1, indicators.data(), subjectX.data(), levels.data()));
  EXPECT_EQ((Values{0, 2, 5, 9}), levels);
  EXPECT_EQ((Values{1, 1, 1, 1, 0, 1, 1, 0, 0, 1, 1, 1}), indicators);
}

}  // namespace
}  // namespace survmeth::test
