// TransformJudgeToInt: levels, marks, covariates.
#include <gtest/gtest.h>

#include <limits>

#include "survival/calls/judge.h"
#include "survival/judge/judge.h"
#include "tests/support/matrices.h"

namespace survmeth::test {
namespace {

using Values = std::vector<double>;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Ratings {
  Ratings(const Values& ratings, const Values& keys, const Values& sizes, int levelCount,
          const std::vector<Values>& X = {})
      : n(static_cast<int>(ratings.size())),
        K(levelCount),
        G(static_cast<int>(sizes.size())),
        p(X.empty() ? 0 : static_cast<int>(X.front().size())),
        rating(ratings),
        key(keys),
        subjectSizes(1, G, const_cast<double*>(sizes.data()), 0, 0),
        covariates(n, p, 0),
        indicators(G, K, 0),
        subjectX(G, p, 777),
        levels(K, 1, 777) {
    for (int i = 1; i <= n; ++i) {
      for (int j = 1; j <= p; ++j) covariates.vbset(i, j, X[i - 1][j - 1]);
    }
  }

  int run() {
    return TransformJudgeToInt(&rating, n, K, &key, G, &subjectSizes, &covariates, p, &indicators,
                               &subjectX, &levels);
  }

  Values row(int g) const {
    Values marks;
    for (int l = 1; l <= indicators.cols(); ++l) marks.push_back(indicators.vbget(g, l));
    return marks;
  }

  int n;
  int K;
  int G;
  int p;
  Column rating;
  Column key;
  matrix subjectSizes;
  matrix covariates;
  matrix indicators;
  matrix subjectX;
  matrix levels;
};

// Levels 0, 2, 4, 6, 8.
Ratings five(const Values& sizes, const Values& own, const Values& keys) {
  // Subject 9 brings the whole scale, one rating each, in rows of their own key.
  Values ratings = own, all = keys;
  double key = 100.0;
  Values counts = sizes;
  for (const double level : {2.0, 4.0, 6.0, 8.0}) {
    ratings.push_back(level);
    all.push_back(key);
    key += 1.0;
    counts.push_back(1.0);
  }
  return Ratings(ratings, all, counts, 5);
}

TEST(JudgeRatings, LevelsAreZeroAndTheDistinctRatings) {
  Ratings data({5, 2, 5, 9, 2}, {1, 2, 3, 4, 5}, {1, 1, 1, 1, 1}, 4);
  EXPECT_EQ(0, data.run());
  EXPECT_EQ((Values{0, 2, 5, 9}), elements(data.levels));
}

TEST(JudgeRatings, AnExactRatingMarksUpToItsLevelAndTheLast) {
  Ratings data = five({1}, {4}, {1});
  data.run();
  EXPECT_EQ((Values{1, 1, 1, 0, 1}), data.row(1));
  Ratings top = five({1}, {8}, {1});
  top.run();
  EXPECT_EQ((Values{1, 1, 1, 1, 1}), top.row(1));
  Ratings smallest = five({1}, {2}, {1});
  smallest.run();
  EXPECT_EQ((Values{1, 1, 0, 0, 1}), smallest.row(1));
}

TEST(JudgeRatings, AnIntervalMarksBelowItsLowerAndFromItsUpperEnd) {
  Ratings data = five({2}, {4, 8}, {1, 1});
  data.run();
  EXPECT_EQ((Values{1, 1, 0, 0, 1}), data.row(1));
  Ratings smallest = five({2}, {2, 6}, {1, 1});
  smallest.run();
  EXPECT_EQ((Values{1, 0, 0, 1, 1}), smallest.row(1));
  // Equal ends: everything.
  Ratings point = five({2}, {6, 6}, {1, 1});
  point.run();
  EXPECT_EQ((Values{1, 1, 1, 1, 1}), point.row(1));
}

TEST(JudgeRatings, TheEndsOfASubjectComeInTheOrderOfTheRatings) {
  // The stable sorts leave them ascending, whatever order they were passed in.
  Ratings data = five({2}, {8, 4}, {1, 1});
  data.run();
  EXPECT_EQ((Values{1, 1, 0, 0, 1}), data.row(1));
}

TEST(JudgeRatings, ARatingOfZeroMatchesTheFixedLevelAndItsOwn) {
  Ratings data({0, 3}, {1, 2}, {1, 1}, 3);
  data.run();
  EXPECT_EQ((Values{0, 0, 3}), elements(data.levels));
  EXPECT_EQ((Values{1, 1, 1}), data.row(1));
  // As the lower end it has nothing below level 1, but level 1 below its own.
  Ratings lower({0, 3, 5, 7}, {1, 1, 2, 3}, {2, 1, 1}, 5);
  lower.run();
  EXPECT_EQ((Values{0, 0, 3, 5, 7}), elements(lower.levels));
  EXPECT_EQ((Values{1, 0, 1, 1, 1}), lower.row(1));
}

TEST(JudgeRatings, OtherSizesMarkNothingButMoveOn) {
  Ratings data({2, 4, 6, 8, 4}, {1, 1, 1, 2, 3}, {3, 1, 1}, 5, {{1}, {2}, {3}, {4}, {5}});
  data.run();
  EXPECT_EQ(Values(5, 0.0), data.row(1));
  EXPECT_EQ((Values{1, 1, 1, 1, 1}), data.row(2));
  EXPECT_EQ((Values{1, 1, 1, 0, 1}), data.row(3));
  EXPECT_EQ((Values{1, 4, 5}), elements(data.subjectX));
  Ratings zero({2, 4}, {1, 2}, {0, 1}, 3);
  zero.run();
  EXPECT_EQ(Values(3, 0.0), zero.row(1));
  EXPECT_EQ((Values{1, 1, 1}), zero.row(2));
}

TEST(JudgeRatings, EveryCovariateColumnHoldsTheLast) {
  // Sorted by rating, then by key: subject 1 has rows (2: 3, 30), (5: 1, 10).
  Ratings data({5, 4, 2}, {1, 2, 1}, {2, 1}, 4, {{1, 10}, {2, 20}, {3, 30}});
  data.run();
  EXPECT_EQ((Values{30, 20, 30, 20}), elements(data.subjectX));
}

TEST(JudgeRatings, RowsOfASubjectNeedNotStandTogether) {
  Ratings data({4, 8, 2, 6}, {2, 1, 1, 2}, {2, 2}, 5);
  data.run();
  // Subject 1: 2 to 8; subject 2: 4 to 6. Levels 0 2 4 6 8.
  EXPECT_EQ((Values{1, 0, 0, 0, 1}), data.row(1));
  EXPECT_EQ((Values{1, 1, 0, 1, 1}), data.row(2));
}

TEST(JudgeRatings, OnlyOnesAreWritten) {
  Ratings data = five({2}, {4, 8}, {1, 1});
  for (int l = 1; l <= 5; ++l) data.indicators.vbset(1, l, 5.0);
  data.run();
  EXPECT_EQ((Values{1, 1, 5, 5, 1}), data.row(1));
}

TEST(JudgeRatings, WithTooFewLevelsTheRestIsDropped) {
  Ratings data({2, 4, 6}, {1, 2, 3}, {1, 1, 1}, 2);
  data.run();
  EXPECT_EQ((Values{0, 2}), elements(data.levels));
  EXPECT_EQ((Values{1, 1}), data.row(1));
  EXPECT_EQ((Values{0, 0}), data.row(2));
}

TEST(JudgeRatings, ARatingThatIsNotANumberIsNoLevel) {
  Ratings data({kNaN, 2, 4}, {1, 2, 3}, {1, 1, 1}, 3);
  EXPECT_EQ(0, data.run());
  EXPECT_EQ((Values{0, 2, 4}), elements(data.levels));
  EXPECT_EQ(Values(3, 0.0), data.row(1));
  EXPECT_EQ((Values{1, 1, 1}), data.row(2));
}

TEST(JudgeRatings, CountsOfZeroAndBelow) {
  Ratings none({}, {}, {}, 2);
  EXPECT_EQ(0, none.run());
  // No rating: the -1 that lies past the column.
  EXPECT_EQ((Values{0, -1}), elements(none.levels));
  Ratings data({2, 4}, {1, 2}, {1, 1}, 3, {{1}, {2}});
  data.n = -1;
  data.K = -1;
  data.G = -1;
  data.p = -1;
  EXPECT_EQ(0, data.run());
  EXPECT_EQ(Values(2, 777.0), elements(data.subjectX));
  EXPECT_EQ(Values(6, 0.0), elements(data.indicators));
}

TEST(JudgeRatings, CountsFarPastTheArraysEnd) {
  Ratings data({2, 4}, {1, 2}, {1, 1}, 3, {{1}, {2}});
  data.K = std::numeric_limits<int>::max();
  data.G = std::numeric_limits<int>::max();
  data.p = std::numeric_limits<int>::max();
  EXPECT_EQ(0, data.run());
  EXPECT_EQ((Values{0, 2, 4}), elements(data.levels));
  EXPECT_EQ(1.0, data.indicators.vbget(1, 1));
}

TEST(JudgeRatings, AbsurdSizesLeadOutsideTheRows) {
  for (const double size : {1e300, -1e300, kNaN, 2147483647.0}) {
    Ratings data({2, 4}, {1, 2}, {size, 2}, 3, {{1}, {2}});
    EXPECT_EQ(0, data.run());
    EXPECT_EQ(-1.0, data.subjectX.vbget(2, 1));
  }
}

TEST(JudgeRatingsEntryPoint, GivesBackLevelsMarksAndCovariates) {
  Values rating = {5, 4, 2}, key = {1, 2, 1}, sizes = {2, 1}, X = {1, 2, 3, 10, 20, 30};
  const Values givenRating = rating, givenX = X;
  Values indicators(8, 0.0), subjectX(4, 777.0), levels(4, 777.0);
  EXPECT_EQ(0, Cpp_TransformJudgeToInt(rating.data(), 3, 4, key.data(), 2, sizes.data(), X.data(),
                                       2, indicators.data(), subjectX.data(), levels.data()));
  EXPECT_EQ(givenRating, rating);
  EXPECT_EQ(givenX, X);
  EXPECT_EQ((Values{0, 2, 4, 5}), levels);
  EXPECT_EQ((Values{30, 20, 30, 20}), subjectX);
  // Subject 1 from level 2 to level 4; subject 2 at level 3.
  EXPECT_EQ((Values{1, 1, 0, 1, 0, 1, 1, 1}), indicators);
}

TEST(JudgeRatingsEntryPoint, CountsOfZeroTouchNothing) {
  double cell = 777.0;
  EXPECT_EQ(0,
            Cpp_TransformJudgeToInt(&cell, 0, 0, &cell, 0, &cell, &cell, 0, &cell, &cell, &cell));
  EXPECT_EQ(777.0, cell);
  EXPECT_EQ(
      0, Cpp_TransformJudgeToInt(&cell, -1, -1, &cell, -1, &cell, &cell, -1, &cell, &cell, &cell));
  EXPECT_EQ(777.0, cell);
}

}  // namespace
}  // namespace survmeth::test
