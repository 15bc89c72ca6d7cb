// Profile-likelihood limits of Cox models: by refits with the coefficient as an offset, by hand, and of
// the penalised likelihood by a second implementation.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "analysis/cox/profile.h"
#include "tests/engine/cox/data.h"

namespace survmeth::analysis {
namespace {

using engine::cox::Fit;
using engine::cox::Options;
using test::CoxData;
using test::Csv;

TEST(CoxProfile, TwiceTheFallAtTheLimitsIsTheQuantile) {
  const CoxData data = test::weightedLung();
  const Fit fit = data.fit();
  numerics::Progress progress;
  for (std::size_t j = 0; j < 3; ++j) {
    const procedures::ProfileLimits limits = coxProfileLimits(fit, nullptr, j, 0.95, progress);
    EXPECT_TRUE(limits.found);
    for (const double limit : {limits.lower, limits.upper}) {
      // The column with its coefficient as an offset, the others estimated.
      CoxData held = data;
      held.offset = data.columns[j];
      for (double& value : held.offset) value *= limit;
      held.columns.erase(held.columns.begin() + static_cast<std::ptrdiff_t>(j));
      held.names.clear();
      held.term = {0, 1};
      EXPECT_NEAR(2 * (fit.logLikelihood - held.fit().logLikelihood), 3.841458820694124, 1e-8);
    }
    EXPECT_LT(limits.lower, fit.coefficients[j]);
    EXPECT_GT(limits.upper, fit.coefficients[j]);
  }
}

TEST(CoxProfile, AnInfiniteCoefficientHasOneFiniteLimit) {
  CoxData data;
  data.exit = {1, 2, 3, 4, 5, 6};
  data.event = {1, 1, 1, 0, 0, 0};
  data.columns = {{1, 1, 1, 0, 0, 0}};
  const Fit fit = data.fit();
  ASSERT_EQ(fit.column[0], engine::cox::Column::kInfinite);
  numerics::Progress progress;
  const procedures::ProfileLimits limits = coxProfileLimits(fit, nullptr, 0, 0.95, progress);
  EXPECT_EQ(limits.upper, std::numeric_limits<double>::infinity());
  // Every event is certain in the limit but for its place among the treated: log(1/3 1/2 1).
  const double r = std::exp(limits.lower);
  const double logLikelihood =
      std::log(r / (3 * r + 3)) + std::log(r / (2 * r + 3)) + std::log(r / (r + 3));
  EXPECT_NEAR(2 * (std::log(1.0 / 6) - logLikelihood), 3.841458820694124, 1e-8);
}

TEST(CoxProfile, AliasedColumnsHaveNoLimits) {
  CoxData data = test::weightedLung();
  data.columns[2] = data.columns[0];
  Options options;
  options.dropAliased = true;
  numerics::Progress progress;
  const procedures::ProfileLimits limits =
      coxProfileLimits(data.fit(options), nullptr, 2, 0.95, progress);
  EXPECT_TRUE(std::isnan(limits.lower));
  EXPECT_FALSE(limits.found);
}

// tests/reference/cox_penalised/make_firth.py finds the limits by bisection, to 30 digits.
TEST(CoxProfile, LimitsUnderFirthsPenaltyAreThoseOfItsDefinition) {
  const Csv table(std::string(SURVMETH_REFERENCE) + "/cox_penalised/firth.csv");
  const Csv file(std::string(SURVMETH_REFERENCE) + "/cox/data/ovarian.csv");
  CoxData data;
  data.exit = file.numbers("time");
  for (const double event : file.numbers("event")) data.event.push_back(event != 0.0 ? 1 : 0);
  std::vector<std::size_t> lines;
  for (std::size_t i = 0; i < table.rows(); ++i) {
    if (table.text("data", i) != "ovarian" || table.text("ties", i) != "efron") continue;
    lines.push_back(i);
    data.names.push_back(table.text("column", i));
    data.columns.push_back(file.numbers(data.names.back()));
  }
  ASSERT_FALSE(lines.empty());
  numerics::Progress progress;
  const engine::cox::PenalisedFit made =
      engine::cox::fitPenalised(data.response(), data.rows(), data.design(), {}, {}, progress);
  for (std::size_t j = 0; j < lines.size(); ++j) {
    const procedures::ProfileLimits limits = coxProfileLimits(made.fit, &made, j, 0.95, progress);
    // The search ends at 1e-10 of the distance.
    const double error = table.number("error", lines[j]);
    EXPECT_NEAR(limits.lower, table.number("lower", lines[j]), 1e-9 * error);
    EXPECT_NEAR(limits.upper, table.number("upper", lines[j]), 1e-9 * error);
  }
}

}  // namespace
}  // namespace survmeth::analysis
