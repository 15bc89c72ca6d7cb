// What must hold whatever the data are.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "tests/engine/cox/data.h"

namespace survmeth {
namespace {

using engine::cox::Fit;
using engine::cox::Options;
using engine::cox::Ties;
using test::CoxData;

struct Random {
  std::uint64_t state;
  double uniform() {
    state = state * 6364136223846793005U + 1442695040888963407U;
    return (static_cast<double>(state >> 12) + 0.5) * 0x1p-52;
  }
};

// Exponential times with three covariates; `grid` > 0 rounds them up to multiples of 1 / grid.
CoxData simulated(std::size_t n, double grid, std::uint64_t seed) {
  Random random{seed};
  CoxData data;
  data.columns.assign(3, {});
  for (std::size_t i = 0; i < n; ++i) {
    const double x[3] = {random.uniform() * 2 - 1, random.uniform() < 0.4 ? 1.0 : 0.0,
                         random.uniform() + random.uniform()};
    for (std::size_t j = 0; j < 3; ++j) data.columns[j].push_back(x[j]);
    const double rate = std::exp(0.8 * x[0] - 0.5 * x[1] + 0.3 * x[2]);
    const double time = -std::log(random.uniform()) / rate;
    const double censored = -2.0 * std::log(random.uniform());
    const double exit = std::min(time, censored);
    data.exit.push_back(grid > 0 ? std::ceil(exit * grid) / grid : exit);
    data.event.push_back(time <= censored ? 1 : 0);
  }
  return data;
}

// Coefficients to 1e-10 of their errors and variances to 1e-10: the fits stop within 1e-10.
void expectSame(const Fit& a, const Fit& b) {
  ASSERT_TRUE(a.converged && b.converged);
  for (std::size_t j = 0; j < a.coefficients.size(); ++j) {
    EXPECT_NEAR(a.coefficients[j], b.coefficients[j], 2e-10 * a.standardError(j));
    EXPECT_NEAR(a.covariance(j, j), b.covariance(j, j), 1e-9 * a.covariance(j, j));
  }
  EXPECT_NEAR(a.logLikelihood, b.logLikelihood, 1e-12 * std::fabs(a.logLikelihood));
}

CoxData permuted(const CoxData& data, std::uint64_t seed) {
  std::vector<std::size_t> order(data.exit.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  Random random{seed};
  for (std::size_t i = order.size(); i-- > 1;) {
    std::swap(order[i],
              order[static_cast<std::size_t>(random.uniform() * static_cast<double>(i + 1))]);
  }
  const auto take = [&](auto values) {
    auto result = values;
    for (std::size_t i = 0; i < values.size(); ++i) result[i] = values[order[i]];
    return result;
  };
  CoxData result = data;
  result.entry = take(data.entry);
  result.exit = take(data.exit);
  result.event = take(data.event);
  for (auto& column : result.columns) column = take(column);
  return result;
}

TEST(CoxProperty, PermutedRowsGiveTheSameBitsWithDistinctTimes) {
  const CoxData data = simulated(700, 0, 1);
  const Fit a = data.fit();
  const Fit b = permuted(data, 5).fit();
  EXPECT_EQ(a.coefficients, b.coefficients);
  EXPECT_EQ(a.covariance.values(), b.covariance.values());
  EXPECT_EQ(a.logLikelihood, b.logLikelihood);
}

TEST(CoxProperty, PermutedRowsGiveTheSameNumbersWithTies) {
  for (const Ties ties : {Ties::kEfron, Ties::kBreslow, Ties::kDiscrete, Ties::kMarginal}) {
    const CoxData data = simulated(200, 10, 2);
    Options options;
    options.ties = ties;
    expectSame(data.fit(options), permuted(data, 6).fit(options));
  }
}

TEST(CoxProperty, AllTreatmentsOfTiesAgreeWithoutTies) {
  const CoxData data = simulated(300, 0, 3);
  const Fit efron = data.fit();
  for (const Ties ties : {Ties::kBreslow, Ties::kDiscrete, Ties::kMarginal}) {
    Options options;
    options.ties = ties;
    const Fit other = data.fit(options);
    EXPECT_EQ(efron.coefficients, other.coefficients);
    EXPECT_EQ(efron.logLikelihood, other.logLikelihood);
  }
}

TEST(CoxProperty, SplittingRowsAtArbitraryTimesChangesNothing) {
  for (const Ties ties : {Ties::kEfron, Ties::kBreslow, Ties::kDiscrete, Ties::kMarginal}) {
    const CoxData data = simulated(250, 12, 4);
    CoxData split = data;
    split.exit.clear();
    split.event.clear();
    for (auto& column : split.columns) column.clear();
    Random random{9};
    for (std::size_t i = 0; i < data.exit.size(); ++i) {
      double entry = -1.0;
      while (true) {
        const double cut = entry + 0.05 + random.uniform();
        const bool last = cut >= data.exit[i];
        split.entry.push_back(entry);
        split.exit.push_back(last ? data.exit[i] : cut);
        split.event.push_back(last ? data.event[i] : 0);
        for (std::size_t j = 0; j < 3; ++j) split.columns[j].push_back(data.columns[j][i]);
        if (last) break;
        entry = cut;
      }
    }
    Options options;
    options.ties = ties;
    const Fit a = data.fit(options);
    const Fit b = split.fit(options);
    EXPECT_GT(b.rows, 2 * a.rows);
    expectSame(a, b);
  }
}

TEST(CoxProperty, FrequenciesAreDuplicatedRowsUnderBreslow) {
  CoxData data = simulated(200, 8, 5);
  CoxData duplicated = data;
  for (std::size_t i = 0; i < data.exit.size(); ++i) {
    data.weight.push_back(1.0 + static_cast<double>(i % 3));
    for (std::size_t copy = 0; copy < i % 3; ++copy) {
      duplicated.exit.push_back(data.exit[i]);
      duplicated.event.push_back(data.event[i]);
      for (std::size_t j = 0; j < 3; ++j) duplicated.columns[j].push_back(data.columns[j][i]);
    }
  }
  Options options;
  options.ties = Ties::kBreslow;
  const Fit a = data.fit(options);
  const Fit b = duplicated.fit(options);
  expectSame(a, b);
  EXPECT_EQ(a.eventsCounted, b.eventsCounted);
  EXPECT_NEAR(a.bic, b.bic, 1e-12 * std::fabs(b.bic));
}

TEST(CoxProperty, RowsOfWeightZeroAreAbsent) {
  CoxData data = simulated(100, 8, 6);
  CoxData fewer = data;
  fewer.exit.resize(80);
  fewer.event.resize(80);
  for (auto& column : fewer.columns) column.resize(80);
  data.weight.assign(100, 1.0);
  std::fill(data.weight.begin() + 80, data.weight.end(), 0.0);
  expectSame(data.fit(), fewer.fit());
}

TEST(CoxProperty, ShiftedAndScaledCovariatesOnlyRescale) {
  const CoxData data = simulated(300, 20, 7);
  CoxData moved = data;
  // A power of two, and a shift that leaves the covariate's last 20 bits.
  for (double& value : moved.columns[0]) value = value * 0x1p-40;
  for (double& value : moved.columns[1]) value = value + 1e9;
  for (double& value : moved.columns[2]) value = value * -3.0;
  const Fit a = data.fit();
  const Fit b = moved.fit();
  EXPECT_NEAR(b.coefficients[0] * 0x1p-40, a.coefficients[0], 1e-10 * a.standardError(0));
  EXPECT_NEAR(b.coefficients[1], a.coefficients[1], 1e-10 * a.standardError(1));
  EXPECT_NEAR(b.coefficients[2] * -3.0, a.coefficients[2], 1e-10 * a.standardError(2));
  EXPECT_NEAR(a.logLikelihood, b.logLikelihood, 1e-12 * std::fabs(a.logLikelihood));
}

TEST(CoxProperty, OffsetsOfAnySizeLoseNoDigits) {
  CoxData data = simulated(300, 20, 8);
  data.stratum.resize(300);
  data.strata = 2;
  for (std::size_t i = 0; i < 300; ++i) data.stratum[i] = i % 2;
  const Fit a = data.fit();
  // A constant of each stratum cancels; multiples of 1/4 stay exact beside the predictors.
  data.offset.resize(300);
  for (std::size_t i = 0; i < 300; ++i) data.offset[i] = i % 2 == 0 ? 500.0 : -500.25;
  const Fit b = data.fit();
  expectSame(a, b);
  EXPECT_NEAR(a.logLikelihood, b.logLikelihood, 1e-11 * std::fabs(a.logLikelihood));
}

TEST(CoxProperty, OffsetsFarApartInOneStratumAreTwoSamplesOneAfterTheOther) {
  // The rows of offset 500 have all failed before those of -500 begin to count: exp(-1000) is
  // nothing beside them, and the sums that remain are those of the others alone.
  const CoxData low = simulated(150, 0, 9);
  CoxData both = low;
  both.offset.assign(150, -500.0);
  const CoxData high = simulated(150, 0, 10);
  for (std::size_t i = 0; i < 150; ++i) {
    both.exit[i] += 100.0;
    both.exit.push_back(high.exit[i]);
    both.event.push_back(high.event[i]);
    both.offset.push_back(500.0);
    for (std::size_t j = 0; j < 3; ++j) both.columns[j].push_back(high.columns[j][i]);
  }
  CoxData apart = both;
  apart.offset.clear();
  apart.strata = 2;
  for (std::size_t i = 0; i < 300; ++i) apart.stratum.push_back(i < 150 ? 0 : 1);
  expectSame(both.fit(), apart.fit());
}

TEST(CoxProperty, RowsOfNoWeightThatLieFarAwayChangeNothing) {
  // Two samples one after the other, the rows of the second of no weight beside those of the first
  // and 256 away from them: within the risk sets nothing has changed. The covariates keep their
  // bits, which end at 2^-32.
  CoxData near = simulated(300, 40, 11);
  for (auto& column : near.columns) {
    for (double& value : column) value = std::round(value * 0x1p32) * 0x1p-32;
  }
  near.offset.resize(300);
  for (std::size_t i = 0; i < 300; ++i) {
    near.offset[i] = i < 150 ? 40.0 : -40.0;
    if (i >= 150) near.exit[i] += 100.0;
  }
  CoxData far = near;
  for (std::size_t i = 0; i < 150; ++i) far.columns[0][i] += 256.0;
  expectSame(near.fit(), far.fit());
}

}  // namespace
}  // namespace survmeth
