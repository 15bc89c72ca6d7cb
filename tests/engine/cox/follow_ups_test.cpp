// What is asked of a fit afterwards: residuals, hazards, tests of terms.
#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "Dist/Dist"
#include "engine/cox/baseline.h"
#include "engine/cox/proportionality.h"
#include "engine/cox/residuals.h"
#include "tests/engine/cox/data.h"

namespace survmeth {
namespace {

using engine::Refusal;
using engine::cox::Fit;
using engine::cox::Options;
using engine::cox::ResidualOptions;
using engine::cox::Ties;
using test::CoxData;

double sum(const std::vector<double>& values) {
  return std::accumulate(values.begin(), values.end(), 0.0);
}

TEST(CoxResiduals, WeightedMartingaleAndScoreResidualsSumToZero) {
  for (const Ties ties : {Ties::kEfron, Ties::kBreslow}) {
    Options options;
    options.ties = ties;
    const Fit fit = test::weightedLung().fit(options);
    // The sum of a few hundred numbers of size 1.
    EXPECT_NEAR(sum(martingaleResiduals(fit, {true, false})), 0.0, 1e-10);
    for (std::size_t j = 0; j < 3; ++j) {
      const std::vector<double> score = scoreResiduals(fit, {true, false})[j];
      EXPECT_NEAR(sum(score), 0.0, 1e-8 / fit.standardError(j));
      const std::vector<double> schoenfeld = schoenfeldResiduals(fit, true).column[j];
      EXPECT_NEAR(sum(schoenfeld), 0.0, 1e-8 / fit.standardError(j));
    }
  }
}

TEST(CoxResiduals, WeightedSchoenfeldResidualsCarryTheirOwnRowsWeight) {
  const CoxData data = test::weightedLung();
  const Fit fit = data.fit();
  const auto plain = schoenfeldResiduals(fit, false);
  const auto weighted = schoenfeldResiduals(fit, true);
  for (std::size_t e = 0; e < plain.row.size(); ++e) {
    EXPECT_EQ(weighted.column[0][e], data.weight[plain.row[e]] * plain.column[0][e]);
    EXPECT_EQ(plain.time[e], data.exit[plain.row[e]]);
    EXPECT_EQ(plain.stratum[e], data.stratum[plain.row[e]]);
  }
}

TEST(CoxResiduals, ClustersOfOneRowAreRows) {
  CoxData data = test::weightedLung();
  Options options;
  options.robust = true;
  const Fit rows = data.fit(options);
  data.clusters = data.exit.size();
  for (std::size_t i = 0; i < data.exit.size(); ++i) {
    data.cluster.push_back(static_cast<std::uint32_t>(data.exit.size() - 1 - i));
  }
  const Fit clusters = data.fit();
  for (std::size_t j = 0; j < 3; ++j) {
    EXPECT_NEAR(clusters.robustCovariance(j, j), rows.robustCovariance(j, j),
                1e-12 * rows.robustCovariance(j, j));
  }
  EXPECT_NEAR(clusters.robustScore.chiSquare, rows.robustScore.chiSquare, 1e-10);
}

TEST(CoxResiduals, RowsOfWeightZeroHaveNone) {
  CoxData data = test::weightedLung();
  data.weight[3] = 0.0;
  const Fit fit = data.fit();
  EXPECT_TRUE(std::isnan(martingaleResiduals(fit, {})[3]));
  EXPECT_FALSE(std::isnan(martingaleResiduals(fit, {})[4]));
}

template <typename Call>
std::string refusal(Call call) {
  try {
    call();
  } catch (const Refusal& refused) {
    return refused.what();
  }
  return "not refused";
}

TEST(CoxFollowUps, ExactTiesRefuseWhatNeedsAHazard) {
  CoxData data = test::weightedLung();
  data.weight.clear();
  data.exit.resize(30);
  data.event.resize(30);
  data.stratum.resize(30);
  for (auto& column : data.columns) column.resize(30);
  Options options;
  options.ties = Ties::kDiscrete;
  const Fit discrete = data.fit(options);
  EXPECT_EQ(refusal([&] { martingaleResiduals(discrete, {}); }),
            "martingale residuals are not defined under the discrete treatment of ties");
  EXPECT_EQ(refusal([&] { devianceResiduals(discrete, {}); }),
            "deviance residuals are not defined under the discrete treatment of ties");
  EXPECT_EQ(refusal([&] { scoreResiduals(discrete, {}); }),
            "score residuals are not defined under the discrete treatment of ties");
  EXPECT_EQ(refusal([&] { schoenfeldResiduals(discrete, false); }),
            "Schoenfeld residuals are not defined under the discrete treatment of ties");
  EXPECT_EQ(refusal([&] { scaledSchoenfeldResiduals(discrete, false); }),
            "scaled Schoenfeld residuals are not defined under the discrete treatment of ties");
  options.ties = Ties::kMarginal;
  const Fit marginal = data.fit(options);
  EXPECT_EQ(refusal([&] { dfbetaResiduals(marginal, {}); }),
            "dfbeta residuals are not defined under the exact marginal treatment of ties");
  EXPECT_EQ(refusal([&] { dfbetasResiduals(marginal, {}); }),
            "dfbetas residuals are not defined under the exact marginal treatment of ties");
  EXPECT_EQ(refusal([&] { engine::cox::BaselineHazard{marginal}; }),
            "cumulative hazards are not defined under the exact marginal treatment of ties");
  EXPECT_EQ(refusal([&] { testProportionality(marginal, engine::cox::TimeTransform::kIdentity); }),
            "tests of proportional hazards are not defined under the exact marginal treatment of "
            "ties");
}

TEST(CoxFollowUps, WhatCannotBeAnsweredIsRefused) {
  CoxData data = test::weightedLung();
  const Fit fit = data.fit();
  EXPECT_EQ(refusal([&] {
              martingaleResiduals(fit, {false, true});
            }),
            "residuals by cluster need clusters");
  EXPECT_EQ(refusal([&] {
              engine::cox::BaselineHazard(fit).at(std::vector<double>{0, 0, 0}, 0.0, 2);
            }),
            "stratum 2 has no rows in the fit");
  for (double& time : data.exit) time -= 5.0;
  EXPECT_EQ(refusal([&] { testProportionality(data.fit(), engine::cox::TimeTransform::kLog); }),
            "the logarithm needs positive event times");
}

TEST(CoxTerms, DroppingATermIsTheDifferenceOfTwoFits) {
  CoxData data = test::weightedLung();
  const Fit fit = data.fit();
  numerics::Progress progress;
  const auto tests = dropEachTerm(fit, progress);
  ASSERT_EQ(tests.size(), 2U);
  CoxData onlyAge = data;
  onlyAge.columns.resize(1);
  onlyAge.names.resize(1);
  onlyAge.term.resize(1);
  const double expected = 2 * (fit.logLikelihood - onlyAge.fit().logLikelihood);
  // The difference of two log-likelihoods of some 1,000, each to 1e-13.
  EXPECT_NEAR(tests[1].test.chiSquare, expected, 1e-9);
  EXPECT_EQ(tests[1].test.degreesOfFreedom, 2U);
  EXPECT_NEAR(tests[1].test.pValue, pValChiSq(expected, 2.0), 1e-12);
}

TEST(CoxPairs, FiftyThousandMatchedPairsAreMcNemars) {
  // One of each pair fails while the other is at risk. Exposed alone among the discordant:
  // 12,500 that fail and 5,000 that do not.
  CoxData data;
  data.columns.resize(1);
  data.strata = 50000;
  for (std::uint32_t pair = 0; pair < 50000; ++pair) {
    const double failing = pair % 4 == 0 || pair % 10 == 1 ? 1.0 : 0.0;
    const double other = pair % 4 != 0 && pair % 5 == 2 ? 1.0 : (pair % 10 == 1 ? failing : 0.0);
    for (const bool fails : {true, false}) {
      data.exit.push_back(1.0 + pair % 7);
      data.event.push_back(fails ? 1 : 0);
      data.stratum.push_back(pair);
      data.columns[0].push_back(fails ? failing : other);
    }
  }
  double exposedFails = 0;
  double exposedStays = 0;
  for (std::size_t i = 0; i < data.exit.size(); i += 2) {
    exposedFails += data.columns[0][i] > data.columns[0][i + 1] ? 1 : 0;
    exposedStays += data.columns[0][i] < data.columns[0][i + 1] ? 1 : 0;
  }
  const Fit fit = data.fit();
  const double error = std::sqrt(1 / exposedFails + 1 / exposedStays);
  EXPECT_NEAR(fit.coefficients[0], std::log(exposedFails / exposedStays), 1e-10 * error);
  EXPECT_NEAR(fit.standardError(0), error, 1e-10 * error);
}

}  // namespace
}  // namespace survmeth
