// What the reports of two methods say of data that have no file, and of refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "analysis/declare.h"

namespace {

using namespace survmeth;  // NOLINT(google-build-using-namespace)

frame::Frame dataOf(std::vector<double> x, std::vector<double> y) {
  frame::Frame data;
  data.source = "memory";
  data.rows = data.rowsRead = x.size();
  data.columns = {frame::numberColumn("x", std::move(x)), frame::numberColumn("y", std::move(y))};
  return data;
}

// The analysis `name` of the columns x and y, with more settings.
report::Report reportOf(const std::string& name, const frame::Frame& data,
                        const std::vector<std::pair<std::string, report::Setting>>& more = {}) {
  const analysis::Declaration& declaration = *analysis::findDeclaration(name);
  const std::shared_ptr<void> request = declaration.request();
  declaration.find("first")->set(request.get(), std::string("x"));
  declaration.find("second")->set(request.get(), std::string("y"));
  for (const auto& [option, value] : more) declaration.find(option)->set(request.get(), value);
  numerics::Progress progress;
  return analysis::analyse(declaration, data, request.get(), progress).report;
}

TEST(DemingReport, ThePairWithoutWhichThereIsNoLineIsARowOfDataFromMemory) {
  const report::Report report = reportOf("deming", dataOf({8, 8, 8, 19}, {6, 5, 7, 12}));
  ASSERT_EQ(report.notes.size(), 1u);
  EXPECT_EQ(report.notes[0].code, "noInterval");
  EXPECT_EQ(report.notes[0].text,
            "neither interval exists: one leave-one-out slope is infinite (without row 4)");
  EXPECT_EQ(report.summary.substr(report.summary.find(". ")),
            ". Its coefficients have no intervals.");
}

TEST(DemingReport, AFallingLineIsWrittenWithAMinus) {
  // y = 5 - x.
  const report::Report report = reportOf("deming", dataOf({1, 2, 3, 4}, {4, 3, 2, 1}));
  EXPECT_EQ(report.summary, "The line is y = 5 - 1 times x. Its coefficients have no intervals.");
}

TEST(DemingReport, TheSummaryTellsIntervalsThatMissEqualMethods) {
  // y is about 3 x + 100: far from intercept 0 and slope 1.
  const report::Report report =
      reportOf("deming", dataOf({1, 2, 3, 4, 5}, {103.1, 105.9, 109, 112.1, 114.9}));
  EXPECT_NE(report.summary.find("the 95% interval of the intercept does not hold 0, that of the "
                                "slope does not hold 1."),
            std::string::npos)
      << report.summary;
}

TEST(AgreeReport, TheFigureHoldsPairsBiasAndLimitsWithTheirIntervals) {
  const report::Report report = reportOf("agree", dataOf({0, 2, 4, 5}, {1, 2, 5, 6}));
  ASSERT_EQ(report.figures.size(), 1u);
  const report::Panel& panel = report.figures[0].panels.at(0);
  ASSERT_EQ(panel.series.size(), 7u);
  const report::Table& table = report.tables[0];
  const auto& estimate = table.find("estimate")->numbers();
  const auto& lower = table.find("lower")->numbers();
  const auto& upper = table.find("upper")->numbers();
  // Bias, upper and lower limit stand in rows 0, 3 and 2 of the table.
  const std::vector<std::size_t> rows = {0, 3, 2};
  for (std::size_t level = 0; level < rows.size(); ++level) {
    const std::size_t row = rows[level];
    const report::Series& band = panel.series[2 * level];
    EXPECT_EQ(band.kind, report::SeriesKind::kBand);
    EXPECT_EQ(band.lower, std::vector<double>(2, lower[row]));
    EXPECT_EQ(band.upper, std::vector<double>(2, upper[row]));
    const report::Series& line = panel.series[2 * level + 1];
    EXPECT_EQ(line.kind, report::SeriesKind::kLine);
    EXPECT_EQ(line.x, (std::vector<double>{0.5, 5.5}));
    EXPECT_EQ(line.y, std::vector<double>(2, estimate[row]));
  }
  EXPECT_EQ(panel.series[6].kind, report::SeriesKind::kPoints);
  EXPECT_EQ(panel.series[6].x, (std::vector<double>{0.5, 2, 4.5, 5.5}));
  EXPECT_EQ(panel.series[6].y, (std::vector<double>{1, 0, 1, 1}));
  EXPECT_EQ(panel.references.at(0).at, 0);
}

TEST(AgreeReport, TheFigureOfRatiosLeavesOutPairsWithoutOneAndMarksOne) {
  const report::Report report =
      reportOf("agree", dataOf({0, 2, 4, 5}, {1, 2, 5, 6}), {{"difference", "ratio"}});
  const report::Panel& panel = report.figures.at(0).panels.at(0);
  EXPECT_EQ(panel.series.back().x, (std::vector<double>{2, 4.5, 5.5}));
  EXPECT_EQ(panel.references.at(0).at, 1);
  EXPECT_EQ(panel.y.label, "y / x");
}

TEST(AgreeReport, PairsOfOneMeanHaveLinesOfSomeLength) {
  const report::Report report = reportOf("agree", dataOf({1, 2, 3}, {3, 2, 1}));
  EXPECT_EQ(report.figures.at(0).panels.at(0).series[1].x, (std::vector<double>{1, 3}));
}

TEST(DemingReport, TheFigureHoldsThePairsTheLineAndTheIdentity) {
  // y = 5 - x.
  const report::Report report = reportOf("deming", dataOf({1, 2, 4}, {4, 3, 1}));
  const report::Panel& panel = report.figures.at(0).panels.at(0);
  EXPECT_TRUE(panel.equalUnits);
  ASSERT_EQ(panel.series.size(), 3u);
  EXPECT_TRUE(panel.series[0].guide);
  EXPECT_EQ(panel.series[0].x, (std::vector<double>{1, 4}));
  EXPECT_EQ(panel.series[0].y, (std::vector<double>{1, 4}));
  EXPECT_EQ(panel.series[1].x, (std::vector<double>{1, 4}));
  EXPECT_NEAR(panel.series[1].y[0], 4, 1e-14);  // some roundings of numbers below 5
  EXPECT_NEAR(panel.series[1].y[1], 1, 1e-14);
  EXPECT_EQ(panel.series[2].x, (std::vector<double>{1, 2, 4}));
  EXPECT_EQ(panel.series[2].y, (std::vector<double>{4, 3, 1}));
}

TEST(AgreeReport, ADifferenceBeyondTheLargestNumberIsRefusedWithItsRow) {
  const frame::Frame data = dataOf({1, 2, -1.5e308}, {1, 2, 1.5e308});
  try {
    reportOf("agree", data);
    FAIL() << "was not refused";
  } catch (const engine::Refusal& refusal) {
    EXPECT_EQ(refusal.role(), engine::Role::kSecond);
    EXPECT_EQ(refusal.row(), 2u);
    EXPECT_STREQ(refusal.what(), "a difference is beyond the largest number");
    EXPECT_EQ(refusal.expected(), "at least three pairs with a difference");
  }
}

TEST(AgreeReport, TwoPairsAreTooFewForTwoMethods) {
  try {
    reportOf("agree", dataOf({1, 2}, {1, 3}));
    FAIL() << "was not refused";
  } catch (const engine::Refusal& refusal) {
    EXPECT_EQ(refusal.role(), engine::Role::kRequest);
    EXPECT_STREQ(refusal.what(), "there are only 2 rows");
    EXPECT_EQ(refusal.expected(), "at least 3 complete rows");
  }
}

TEST(AgreeReport, TheLevelIsOneLessAlpha) {
  const report::Report report = reportOf("agree", dataOf({1, 2, 3}, {2, 2, 5}), {{"alpha", 0.25}});
  EXPECT_EQ(report.facts[0].key, "level");
  EXPECT_EQ(std::get<double>(report.facts[0].value), 0.75);
  EXPECT_EQ(report.tables[0].columns[2].heading, "75% lower");
}

}  // namespace
