// A fit and what follows from it give the same bits on any number of threads.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "engine/cox/concordance.h"
#include "engine/cox/residuals.h"
#include "numerics/threads.h"
#include "tests/engine/cox/data.h"

namespace survmeth {
namespace {

using engine::cox::Fit;
using engine::cox::Options;
using test::CoxData;

// Of enough rows for several parts.
CoxData simulated(std::size_t n, double grid, bool lateEntry, std::size_t strata) {
  std::uint64_t state = 11 + n;
  const auto uniform = [&] {
    state = state * 6364136223846793005U + 1442695040888963407U;
    return (static_cast<double>(state >> 12) + 0.5) * 0x1p-52;
  };
  CoxData data;
  data.columns.assign(5, {});
  data.strata = strata;
  data.clusters = n / 3 + 1;
  for (std::size_t i = 0; i < n; ++i) {
    double eta = 0.0;
    for (auto& column : data.columns) {
      column.push_back(uniform() - 0.5);
      eta = 0.5 * eta + column.back();
    }
    double exit = -std::log(uniform()) / std::exp(eta);
    if (grid > 0) exit = std::ceil(exit * grid) / grid;
    data.exit.push_back(exit);
    data.event.push_back(uniform() < 0.7 ? 1 : 0);
    if (lateEntry) data.entry.push_back(exit - 0.3 * uniform() - 1e-3);
    if (strata > 1)
      data.stratum.push_back(static_cast<std::uint32_t>(uniform() * static_cast<double>(strata)));
    data.cluster.push_back(static_cast<std::uint32_t>(i / 3));
  }
  return data;
}

// Every number that a fit has.
std::vector<double> numbersOf(const CoxData& data, bool clusters) {
  CoxData used = data;
  if (!clusters) used.cluster.clear();
  Options options;
  options.robust = true;
  const Fit fit = used.fit(options);
  EXPECT_TRUE(fit.converged);
  std::vector<double> numbers = fit.coefficients;
  const auto add = [&](const std::vector<double>& more) {
    numbers.insert(numbers.end(), more.begin(), more.end());
  };
  add(fit.covariance.values());
  add(fit.robustCovariance.values());
  add({fit.logLikelihoodNull, fit.logLikelihood, fit.score.chiSquare, fit.robustScore.chiSquare});
  add(engine::cox::martingaleResiduals(fit, {}));
  for (const auto& column : engine::cox::scoreResiduals(fit, {})) add(column);
  const engine::cox::Concordance concordance = engine::cox::concordance(fit);
  add({concordance.estimate, concordance.standardError});
  return numbers;
}

void expectSameBits(const CoxData& data, bool clusters) {
  numerics::setThreads(1);
  const std::vector<double> one = numbersOf(data, clusters);
  for (const unsigned count : {2U, 7U}) {
    numerics::setThreads(count);
    EXPECT_EQ(numbersOf(data, clusters), one) << count << " threads";
  }
  numerics::setThreads(0);
}

TEST(ThreadsOfAFit, GiveTheSameBits) { expectSameBits(simulated(12000, 0, false, 1), false); }

TEST(ThreadsOfAFit, GiveTheSameBitsWithManyRows) {
  // Enough for several parts of everything, the scores' order and the rows' among them.
  expectSameBits(simulated(70000, 0, false, 1), false);
}

TEST(ThreadsOfAFit, GiveTheSameBitsWithTies) {
  // Groups that reach across several blocks and parts, and many of a few rows.
  expectSameBits(simulated(12000, 3, false, 1), false);
  expectSameBits(simulated(12000, 1000, false, 1), false);
}

TEST(ThreadsOfAFit, GiveTheSameBitsWithStrataAndClusters) {
  expectSameBits(simulated(12000, 50, false, 3), true);
  expectSameBits(simulated(12000, 50, false, 3000), true);
}

TEST(ThreadsOfAFit, GiveTheSameBitsWithLateEntry) {
  expectSameBits(simulated(12000, 0, true, 2), false);
  expectSameBits(simulated(12000, 40, true, 2), true);
}

}  // namespace
}  // namespace survmeth
