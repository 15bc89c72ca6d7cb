// Cumulative subdistribution hazards with their errors against the sums over pairs of rows that
// define them (tests/reference/incidence/make_finegray_errors.py).
#include "engine/finegray/hazards.h"

#include <gtest/gtest.h>

#include "tests/engine/finegray/data.h"
#include "tests/support/progress.h"

namespace survmeth {
namespace {

using engine::finegray::CensoringTies;
using engine::finegray::Errors;
using test::Csv;
using test::FineGrayCase;

const std::string kFolder = std::string(SURVMETH_REFERENCE) + "/incidence/";

const Csv& cases() {
  static const Csv file(kFolder + "finegray_errors_cases.csv");
  return file;
}

class FineGrayHazards : public testing::TestWithParam<std::size_t> {};

TEST_P(FineGrayHazards, HaveTheErrorsOfTheirDefinition) {
  static const Csv expected(kFolder + "finegray_errors.csv");
  const std::string name = cases().text("case", GetParam());
  FineGrayCase tested(cases(), GetParam());
  if (cases().text("ties", GetParam()) == "after-events") {
    tested.options.censoringTies = CensoringTies::kAfterEvents;
  }
  if (cases().text("errors", GetParam()) == "sandwich") tested.options.errors = Errors::kSandwich;
  if (cases().text("offset", GetParam()) == "far") {
    tested.data.offset.assign(tested.data.exit.size(), 0.0);
    tested.data.offset[4] = 27.5;
  }
  const auto hazard = test::hazardOf(tested.fit());
  std::size_t found = 0;
  for (std::size_t i = 0; i < expected.rows(); ++i) {
    if (expected.text("case", i) != name) continue;
    ++found;
    const double time = expected.number("time", i);
    const auto at =
        hazard.at(tested.row(static_cast<std::size_t>(expected.number("row", i))), 0,
                  static_cast<std::uint32_t>(expected.number("stratum", i)), {&time, 1});
    // Of sums in another order, at coefficients that leave some 1e-12 of their errors.
    const double value = expected.number("hazard", i);
    const double error = expected.number("standardError", i);
    EXPECT_NEAR(at[0].hazard, value, 1e-10 * value) << i;
    EXPECT_NEAR(at[0].standardError, error, 1e-10 * error) << i;
  }
  EXPECT_GT(found, 0u);
}

TEST(FineGrayHazards, HaveTheErrorsOfRowsWhereEachClusterIsARow) {
  FineGrayCase tested(cases(), 0);
  std::vector<std::uint32_t> thirds(tested.data.exit.size());
  for (std::uint32_t i = 0; i < thirds.size(); ++i) thirds[i] = i % 3;
  tested.censoring = thirds;
  tested.groups = 3;
  const auto rows = test::hazardOf(tested.fit()).at(tested.row(5), 0, 0);
  for (std::uint32_t i = 0; i < thirds.size(); ++i) tested.data.cluster.push_back(i);
  tested.data.clusterCount = thirds.size();
  const auto clusters = test::hazardOf(tested.fit()).at(tested.row(5), 0, 0);
  ASSERT_EQ(rows.time, clusters.time);
  for (std::size_t k = 0; k < rows.time.size(); ++k) {
    // Another order of sums.
    EXPECT_NEAR(rows.standardError[k], clusters.standardError[k], 1e-12 * rows.standardError[k]);
  }
}

TEST(FineGrayHazards, ReportHowFarTheyAreAndStopThere) {
  const engine::finegray::Fit fit = FineGrayCase("melanoma", 1).fit();
  test::expectStops(
      [&](numerics::Progress& progress) { engine::finegray::hazardSums(fit, progress); });
}

INSTANTIATE_TEST_SUITE_P(Cases, FineGrayHazards, testing::Range<std::size_t>(0, cases().rows()),
                         [](const auto& of) { return cases().text("case", of.param); });

}  // namespace
}  // namespace survmeth
