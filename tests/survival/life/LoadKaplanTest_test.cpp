// The grid of distinct times.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

#include "survival/life/life.h"
#include "tests/support/matrices.h"
#include "tests/survival/life/life_calls.h"

namespace {

using survmeth::test::allSame;
using survmeth::test::Column;
using survmeth::test::elements;
using survmeth::test::kInf;
using survmeth::test::kNan;
using survmeth::test::kUntouched;
using survmeth::test::Sheet;
using Values = std::vector<double>;

struct Loaded {
  int n;
  Values cells;  // row 1 of the grid
};

Loaded load(const Values& times, int n, int K = 1) {
  Loaded out{n, {}};
  Sheet grid(3LL * K + 1, n);
  Values copy = times;
  copy.reserve(1);
  LoadKaplanTest(&out.n, static_cast<int>(times.size()), K, copy.data(), grid.data());
  EXPECT_TRUE(allSame(times, copy));
  EXPECT_TRUE(grid.marginIsUntouched());
  if (grid.rows() > 0) {
    for (int i = 1; i <= n; ++i) {
      out.cells.push_back(grid.at(1, i));
      for (int row = 2; row <= grid.rows(); ++row) EXPECT_EQ(grid.at(row, i), kUntouched);
    }
  }
  return out;
}

Loaded load(const Values& times) { return load(times, static_cast<int>(times.size())); }

TEST(LoadKaplanTest, SortsDistinctTimes) {
  const Loaded out = load({5, 2, 9, 3});
  EXPECT_EQ(out.n, 4);
  EXPECT_EQ(out.cells, (Values{2, 3, 5, 9}));
}

TEST(LoadKaplanTest, TheCellPastTheEndGetsOneAdded) {
  // 2 stands last when the second 1 goes: 2 + 1.
  const Loaded out = load({1, 1, 2});
  EXPECT_EQ(out.n, 2);
  EXPECT_EQ(out.cells, (Values{1, 2, 3}));
  EXPECT_EQ(load({4, 4}).cells, (Values{4, 5}));
  EXPECT_EQ(load({7, 7, 7}).cells, (Values{7, 8, 8}));
}

TEST(LoadKaplanTest, ACellPastTheEndMayHoldAnExchangedValue) {
  // Pass 1 exchanges 3 and 1: 1 3 3 2. Pass 2 removes the second 3 with 2 standing last: 1 3 2 3.
  // Then 3 and 2 are exchanged.
  const Loaded out = load({3, 1, 3, 2});
  EXPECT_EQ(out.n, 3);
  EXPECT_EQ(out.cells, (Values{1, 2, 3, 3}));
  // 5 2 | 5 4 2: pass 1 leaves 2 5 5 4 and removes the last 2 (2 + 1); pass 2 removes the second
  // 5 with 4 standing last (4 + 1).
  const Loaded two = load({5, 2, 5, 4, 2});
  EXPECT_EQ(two.n, 3);
  EXPECT_EQ(two.cells, (Values{2, 4, 5, 5, 3}));
}

TEST(LoadKaplanTest, BothZerosAreOneTimeAndTheFirstStays) {
  const Loaded negative = load({-0.0, 0.0, 1});
  EXPECT_EQ(negative.n, 2);
  EXPECT_TRUE(std::signbit(negative.cells[0]));
  EXPECT_FALSE(std::signbit(load({0.0, -0.0, 1}).cells[0]));
}

TEST(LoadKaplanTest, InfinitiesAreTimesLikeOthers) {
  const Loaded out = load({kInf, 1, -kInf, kInf});
  EXPECT_EQ(out.n, 3);
  EXPECT_EQ(out.cells, (Values{-kInf, 1, kInf, kInf}));
}

TEST(LoadKaplanTest, ANaNKeepsItsPlaceAndEqualsNothing) {
  const Loaded out = load({3, kNan, 1, kNan, 3});
  EXPECT_EQ(out.n, 4);
  // The last slot holds 3, its own value, when it goes.
  EXPECT_TRUE(allSame({1, kNan, 3, kNan, 4}, out.cells));
  EXPECT_TRUE(allSame({1, kNan, kNan}, load({1, 1, kNan}).cells));
}

TEST(LoadKaplanTest, TimesPastTheArrayAreMinusOne) {
  const Loaded out = load({4, 2}, 4);
  EXPECT_EQ(out.n, 3);
  EXPECT_EQ(out.cells, (Values{-1, 2, 4, 0}));
}

TEST(LoadKaplanTest, OnlyTheFirstNTimesCount) {
  const Loaded out = load({4, 2, 1, 1, 1}, 2);
  EXPECT_EQ(out.n, 2);
  EXPECT_EQ(out.cells, (Values{2, 4}));
}

TEST(LoadKaplanTest, OneTimeIsCopied) {
  const Loaded out = load({4});
  EXPECT_EQ(out.n, 1);
  EXPECT_EQ(out.cells, Values{4});
  EXPECT_EQ(load({}, 1).cells, Values{-1});
}

TEST(LoadKaplanTest, NoTimesChangeNothing) {
  for (const int n : {0, -1, INT_MIN}) EXPECT_EQ(load({4, 2}, n).n, n);
}

TEST(LoadKaplanTest, EachStratumAddsThreeRows) {
  for (const int K : {0, 1, 2, 5}) EXPECT_EQ(load({4, 2, 4}, 3, K).cells, (Values{2, 4, 5})) << K;
}

TEST(LoadKaplanTest, AGridWithoutRowsHoldsNothing) {
  // Every cell reads as -1, so all are equal.
  for (const int K : {-1, -2, INT_MIN}) EXPECT_EQ(load({4, 2, 1}, 3, K).n, 1) << K;
}

// The exchange sort as it is defined, on cells that are all there.
int exchange(Values& x, int n) {
  const auto at = [&](int i) -> double& { return x[static_cast<std::size_t>(i) - 1]; };
  for (int a = 1; a <= n - 1; ++a) {
    for (int b = a + 1; b <= n;) {
      if (at(a) > at(b)) {
        std::swap(at(a), at(b));
      } else if (at(a) == at(b)) {
        --n;
        for (int i = b; i <= n; ++i) at(i) = at(i + 1);
        at(n + 1) += 1.0;
        continue;
      }
      ++b;
    }
  }
  return n;
}

TEST(LoadKaplanTest, LeavesWhatTheExchangeSortLeaves) {
  std::mt19937 random(29);
  for (int round = 0; round < 40000; ++round) {
    const int n = static_cast<int>(random() % 16);
    const int given = random() % 5 == 0 ? std::max(0, n - static_cast<int>(random() % 4)) : n;
    const unsigned range = 1 + random() % 10;
    const bool odd = random() % 4 == 0;
    Values times;
    for (int i = 0; i < given; ++i) {
      double time = static_cast<double>(random() % range) - 2.0;
      if (odd) {
        const double values[] = {kNan, kInf, -kInf, -0.0, 0.0, 0.5, 1e300, -1.0};
        if (random() % 4 == 0) time = values[random() % 8];
      }
      times.push_back(time);
    }
    Values want = times;
    want.resize(static_cast<std::size_t>(n), -1.0);
    const int left = exchange(want, n);
    const Loaded out = load(times, n);
    ASSERT_EQ(left, out.n);
    ASSERT_TRUE(allSame(want, out.cells));
    for (std::size_t i = 0; i < want.size(); ++i) {
      ASSERT_EQ(std::signbit(want[i]) && want[i] == 0.0,
                std::signbit(out.cells[i]) && out.cells[i] == 0.0);
    }
  }
}

TEST(LoadKaplanTest, LeavesWhatTheExchangeSortLeavesOfLongerRuns) {
  std::mt19937 random(31);
  for (const int n : {100, 700, 3000}) {
    for (const unsigned range : {3u, 50u, 2000u}) {
      Values times;
      for (int i = 0; i < n; ++i) times.push_back(0.125 * (random() % range));
      Values want = times;
      const int left = exchange(want, n);
      const Loaded out = load(times);
      ASSERT_EQ(left, out.n);
      ASSERT_TRUE(allSame(want, out.cells));
    }
  }
}

// A grid that is too short: what lies past it reads as -1 and keeps nothing.
TEST(LoadKaplanTestOnMatrices, AShortGridLosesTimesAsTheExchangeSortDoes) {
  std::mt19937 random(37);
  for (int round = 0; round < 40000; ++round) {
    const int n = 1 + static_cast<int>(random() % 12);
    const int columns = static_cast<int>(random() % 9);
    Values values;
    for (int i = 0; i < n; ++i) {
      values.push_back(random() % 30 == 0 ? kNan : static_cast<double>(random() % 7) - 3.0);
    }
    Column times(values);
    matrix want(1, columns, kUntouched), got(1, columns, kUntouched);
    for (int i = 1; i <= n; ++i) want.vbset(1, i, times.vbget(i, 1));
    int left = n;
    for (int a = 1; a <= left - 1; ++a) {
      for (int b = a + 1; b <= left;) {
        const double x = want.vbget(1, a), y = want.vbget(1, b);
        if (x > y) {
          want.vbset(1, a, y);
          want.vbset(1, b, x);
        } else if (x == y) {
          --left;
          for (int i = b; i <= left; ++i) want.vbset(1, i, want.vbget(1, i + 1));
          want.vbset(1, left + 1, want.vbget(1, left + 1) + 1.0);
          continue;
        }
        ++b;
      }
    }
    int count = n;
    EXPECT_EQ(cLoadKaplanTest(&count, &times, &got), 0);
    ASSERT_EQ(left, count);
    ASSERT_TRUE(allSame(elements(want), elements(got)));
  }
}

TEST(LoadKaplanTestOnMatrices, AHugeCountOnAShortGridEnds) {
  Column times({3, 1, 2});
  matrix grid(1, 3, 0);
  int n = INT_MAX - 1;
  cLoadKaplanTest(&n, &times, &grid);
  EXPECT_LE(n, 4);
}

}  // namespace
