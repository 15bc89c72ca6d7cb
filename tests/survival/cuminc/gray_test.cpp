// Gray's test: worked by hand, against another program, its recursion for many groups, contract.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "survival/calls/cuminc.h"
#include "survival/cuminc/cuminc.h"
#include "tests/support/csv.h"
#include "tests/support/matrices.h"

namespace {

using survmeth::test::Column;
using survmeth::test::Csv;
using survmeth::test::elements;
using Vector = std::vector<double>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

struct Rows {
  Vector time, status, group;
};

struct Gray {
  double statistic = -7, df = -7, pValue = -7;

  Gray(Rows rows, int K, int eventCode, double rho = 0) {
    const Rows before = rows;
    Cpp_GrayTest(static_cast<int>(rows.time.size()), K, rows.time.data(), rows.status.data(),
                 rows.group.data(), eventCode, rho, &statistic, &df, &pValue);
    EXPECT_TRUE(same(rows.time, before.time) && same(rows.status, before.status) &&
                same(rows.group, before.group));
  }

 private:
  static bool same(const Vector& a, const Vector& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](double x, double y) {
      return x == y || (std::isnan(x) && std::isnan(y));
    });
  }
};

Rows liverTrial(const std::string& group) {
  const Csv data(SURVMETH_DATA "/pbc.csv");
  return {data.numbers("time"), data.numbers("status"), data.numbers(group)};
}

TEST(GrayTest, FourSubjectsWorkedByHand) {
  // Events at 1 and 3 in group 1, at 2 in group 2, which is censored at 4. The score of group 1 is
  // 1 - 1/2, then -1/3, then 1 - 1/2: together 2/3. Its variance gains 1/4 at time 1,
  // (-11/288 + 1/8) + (25/1152 + 1/8) at time 2, (-17/384 + 1/8) + (55/1536 + 1/8) at time 3:
  // together 3341/4608.
  const Gray test({{1, 2, 3, 4}, {1, 1, 1, 0}, {1, 2, 1, 2}}, 2, 1);
  EXPECT_NEAR(test.statistic, 2048 / 3341.0, 1e-15);
  EXPECT_EQ(test.df, 1.0);
  EXPECT_NEAR(test.pValue, std::erfc(std::sqrt(1024 / 3341.0)), 1e-14);
}

TEST(GrayTest, TheOtherGroupAsReferenceGivesTheSameStatistic) {
  const Gray test({{1, 2, 3, 4}, {1, 1, 1, 0}, {2, 1, 2, 1}}, 2, 1);
  EXPECT_NEAR(test.statistic, 2048 / 3341.0, 1e-15);
}

TEST(GrayTest, TheLiverTrialAgreesWithAnotherProgram) {
  const Csv reference(SURVMETH_REFERENCE "/gray_pbc.csv");
  std::size_t rows = reference.rows();
  ASSERT_EQ(rows, 6u);
  for (std::size_t i = 0; i < rows; ++i) {
    const std::string group = reference.text("group", i);
    const double df = reference.number("df", i);
    const Gray test(liverTrial(group), static_cast<int>(df) + 1,
                    static_cast<int>(reference.number("event", i)), reference.number("rho", i));
    const double statistic = reference.number("stat", i);
    EXPECT_NEAR(test.statistic, statistic, 1e-10 * statistic) << i;
    EXPECT_EQ(test.df, df);
    // That program forms 1 - distribution, so that its p-value has an absolute error.
    EXPECT_NEAR(test.pValue, reference.number("pv", i), 1e-12) << i;
  }
}

