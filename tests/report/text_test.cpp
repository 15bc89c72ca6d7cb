// The report as text.
#include "report/text.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/report/sample.h"
#include "text/utf8.h"

namespace survmeth::report {
namespace {

using text::displayWidth;
using text::isUtf8;
using text::printable;

using test::labels;
using test::numbers;
using test::reportOf;
using test::tableOf;

TEST(Text, SaysEverythingThatPeopleAreShown) {
  EXPECT_EQ(toText(test::sample()),
            "Survival by treatment\n"
            "---------------------\n"
            "data/leukemia.csv, 42 of 43 rows\n"
            "time: weeks; event: relapse, death; ratio: 2.5; bounds: 0, 4.5; exact; plain: no\n"
            "\n"
            "Half of those on placebo relapsed within 8 weeks, of those on 6-MP within 23.\n"
            "\n"
            "Subjects        42\n"
            "Log-likelihood  -729.489\n"
            "Weighted        no\n"
            "Bound           -\n"
            "\n"
            "Median survival\n"
            "treatment   n  median  95% lower  95% upper\n"
            "6-MP       21      23         13          -\n"
            "placebo    21       8          4         11\n"
            "The upper limit of 6-MP is not reached.\n"
            "\n"
            "Kaplan-Meier table, treatment = 6-MP\n"
            "weeks  survival\n"
            "    6    0.8571\n"
            "    7    0.8067\n"
            "\n"
            "Kaplan-Meier table, treatment = placebo\n"
            "weeks  survival\n"
            "    1    0.9048\n"
            "\n"
            "Notes\n"
            "  1 of 43 rows left out: missing in \"weeks\" (1)\n"
            "\n"
            "Methods\n"
            "  Curve: product-limit. [Kaplan & Meier, JASA 53 (1958) 457-481]\n"
            "  Limits: 95% log-log from the Greenwood sum.\n");
}

TEST(Text, OfNothingIsNothing) { EXPECT_EQ(toText({}), ""); }

TEST(Text, NotesCanGoElsewhere) {
  EXPECT_EQ(toText(test::sample(), {.notes = false}).find("Notes"), std::string::npos);
}

TEST(Text, TablesForFilesOnlyAreLeftOut) {
  EXPECT_EQ(toText(test::sample()).find("Residuals"), std::string::npos);
}

TEST(Text, ATableWithoutRowsSaysSo) {
  Table table = tableOf({labels("group", "group", {}), numbers("n", "n", Kind::kCount, {})});
  table.caption = "Groups";
  EXPECT_EQ(toText(reportOf(table)), "Groups\n(no rows)\n");
  table.partedBy = "group";
  EXPECT_EQ(toText(reportOf(table)), "Groups\n(no rows)\n");
}

TEST(Text, LabelsThatAreEmptyInEveryRowAreLeftOut) {
  Report report;
  Table table;
  table.id = "areas";
  table.columns = {{"marker", "marker", Kind::kLabel, std::vector<std::string>{"", ""}},
                   {"reason", "why not", Kind::kLabel, std::vector<std::string>{"", ""}}};
  report.tables = {table};
  EXPECT_EQ(toText(report).find("why not"), std::string::npos);
  EXPECT_NE(toText(report).find("marker"), std::string::npos);
  report.tables[0].columns[1].values = std::vector<std::string>{"", "one row"};
  EXPECT_NE(toText(report).find("why not"), std::string::npos);
}

TEST(Text, BlocksOfOneTableShareTheirDecimals) {
  Table table = tableOf(
      {labels("group", "arm", {"a", "b"}), numbers("coef", "coef", Kind::kEstimate, {0.5, 0.123})});
  table.partedBy = "group";
  EXPECT_EQ(toText(reportOf(table)), "arm = a\n coef\n0.500\n\narm = b\n coef\n0.123\n");
}

TEST(Text, EstimatesHaveTheDigitsThatAreAskedFor) {
  const Table table = tableOf({numbers("coef", "coef", Kind::kEstimate, {1.7365314})});
  EXPECT_EQ(toText(reportOf(table), {.digits = 3}), "coef\n1.74\n");
}

TEST(Text, AMethodGoesOnIndented) {
  Report report;
  report.methods = {{"tests: weighted log-rank family with hypergeometric variance", ""},
                    {"limits: log-log", ""}};
  EXPECT_EQ(toText(report, {.width = 40}),
            "Methods\n"
            "  tests: weighted log-rank family with\n"
            "    hypergeometric variance\n"
            "  limits: log-log\n");
}

TEST(Text, ProseIsBrokenEvenWithoutAWidth) {
  Report report;
  report.summary = std::string(60, 'a') + ' ' + std::string(60, 'b');
  EXPECT_EQ(toText(report, {.width = 0}),
            std::string(60, 'a') + '\n' + std::string(60, 'b') + '\n');
}

TEST(Text, NothingFromTheDataReachesTheTerminalOrLeavesItsLines) {
  for (const std::size_t width : {std::size_t{40}, std::size_t{80}}) {
    const std::string text = toText(test::hostile(), {.width = width});
    EXPECT_TRUE(isUtf8(text));
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      EXPECT_EQ(printable(line), line);
      EXPECT_LE(displayWidth(line), width) << line;
    }
  }
}

TEST(Text, RefusesAReportThatIsNotWellFormed) {
  EXPECT_THROW(toText(reportOf(tableOf({labels("", "", {})}))), std::logic_error);
}

}  // namespace
}  // namespace survmeth::report
