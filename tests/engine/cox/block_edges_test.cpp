// Likelihood, derivatives and score residuals against loops over every risk set, for numbers of rows
// around those of the blocks that the engine works on, with strata, ties and stays that reach across
// the blocks' edges, and for odd and even numbers of columns.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "engine/cox/likelihood.h"
#include "engine/cox/residuals.h"
#include "tests/engine/cox/data.h"

namespace survmeth {
namespace {

using engine::cox::Ties;
using test::CoxData;

// 0 .. 1, the same on every machine.
double fraction(std::size_t i, std::size_t j) {
  const std::size_t mixed = (i * 7919 + j * 104729 + i * j * 31) % 10007;
  return static_cast<double>(mixed) / 10007.0;
}

enum class Shape { kDistinct, kFewTied, kTiedAcrossTheEdge, kAllTied, kStrata, kLateEntry };

CoxData sample(Shape shape, std::size_t n, std::size_t p) {
  CoxData data;
  data.columns.resize(p);
  for (std::size_t i = 0; i < n; ++i) {
    double time = static_cast<double>(i + 1);
    if (shape == Shape::kFewTied && i % 11 < 2) time = static_cast<double>(i - i % 11 + 1);
    if (shape == Shape::kTiedAcrossTheEdge && i >= 250 && i < 262) time = 251.0;
    if (shape == Shape::kAllTied) time = static_cast<double>(i / 5 + 1);
    data.exit.push_back(time);
    data.event.push_back(fraction(i, 90) < 0.6 ? 1 : 0);
    data.weight.push_back(shape == Shape::kDistinct ? 1.0 : 0.5 + fraction(i, 91));
    if (shape == Shape::kStrata) {
      // The first ends one row before, at or behind a block's edge.
      data.stratum.push_back(i < 255 ? 0U : i < 256 ? 1U : i < 300 ? 2U : 3U);
      data.strata = 4;
    }
    if (shape == Shape::kLateEntry) {
      data.entry.push_back(std::max(0.0, time - 1.0 - std::floor(400.0 * fraction(i, 92))));
    }
    for (std::size_t j = 0; j < p; ++j) data.columns[j].push_back(fraction(i, j));
  }
  return data;
}

// What the definition gives, risk set by risk set.
struct Direct {
  double logLikelihood = 0.0;
  std::vector<double> gradient;
  std::vector<std::vector<double>> information, scores;

  Direct(const CoxData& data, const std::vector<double>& beta, bool efron)
      : gradient(beta.size(), 0.0),
        information(beta.size(), gradient),
        scores(data.exit.size(), gradient),
        data_(data) {
    for (std::size_t i = 0; i < data.exit.size(); ++i) {
      double eta = 0.0;
      for (std::size_t j = 0; j < beta.size(); ++j) eta += beta[j] * data.columns[j][i];
      eta_.push_back(eta);
    }
    for (std::size_t i = 0; i < data.exit.size(); ++i) {
      bool first = data.event[i] != 0;
      for (std::size_t m = 0; m < i && first; ++m) first = !failsWith(m, i);
      if (first) addTime(i, efron);
    }
  }

 private:
  std::size_t stratum(std::size_t i) const { return data_.stratum.empty() ? 0 : data_.stratum[i]; }
  bool failsWith(std::size_t m, std::size_t i) const {
    return data_.event[m] != 0 && data_.exit[m] == data_.exit[i] && stratum(m) == stratum(i);
  }
  bool atRisk(std::size_t m, std::size_t i) const {
    return stratum(m) == stratum(i) && data_.exit[m] >= data_.exit[i] &&
           (data_.entry.empty() || data_.entry[m] < data_.exit[i]);
  }

