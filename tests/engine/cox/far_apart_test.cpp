// Predictors further apart in one stratum than any one unit of risks can hold.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/cox/baseline.h"
#include "engine/cox/proportionality.h"
#include "engine/cox/residuals.h"
#include "tests/engine/cox/data.h"

namespace survmeth {
namespace {

using engine::cox::Fit;
using engine::cox::Options;
using engine::cox::Ties;
using test::CoxData;

constexpr std::size_t kRows = 90;
constexpr std::size_t kSamples = 3;

double uniform(std::uint64_t& state) {
  state = state * 6364136223846793005U + 1442695040888963407U;
  return (static_cast<double>(state >> 12) + 0.5) * 0x1p-52;
}

// Three samples one after the other, each with times on a grid, some rows entering late on demand.
CoxData samples(bool late) {
  std::uint64_t state = 7;
  CoxData data;
  data.columns.resize(2);
  for (std::size_t i = 0; i < kRows * kSamples; ++i) {
    const double begin = 100.0 * static_cast<double>(i / kRows);
    const double exit = 1.0 + std::floor(12.0 * uniform(state));
    const double entry = late ? std::max(0.0, exit - 1.0 - std::floor(9.0 * uniform(state))) : 0.0;
    data.exit.push_back(begin + exit);
    // Without late entry everybody is there from the beginning.
    if (late) data.entry.push_back(begin + entry);
    data.event.push_back(uniform(state) < 0.4 ? 1 : 0);
    data.columns[0].push_back(uniform(state) - 0.5);
    data.columns[1].push_back(uniform(state) < 0.5 ? 1.0 : 0.0);
  }
  return data;
}

// One stratum, the rows of each sample 4000 above those of the next: beside them the later ones are
// nothing.
CoxData inOneStratum(CoxData data) {
  for (std::size_t i = 0; i < kRows * kSamples; ++i) {
    data.offset.push_back(4000.0 * (1.0 - static_cast<double>(i / kRows)));
  }
  return data;
}

CoxData inStrata(CoxData data) {
  data.strata = kSamples;
  for (std::size_t i = 0; i < kRows * kSamples; ++i) {
    data.stratum.push_back(static_cast<std::uint32_t>(i / kRows));
  }
  return data;
}

// Both fits are within 1e-10 standard errors of one point.
void expectSameFit(const Fit& one, const Fit& strata) {
  ASSERT_TRUE(one.converged && strata.converged);
  for (std::size_t j = 0; j < 2; ++j) {
    EXPECT_NEAR(one.coefficients[j], strata.coefficients[j], 2e-10 * strata.standardError(j));
    EXPECT_NEAR(one.covariance(j, j), strata.covariance(j, j), 1e-9 * strata.covariance(j, j));
  }
  EXPECT_NEAR(one.logLikelihood, strata.logLikelihood, 1e-12 * std::fabs(strata.logLikelihood));
  EXPECT_NEAR(one.score.chiSquare, strata.score.chiSquare, 1e-10 * strata.score.chiSquare);
}

TEST(CoxFarApart, SamplesOneAfterTheOtherAreStrataUnderEveryTreatmentOfTies) {
  for (const bool late : {false, true}) {
    for (const Ties ties : {Ties::kEfron, Ties::kBreslow, Ties::kDiscrete, Ties::kMarginal}) {
      Options options;
      options.ties = ties;
      const CoxData data = samples(late);
      expectSameFit(inOneStratum(data).fit(options), inStrata(data).fit(options));
    }
  }
}

TEST(CoxFarApart, ResidualsAreThoseOfTheStrata) {
  for (const bool late : {false, true}) {
    Options options;
    options.robust = true;
    const CoxData data = samples(late);
    const Fit one = inOneStratum(data).fit(options);
    const Fit strata = inStrata(data).fit(options);
    // Coefficients differ by up to 2e-10 standard errors, and residuals by some of those.
    const std::vector<double> martingale = martingaleResiduals(one, {});
    const std::vector<double> expected = martingaleResiduals(strata, {});
    const std::vector<std::vector<double>> score = scoreResiduals(one, {});
    const std::vector<std::vector<double>> scores = scoreResiduals(strata, {});
    const engine::cox::SchoenfeldResiduals schoenfeld = schoenfeldResiduals(one, false);
    const engine::cox::SchoenfeldResiduals ofStrata = schoenfeldResiduals(strata, false);
    for (std::size_t i = 0; i < martingale.size(); ++i) {
      EXPECT_NEAR(martingale[i], expected[i], 1e-9);
      for (std::size_t j = 0; j < 2; ++j) EXPECT_NEAR(score[j][i], scores[j][i], 1e-9);
    }
    EXPECT_EQ(schoenfeld.row, ofStrata.row);
    for (std::size_t j = 0; j < 2; ++j) {
      EXPECT_NEAR(one.robustCovariance(j, j), strata.robustCovariance(j, j),
                  1e-9 * strata.robustCovariance(j, j));
      for (std::size_t i = 0; i < schoenfeld.row.size(); ++i) {
        EXPECT_NEAR(schoenfeld.column[j][i], ofStrata.column[j][i], 1e-9);
      }
    }
    const auto test = testProportionality(one, engine::cox::TimeTransform::kIdentity);
    const auto same = testProportionality(strata, engine::cox::TimeTransform::kIdentity);
    EXPECT_NEAR(test.global.chiSquare, same.global.chiSquare, 1e-8 * same.global.chiSquare);
  }
}

TEST(CoxFarApart, HazardsAreThoseOfTheStrataAtTheirRowsOffsets) {
  for (const bool late : {false, true}) {
    const CoxData data = samples(late);
    const Fit one = inOneStratum(data).fit();
    const Fit strata = inStrata(data).fit();
    const engine::cox::BaselineHazard whole(one);
    const engine::cox::BaselineHazard parts(strata);
    const std::vector<double> x = {0.25, 1.0};
    for (std::size_t s = 0; s < kSamples; ++s) {
      const auto expected = parts.at(x, 0.0, static_cast<std::uint32_t>(s));
      const auto values = whole.at(x, 4000.0 * (1.0 - static_cast<double>(s)), 0, expected.time);
      for (std::size_t k = 0; k < expected.time.size(); ++k) {
        EXPECT_NEAR(values[k].hazard, expected.hazard[k], 1e-9 * expected.hazard[k]);
        EXPECT_NEAR(values[k].standardError, expected.standardError[k],
                    1e-9 * expected.standardError[k]);
      }
    }
  }
}

TEST(CoxFarApart, ExactTreatmentsTakeTiedRowsFarFromEachOther) {
  // Of the two that fail together one is sure to come before the third row at risk, and the other
  // comes before it with exp(-900) / (1 + exp(-900)).
  CoxData data;
  data.exit = {1, 1, 2};
  data.event = {1, 1, 0};
  data.offset = {1000.0, -900.0, 0.0};
  for (const Ties ties : {Ties::kDiscrete, Ties::kMarginal}) {
    Options options;
    options.ties = ties;
    // Differences of numbers of 1000.
    EXPECT_NEAR(data.fit(options).logLikelihood, -900.0, 1e-12);
  }
}

TEST(CoxFarApart, OffsetsLeavePredictorsTheDigitsBesideThem) {
  // The first four rows are 2^40 above the others and each other's only rivals. Predictors there end
  // at 2^-12, and so may coefficients.
  CoxData data;
  data.exit = {1, 2, 3, 4, 5, 6, 7, 8};
  data.event = {1, 1, 1, 0, 1, 1, 1, 0};
  data.columns = {{1, 0, 1, 0, 0, 1, 0, 1}};
  data.offset = {0x1p40, 0x1p40, 0x1p40, 0x1p40, 0, 0, 0, 0};
  CoxData apart = data;
  apart.offset.clear();
  apart.strata = 2;
  apart.stratum = {0, 0, 0, 0, 1, 1, 1, 1};
  EXPECT_NEAR(data.fit().coefficients[0], apart.fit().coefficients[0], 0x1p-12);
}

}  // namespace
}  // namespace survmeth
