// The worked examples of docs/statistics/judge.md.
#include <gtest/gtest.h>

#include <vector>

#include "survival/calls/judge.h"
#include "tests/support/page.h"

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
  const Page page("judge");
  page.says("F (%.0f), then B, D and E (%.0f, in input order), then A (%.0f)", key[0], key[1],
            key[4]);
  page.says("Types %.0f, %.0f, %.0f, %.0f, %.0f; the sixth entry is the %.0f of A", type[0],
            type[1], type[2], type[3], type[4], type[5]);
  page.says("%.0f, %.0f, %.0f, %.0f yes answers, %.1f, %.1f, %.1f and %.1f %% of six", summary[0],
            summary[1], summary[2], summary[3], summary[4], summary[5], summary[6], summary[7]);
  // The rows of the page: bounds of B, D and F, the times of A and E.
  page.says("| A | yes yes yes yes | right-censored at %.0f |", key[4]);
  page.says("| B | yes yes no no | interval %.0f to %.0f |", bounds[2], bounds[8]);
  page.says("| D | yes no yes no | interval %.0f to %.0f, sorted at %.0f |", bounds[3], bounds[9],
            key[2]);
  page.says("| E | yes no no yes | left-censored at %.0f |", key[3]);
  page.says("| F | yes no no no | interval %.0f to %.0f |", bounds[1], bounds[7]);
}

TEST(JudgeDocument, TheWorkedExampleHolds) {
  Values rating = {5, 2, 9, 2}, key = {1, 2, 2, 3}, sizes = {1, 2, 1}, X = {0, 0, 0, 0};
  Values indicators(12, 0.0), subjectX(3, 0.0), levels(4, 0.0);
  EXPECT_EQ(0, Cpp_TransformJudgeToInt(rating.data(), 4, 4, key.data(), 3, sizes.data(), X.data(),
                                       1, indicators.data(), subjectX.data(), levels.data()));
  EXPECT_EQ((Values{0, 2, 5, 9}), levels);
  EXPECT_EQ((Values{1, 1, 1, 1, 0, 1, 1, 0, 0, 1, 1, 1}), indicators);
  const Page page("judge");
  page.says("(levels %.0f, %.0f, %.0f, %.0f)", levels[0], levels[1], levels[2], levels[3]);
  const char* const said[] = {"judge 1 says exactly 5", "judge 2 says 2 to 9",
                              "judge 3 says exactly 2"};
  for (int i = 0; i < 3; ++i) {
    page.says("%s, marks %.0f %.0f %.0f %.0f", said[i], indicators[i], indicators[i + 3],
              indicators[i + 6], indicators[i + 9]);
  }
}

}  // namespace
}  // namespace survmeth::test