  // The time at which row `at` fails.
  void addTime(std::size_t at, bool efron) {
    const std::size_t p = gradient.size();
    std::vector<std::size_t> set;
    std::size_t d = 0;
    double omega = 0.0;
    for (std::size_t m = 0; m < data_.exit.size(); ++m) {
      if (!atRisk(m, at)) continue;
      set.push_back(m);
      if (!failsWith(m, at)) continue;
      ++d;
      omega += data_.weight[m];
      logLikelihood += data_.weight[m] * eta_[m];
    }
    for (std::size_t l = 0; l < d; ++l) {
      const double stay = efron ? 1.0 - static_cast<double>(l) / static_cast<double>(d) : 1.0;
      const double share = omega / static_cast<double>(d);
      const auto riskOf = [&](std::size_t m) {
        return std::exp(eta_[m]) * (failsWith(m, at) ? stay : 1.0);
      };
      double whole = 0.0;
      std::vector<double> mean(p, 0.0);
      std::vector<double> squares(p * p, 0.0);
      for (const std::size_t m : set) {
        const double risk = data_.weight[m] * riskOf(m);
        whole += risk;
        for (std::size_t j = 0; j < p; ++j) {
          mean[j] += risk * data_.columns[j][m];
          for (std::size_t k = 0; k <= j; ++k) {
            squares[j * p + k] += risk * data_.columns[j][m] * data_.columns[k][m];
          }
        }
      }
      logLikelihood -= share * std::log(whole);
      for (double& value : mean) value /= whole;
      for (std::size_t j = 0; j < p; ++j) {
        for (std::size_t k = 0; k <= j; ++k) {
          information[j][k] += share * (squares[j * p + k] / whole - mean[j] * mean[k]);
        }
        for (const std::size_t m : set) {
          const double away = data_.columns[j][m] - mean[j];
          if (failsWith(m, at)) {
            scores[m][j] += away / static_cast<double>(d);
            gradient[j] += data_.weight[m] * away / static_cast<double>(d);
          }
          scores[m][j] -= riskOf(m) * share / whole * away;
        }
      }
    }
  }

  const CoxData& data_;
  std::vector<double> eta_;
};

void compare(Shape shape, std::size_t n, std::size_t p, Ties ties) {
  SCOPED_TRACE(testing::Message() << "shape " << static_cast<int>(shape) << ", " << n << " x " << p
                                  << (ties == Ties::kEfron ? ", Efron" : ", Breslow"));
  const CoxData data = sample(shape, n, p);
  std::vector<double> beta;
  for (std::size_t j = 0; j < p; ++j) beta.push_back(std::cos(static_cast<double>(j)));
  const Direct expected(data, beta, ties == Ties::kEfron);
  const engine::cox::Problem problem(data.response(), data.rows(), data.design(), 0.0);
  engine::cox::Hazards hazards;
  numerics::NewtonPoint point;
  ASSERT_TRUE(engine::cox::evaluate(problem, ties, beta, hazards, point));
  // Sums of up to 700 terms, most of them rounded some ten times: 1e-13 of the sums of their sizes.
  constexpr double kTolerance = 1e-12;
  EXPECT_NEAR(point.value, expected.logLikelihood, kTolerance * (1.0 - expected.logLikelihood));
  const auto size = [&](std::size_t j) { return 1.0 + std::sqrt(expected.information[j][j]); };
  for (std::size_t j = 0; j < p; ++j) {
    // A gradient is a sum of as many terms as rows, each of at most 1.
    EXPECT_NEAR(point.gradient[j], expected.gradient[j], kTolerance * static_cast<double>(n));
    for (std::size_t k = 0; k <= j; ++k) {
      EXPECT_NEAR(point.information(j, k), expected.information[j][k],
                  kTolerance * size(j) * size(k) * 10.0)
          << j << ", " << k;
    }
  }
  const numerics::BlockedColumns scores = scoreRows(problem, hazards, ties);
  for (std::size_t i = 0; i < n; ++i) {
    const std::size_t row = problem.arrangement.source[i];
    for (std::size_t j = 0; j < p; ++j) {
      // What a row has been exposed to may be some tens.
      ASSERT_NEAR(scores(i, j), expected.scores[row][j], 100.0 * kTolerance) << row << ", " << j;
    }
  }
}

void compareSizes(Shape shape) {
  for (const std::size_t n : {1U, 2U, 15U, 255U, 256U, 257U, 263U, 513U}) {
    for (const std::size_t p : {1U, 2U, 5U}) {
      compare(shape, n, p, Ties::kEfron);
      compare(shape, n, p, Ties::kBreslow);
    }
  }
  for (const std::size_t p : {9U, 10U, 11U, 13U}) compare(shape, 259, p, Ties::kEfron);
}

TEST(CoxBlockEdges, HoldForDistinctTimes) { compareSizes(Shape::kDistinct); }

TEST(CoxBlockEdges, HoldWhereSomeTimesAreTied) { compareSizes(Shape::kFewTied); }

TEST(CoxBlockEdges, HoldWhereEventsThatFailTogetherReachAcross) {
  compareSizes(Shape::kTiedAcrossTheEdge);
}

TEST(CoxBlockEdges, HoldWhereEveryTimeIsTied) { compareSizes(Shape::kAllTied); }

TEST(CoxBlockEdges, HoldWhereStrataEndAtThem) { compareSizes(Shape::kStrata); }

TEST(CoxBlockEdges, HoldWhereStaysReachAcross) { compareSizes(Shape::kLateEntry); }

}  // namespace
}  // namespace survmeth