TEST(GrayTest, RandomDataAgreeWithAnotherProgram) {
  const Csv data(SURVMETH_REFERENCE "/gray_random_data.csv");
  std::map<double, Rows> sets;
  const Vector set = data.numbers("set");
  const Vector time = data.numbers("time");
  const Vector status = data.numbers("status");
  const Vector group = data.numbers("group");
  for (std::size_t i = 0; i < set.size(); ++i) {
    Rows& rows = sets[set[i]];
    rows.time.push_back(time[i]);
    rows.status.push_back(status[i]);
    rows.group.push_back(group[i]);
  }
  const Csv reference(SURVMETH_REFERENCE "/gray_random.csv");
  const Vector found = reference.numbers("set");
  const Vector groups = reference.numbers("groups");
  const Vector rho = reference.numbers("rho");
  const Vector event = reference.numbers("event");
  const Vector statistic = reference.numbers("stat");
  const Vector pValue = reference.numbers("pv");
  ASSERT_EQ(found.size(), 88u);
  for (std::size_t i = 0; i < found.size(); ++i) {
    const Gray test(sets.at(found[i]), static_cast<int>(groups[i]), static_cast<int>(event[i]),
                    rho[i]);
    EXPECT_NEAR(test.statistic, statistic[i], 1e-10 * statistic[i]) << "set " << found[i];
    EXPECT_NEAR(test.pValue, pValue[i], 1e-12) << "set " << found[i];
    EXPECT_EQ(test.df, groups[i] - 1);
  }
}

// The covariance by its recursion, one group after the other, whatever the number of groups.
double recursion(const Rows& rows, int K, double eventCode, double rho) {
  std::vector<std::size_t> order(rows.time.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::sort(order.begin(), order.end(),
            [&](std::size_t a, std::size_t b) { return rows.time[a] < rows.time[b]; });
  const std::size_t groups = static_cast<std::size_t>(K);
  const std::size_t L = groups - 1;
  Vector atRisk(groups), S(groups, 1.0), F(groups), P(groups), score(L);
  std::vector<Vector> V(L, Vector(L)), Q(L, Vector(groups));
  for (const double g : rows.group) ++atRisk[static_cast<std::size_t>(g) - 1];
  double pooled = 0.0;
  for (std::size_t i = 0; i < order.size();) {
    std::vector<Vector> d(3, Vector(groups));
    std::size_t end = i;
    for (; end < order.size() && rows.time[order[end]] == rows.time[order[i]]; ++end) {
      const double status = rows.status[order[end]];
      const int cause = status == eventCode ? 1 : status != 0 ? 2 : 0;
      ++d[cause][static_cast<std::size_t>(rows.group[order[end]]) - 1];
    }
    double nd1 = 0, nd2 = 0;
    for (std::size_t k = 0; k < groups; ++k) {
      nd1 += d[1][k];
      nd2 += d[2][k];
    }
    if (nd1 + nd2 > 0) {
      Vector nextS = S, nextF = F, h(groups);
      double T1 = 0, T2 = 0;
      for (std::size_t k = 0; k < groups; ++k) {
        if (atRisk[k] <= 0) continue;
        nextS[k] = (atRisk[k] - d[1][k] - d[2][k]) * S[k] / atRisk[k];
        nextF[k] = d[1][k] * S[k] / atRisk[k] + F[k];
        h[k] = atRisk[k] / S[k];
        T1 += h[k];
        T2 += (1 - F[k]) * atRisk[k] / S[k];
      }
      const double w = std::pow(1 - pooled, rho);
      for (std::size_t k = 0; k < L; ++k) {
        if (atRisk[k] <= 0) continue;
        score[k] += w * (d[1][k] - nd1 * atRisk[k] * (1 - F[k]) / S[k] / T2);
      }
      const double after = pooled + nd1 / T1;
      for (std::size_t q = 0; q < groups; ++q) {
        if (atRisk[q] <= 0) continue;
        if (nd1 > 0) {
          Vector A(L), D(L);
          for (std::size_t k = 0; k < L; ++k) {
            if (atRisk[k] > 0) A[k] = w * ((k == q) - h[k] / T1) * h[q];
            if (A[k] != 0) D[k] = A[k] * nd1 / (T1 * (1 - pooled));
          }
          const double b = nextS[q] == 0 ? 1 : 1 - (1 - after) / nextS[q];
          const double f = nd1 > 1 ? 1 - (nd1 - 1) / (S[q] * T1 - 1) : 1;
          const double variance = f * nd1 / (T1 * h[q]);
          for (std::size_t k = 0; k < L; ++k) {
            for (std::size_t l = 0; l < L; ++l) {
              V[k][l] += D[k] * Q[l][q] + D[l] * Q[k][q] + D[k] * D[l] * P[q];
              V[k][l] += A[k] * A[l] * variance;
            }
          }
          for (std::size_t k = 0; k < L; ++k) {
            Q[k][q] += D[k] * P[q];
            Q[k][q] += A[k] * b * variance;
          }
          P[q] += b * b * variance;
        }
        if (d[2][q] > 0 && nextS[q] > 0) {
          const double b = (1 - after) / nextS[q];
          const double f = d[2][q] > 1 ? 1 - (d[2][q] - 1) / (atRisk[q] - 1) : 1;
          P[q] += b * b * f * S[q] * S[q] * d[2][q] / (atRisk[q] * atRisk[q]);
        }
      }
      pooled = after;
      S = nextS;
      F = nextF;
    }
    for (; i < end; ++i) --atRisk[static_cast<std::size_t>(rows.group[order[i]]) - 1];
  }
  matrix v(K - 1, K - 1, 0), inverse(K - 1, K - 1, 0);
  for (std::size_t k = 0; k < L; ++k) {
    for (std::size_t l = 0; l < L; ++l) {
      v.vbset(static_cast<int>(k) + 1, static_cast<int>(l) + 1, V[k][l]);
    }
  }
  short status = 0;
  v.inverse1(&inverse, status, kEpsilon);
  Column column(score);
  return M_ProductTrVBV(&column, K - 1, &inverse);
}

TEST(GrayTest, FewGroupsFollowTheRecursionToTheBit) {
  // Without rows in group K the scores depend on each other, and whether the variance counts as
  // singular lies in its last bits.
  std::mt19937 random(41);
  std::uniform_real_distribution<double> uniform;
  int singular = 0;
  for (int round = 0; round < 400; ++round) {
    const int K = 3 + round % 3;
    const int present = round % 2 == 0 ? K - 1 : K;
    Rows rows;
    for (int i = 0; i < 4 * K; ++i) {
      rows.time.push_back(uniform(random));
      rows.status.push_back(std::floor(3 * uniform(random)));
      rows.group.push_back(1 + i % present);
    }
    const double rho = round % 4 - 1;
    const double expected = recursion(rows, K, 1, rho);
    const double statistic = Gray(rows, K, 1, rho).statistic;
    EXPECT_EQ(statistic, expected) << round;
    singular += statistic == 0.0 ? 1 : 0;
  }
  EXPECT_GT(singular, 20);
  EXPECT_LT(singular, 390);
}

TEST(GrayTest, ManyGroupsAgreeWithTheRecursionOneGroupAtATime) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> uniform;
  for (int round = 0; round < 60; ++round) {
    const int K = 7 + round % 10;
    Rows rows;
    for (int i = 0; i < 12 * K; ++i) {
      rows.time.push_back(round % 2 == 0 ? std::ceil(15 * uniform(random)) : uniform(random));
      rows.status.push_back(std::floor(3 * uniform(random)));
      rows.group.push_back(1 + i % K);
    }
    const double rho = round % 3 - 0.5;
    const double expected = recursion(rows, K, 1, rho);
    EXPECT_NEAR(Gray(rows, K, 1, rho).statistic, expected, 1e-10 * expected) << K << ' ' << rho;
  }
}

