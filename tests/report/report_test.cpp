// What a report has to be, and the vocabulary of its keys.
#include "report/report.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include "tests/report/sample.h"

namespace survmeth::report {
namespace {

using test::labels;
using test::numbers;
using test::reportOf;
using test::tableOf;

std::string refusalOf(const Report& report) {
  try {
    requireWellFormed(report);
  } catch (const std::logic_error& error) {
    return error.what();
  }
  return "";
}

TEST(Report, TheSamplesAreWellFormed) {
  EXPECT_EQ(refusalOf(test::sample()), "");
  EXPECT_EQ(refusalOf(test::hostile()), "");
}

TEST(Report, ColumnsAreOfOneLength) {
  EXPECT_EQ(refusalOf(reportOf(
                tableOf({labels("group", "", {"a", "b"}), numbers("n", "", Kind::kCount, {1})}))),
            "report: table.n has another length");
}

TEST(Report, KeysOfATableAreUnique) {
  EXPECT_EQ(refusalOf(reportOf(tableOf({labels("group", "", {}), labels("group", "", {})}))),
            "report: table has two columns group");
}

TEST(Report, KeysAreNotEmpty) {
  EXPECT_EQ(refusalOf(reportOf(tableOf({labels("", "", {})}))),
            "report: a column of table has no key");
  Report report;
  report.facts = {{"", "n", Kind::kCount, 1.0}};
  EXPECT_EQ(refusalOf(report), "report: a fact has no key");
}

TEST(Report, KeysOfFactsAreUnique) {
  Report report;
  report.facts = {{"n", "n", Kind::kCount, 1.0}, {"n", "N", Kind::kCount, 2.0}};
  EXPECT_EQ(refusalOf(report), "report: two facts n");
}

TEST(Report, ATablesIdCanNameAFile) {
  Table table = tableOf({});
  table.id = "../table";
  EXPECT_EQ(refusalOf(reportOf(table)), "report: a table's id is \"../table\"");
  table.id = "";
  EXPECT_EQ(refusalOf(reportOf(table)), "report: a table's id is \"\"");
}

TEST(Report, IdsAreUnique) {
  Report report = reportOf(tableOf({}));
  report.tables.push_back(report.tables[0]);
  EXPECT_EQ(refusalOf(report), "report: two tables table");
  report.tables.pop_back();
  report.figures.resize(2);
  report.figures[0].id = report.figures[1].id = "curve";
  EXPECT_EQ(refusalOf(report), "report: two figures curve");
}

TEST(Report, ATableIsPartedByLabels) {
  Table table = tableOf({numbers("n", "", Kind::kCount, {1})});
  table.partedBy = "n";
  EXPECT_EQ(refusalOf(reportOf(table)),
            "report: table is parted by n, which is no column of labels");
}

TEST(Keys, AreSpeltAsTheyAreNamedOnceAndDocumented) {
  std::ifstream header(SURVMETH_SOURCE "/report/keys.h");
  ASSERT_TRUE(header.is_open());
  const std::regex declaration(R"re(inline constexpr char k(\w)(\w*)\[\] = "(\w)(\w*)";.*)re");
  std::ifstream page(SURVMETH_SOURCE "/docs/report.md");
  ASSERT_TRUE(page.is_open());
  const std::string documented((std::istreambuf_iterator<char>(page)), {});
  std::set<std::string> keys;
  for (std::string line; std::getline(header, line);) {
    std::smatch parts;
    if (line.find("constexpr") == std::string::npos) continue;
    ASSERT_TRUE(std::regex_match(line, parts, declaration)) << line;
    EXPECT_EQ(std::string(1, static_cast<char>(parts[3].str()[0] - 'a' + 'A')), parts[1]) << line;
    EXPECT_EQ(parts[2], parts[4]) << line;
    const std::string key = parts[3].str() + parts[4].str();
    EXPECT_TRUE(keys.insert(key).second) << line;
    EXPECT_NE(documented.find('`' + key + '`'), std::string::npos) << key << " is not on the page";
  }
  EXPECT_TRUE(keys.contains("pValue"));
  EXPECT_TRUE(keys.contains("standardError"));
}

}  // namespace
}  // namespace survmeth::report
