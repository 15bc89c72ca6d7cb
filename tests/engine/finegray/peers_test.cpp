// Subdistribution hazards and regressions of the causes against riskRegression's FGR and CSC
// (tests/reference/incidence/make_peers.R).
//
// Both sides stand at the maximum of the same function; R's last Newton step leaves some 1e-9.
#include "tests/engine/incidence/peers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "engine/cox/fit.h"
#include "tests/engine/finegray/data.h"
#include "tests/support/page.h"

namespace survmeth {
namespace {

using test::PeerCase;

// The case as a table of cases has it.
test::FineGrayCase caseOf(const PeerCase& peer) {
  return {peer.data, static_cast<std::uint32_t>(peer.cause)};
}

// Predicted incidences, between event times, against the item of this name.
void expectPredicted(const test::FineGrayCase& tested, const engine::finegray::Fit& fit,
                     const PeerCase& peer, const char* item) {
  const auto hazard = test::hazardOf(fit);
  std::size_t found = 0;
  for (const auto& [row, items] : peer.items) {
    const auto times = items.find("time");
    if (times == items.end()) continue;
    const auto values = hazard.at(tested.row(row), 0, 0, times->second);
    for (std::size_t m = 0; m < values.size(); ++m, ++found) {
      const double expected = items.at(item)[m];
      EXPECT_NEAR(-std::expm1(-values[m].hazard), expected, 1e-8 * expected) << row << " " << m;
    }
  }
  EXPECT_GT(found, 0u);
}

class Fgr : public testing::TestWithParam<PeerCase> {};

TEST_P(Fgr, FitsAndPredictsTheSame) {
  const test::FineGrayCase tested = caseOf(GetParam());
  const auto fit = tested.fit();
  const std::vector<double>& coef = GetParam().items.at(0).at("coef");
  for (std::size_t j = 0; j < coef.size(); ++j) {
    EXPECT_NEAR(fit.coefficients[j], coef[j],
                1e-9 * std::max(std::fabs(coef[j]), fit.standardError(j)));
  }
  expectPredicted(tested, fit, GetParam(), "predicted");
}

TEST_P(Fgr, PredictsAsCoxphOfWeightedRowsWhereEventsComeFirst) {
  test::FineGrayCase tested = caseOf(GetParam());
  tested.options.censoringTies = engine::finegray::CensoringTies::kAfterEvents;
  expectPredicted(tested, tested.fit(), GetParam(), "finegray");
}

TEST(FineGrayPage, HoldsThePredictionsOfBothPrograms) {
  const auto& cases = test::peerCases();
  const auto peer = std::find_if(cases.begin(), cases.end(),
                                 [](const PeerCase& each) { return each.name() == "FGR_mgus_1"; });
  const auto& items = peer->items.at(343);
  ASSERT_EQ(items.at("time").back(), 326);
  test::Page("incidence")
      .says(
          "of the 344th person of `mgus` by month 326 it is %.6f by riskRegression's FGR (crr) and "
          "%.6f "
          "by survfit of coxph on finegray's rows",
          items.at("predicted").back(), items.at("finegray").back());
}

class Csc : public testing::TestWithParam<PeerCase> {};

TEST_P(Csc, FitsTheSameHazardsOfACause) {
  const test::FineGrayCase tested = caseOf(GetParam());
  std::vector<std::uint32_t> event;
  for (const std::uint32_t each : tested.data.event) event.push_back(each == GetParam().cause);
  numerics::Progress progress;
  const auto fit = engine::cox::fit({tested.data.entry, tested.data.exit, event, 1},
                                    tested.data.rows(), tested.design, {}, progress);
  const auto& items = GetParam().items.at(0);
  const std::vector<double>& coef = items.at("coef");
  const std::size_t p = coef.size();
  for (std::size_t i = 0; i < p; ++i) {
    EXPECT_NEAR(fit.coefficients[i], coef[i],
                1e-9 * std::max(std::fabs(coef[i]), fit.standardError(i)));
    for (std::size_t j = 0; j < p; ++j) {
      const double scale = fit.standardError(i) * fit.standardError(j);
      EXPECT_NEAR(fit.covariance(i, j), items.at("var")[i * p + j], 1e-8 * scale);
    }
  }
  const std::vector<double>& logLikelihood = items.at("loglik");
  EXPECT_NEAR(fit.logLikelihoodNull, logLikelihood[0], 1e-10 * std::fabs(logLikelihood[0]));
  EXPECT_NEAR(fit.logLikelihood, logLikelihood[1], 1e-10 * std::fabs(logLikelihood[1]));
}

INSTANTIATE_TEST_SUITE_P(Cases, Fgr, testing::ValuesIn(test::peerCasesOf("FGR")),
                         [](const auto& of) { return of.param.name(); });
INSTANTIATE_TEST_SUITE_P(Cases, Csc, testing::ValuesIn(test::peerCasesOf("CSC")),
                         [](const auto& of) { return of.param.name(); });

}  // namespace
}  // namespace survmeth