TEST(GrayTest, OneGroupLeftAtRiskGainsNothingMore) {
  // At time 1 the score of group 1 is 2 - 2 2/4 = 1 and its variance twice 2/3 2/8 = 1/3. The
  // pooled incidence is exactly 1 before time 3, which must not divide nothing by 1 - 1.
  EXPECT_NEAR(Gray({{1, 1, 2, 3}, {1, 1, 1, 1}, {1, 1, 2, 2}}, 2, 1).statistic, 3.0, 1e-14);
  EXPECT_NEAR(Gray({{1, 1, 2, 3}, {1, 1, 1, 1}, {2, 2, 1, 1}}, 2, 1).statistic, 3.0, 1e-14);
}

TEST(GrayTest, OneOfManyGroupsLeftAtRiskGainsNothingMore) {
  // Groups 1 to 8 have one event each at time 1, beside eight of group 9: eight scores of 1/2 and
  // the variance 4/15 I - 1/60 J. Group 9 brings the pooled incidence to 1/2 + 4/8 and goes on.
  Rows rows;
  for (int g = 1; g <= 8; ++g) {
    rows.time.push_back(1);
    rows.group.push_back(g);
  }
  for (int t = 2; t <= 9; ++t) {
    rows.time.push_back(t);
    rows.group.push_back(9);
  }
  rows.status = Vector(16, 1.0);
  EXPECT_NEAR(Gray(rows, 9, 1).statistic, 15.0, 1e-12);
}

