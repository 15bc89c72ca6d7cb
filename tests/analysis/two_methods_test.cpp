// What the reports of two methods say of data that have no file, and of refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
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