TEST(GrayTest, AnyStatusButTheCodeAndZeroCompetes) {
  const Rows plain{{1, 2, 3, 4, 5, 6, 7, 8}, {1, 2, 1, 0, 2, 1, 2, 0}, {1, 2, 2, 1, 1, 2, 1, 2}};
  Rows odd = plain;
  odd.status = {1, -3, 1, 0, kNan, 1, kInf, 0};
  EXPECT_EQ(Gray(odd, 2, 1).statistic, Gray(plain, 2, 1).statistic);
  Rows none = plain;
  none.status = {1, 0, 1, 0, 0, 1, 0, 0};
  EXPECT_NE(Gray(none, 2, 1).statistic, Gray(plain, 2, 1).statistic);
}

TEST(GrayTest, TheEventCodeMayBeZero) {
  // Status 0 is then the event of interest, and no row is censored.
  const Gray zero({{1, 2, 3, 4, 5}, {0, 2, 0, 0, 2}, {1, 2, 1, 2, 1}}, 2, 0);
  const Gray one({{1, 2, 3, 4, 5}, {1, 2, 1, 1, 2}, {1, 2, 1, 2, 1}}, 2, 1);
  EXPECT_EQ(zero.statistic, one.statistic);
}

TEST(GrayTest, RowsWithOtherGroupCodesTakeNoPart) {
  const Rows rows{{1, 2, 3, 4}, {1, 1, 1, 0}, {1, 2, 1, 2}};
  Rows more = rows;
  for (const double code : {0.0, 3.0, 1.5, -1.0, kNan, kInf, -kInf}) {
    more.time.insert(more.time.begin(), 2.5);
    more.status.insert(more.status.begin(), 1);
    more.group.insert(more.group.begin(), code);
  }
  EXPECT_EQ(Gray(more, 2, 1).statistic, Gray(rows, 2, 1).statistic);
}

TEST(GrayTest, TiedRowsAreCountedBeforeAnyOfThemLeaves) {
  const Rows forth{{1, 2, 2, 2, 3, 4}, {1, 1, 2, 0, 1, 0}, {1, 1, 2, 2, 2, 1}};
  const Rows back{{1, 2, 2, 2, 3, 4}, {1, 0, 2, 1, 1, 0}, {1, 2, 2, 1, 2, 1}};
  EXPECT_EQ(Gray(forth, 2, 1).statistic, Gray(back, 2, 1).statistic);
}

TEST(GrayTest, TimesThatAreNotNumbersStandLastEachByItself) {
  // Sorted by group before, so that the one of group 1 comes first.
  const Rows rows{{1, kNan, 2, kNan, 3}, {1, 1, 1, 2, 1}, {1, 2, 2, 1, 1}};
  const Rows late{{1, 9, 2, 8, 3}, {1, 1, 1, 2, 1}, {1, 2, 2, 1, 1}};
  EXPECT_EQ(Gray(rows, 2, 1).statistic, Gray(late, 2, 1).statistic);
  const Rows infinite{{1, kInf, 2, 4, -kInf}, {1, 1, 1, 2, 1}, {1, 2, 2, 1, 1}};
  const Rows finite{{1, 9, 2, 4, 0}, {1, 1, 1, 2, 1}, {1, 2, 2, 1, 1}};
  EXPECT_EQ(Gray(infinite, 2, 1).statistic, Gray(finite, 2, 1).statistic);
}

void expectNoDifference(const Gray& test, double df) {
  EXPECT_EQ(test.statistic, 0.0);
  EXPECT_EQ(test.df, df);
  EXPECT_EQ(test.pValue, 1.0);
}

TEST(GrayTest, ASingularVarianceLooksLikeNoDifference) {
  expectNoDifference(Gray({{1, 2, 3}, {0, 0, 0}, {1, 2, 1}}, 2, 1), 1);  // censored throughout
  expectNoDifference(Gray({{1, 2, 3}, {2, 2, 2}, {1, 2, 1}}, 2, 1), 1);  // no event of interest
  expectNoDifference(Gray({{1, 2, 3}, {1, 1, 1}, {1, 1, 1}}, 2, 1), 1);  // group 2 has no rows
  expectNoDifference(Gray({{1, 2, 3}, {1, 1, 1}, {2, 2, 2}}, 2, 1), 1);  // group 1 has no rows
  expectNoDifference(Gray({{1, 2, 3}, {1, 1, 1}, {1, 3, 1}}, 3, 1), 2);  // group 2 of 3
  expectNoDifference(Gray({{1, 2, 3}, {1, 1, 1}, {1, 2, 1}}, std::numeric_limits<int>::max(), 1),
                     2147483646);
}

TEST(GrayTest, OneGroupOrNoneHasNoScore) {
  expectNoDifference(Gray({{1, 2, 3}, {1, 0, 2}, {1, 1, 1}}, 1, 1), 0);
  for (const int K : {0, -1, std::numeric_limits<int>::min()}) {
    const Gray test({{1, 2, 3}, {1, 0, 2}, {1, 1, 1}}, K, 1);
    EXPECT_EQ(test.statistic, 0.0);
    EXPECT_EQ(test.df, K - 1.0);
  }
}

TEST(GrayTest, WithoutRowsThereIsNoDifference) {
  for (const int n : {0, -1, std::numeric_limits<int>::min()}) {
    double cell = 6, statistic = 1, df = 1, pValue = 0;
    Cpp_GrayTest(n, 3, &cell, &cell, &cell, 1, 0, &statistic, &df, &pValue);
    EXPECT_EQ(statistic, 0.0);
    EXPECT_EQ(df, 2.0);
    EXPECT_EQ(pValue, 1.0);
    EXPECT_EQ(cell, 6.0);
  }
}

TEST(GrayTest, TheMatricesComeBackSortedByTime) {
  Column time({3, 1, 2, 1}), status({1, 0, 2, 1}), group({1, 2, 2, 1});
  double statistic = 0, df = 0, pValue = 0;
  GrayTest(4, 2, &time, &status, &group, 1, 0, &statistic, &df, &pValue);
  // By group first, so that equal times stand in the order of their groups.
  EXPECT_EQ(elements(time), (Vector{1, 1, 2, 3}));
  EXPECT_EQ(elements(group), (Vector{1, 2, 2, 1}));
  EXPECT_EQ(elements(status), (Vector{1, 0, 2, 1}));
}

TEST(GrayTest, ACountBeyondTheColumnsAddsNothing) {
  const Gray expected({{1, 2, 3, 4}, {1, 1, 1, 0}, {1, 2, 1, 2}}, 2, 1);
  for (const int n : {5, std::numeric_limits<int>::max()}) {
    Column time({1, 2, 3, 4}), status({1, 1, 1, 0}), group({1, 2, 1, 2});
    double statistic = 0, df = 0, pValue = 0;
    GrayTest(n, 2, &time, &status, &group, 1, 0, &statistic, &df, &pValue);
    EXPECT_EQ(statistic, expected.statistic);
  }
  Column time({1, 2}), status({1}), group({1, 2, 1});
  double statistic = -1, df = 0, pValue = 0;
  GrayTest(3, 2, &time, &status, &group, 1, 0, &statistic, &df, &pValue);
  // The row without a time stays third and competes: 1 - 2/3 over sqrt(2/9).
  EXPECT_NEAR(statistic, 0.5, 1e-15);
}

TEST(GrayTest, AWeightThatIsNoNumberShowsInTheStatistic) {
  const Rows rows{{1, 2, 3, 4}, {1, 1, 1, 0}, {1, 2, 1, 2}};
  const Gray test(rows, 2, 1, kNan);
  EXPECT_TRUE(std::isnan(test.statistic));
  EXPECT_TRUE(std::isnan(test.pValue));
}

}  // namespace
