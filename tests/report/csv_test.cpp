// Tables as CSV.
#include "report/csv.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/report/sample.h"

namespace survmeth::report {
namespace {

using test::labels;
using test::numbers;
using test::tableOf;

constexpr double kInfinite = std::numeric_limits<double>::infinity();

// The cells of CSV text by RFC 4180, read independently of the writer.
std::vector<std::vector<std::string>> parsed(const std::string& text) {
  std::vector<std::vector<std::string>> rows(1, {""});
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::string& cell = rows.back().back();
    if (quoted && text[i] == '"' && i + 1 < text.size() && text[i + 1] == '"') {
      cell += text[++i];
    } else if (text[i] == '"') {
      quoted = !quoted;
    } else if (quoted || (text[i] != ',' && text[i] != '\n')) {
      cell += text[i];
    } else if (text[i] == ',') {
      rows.back().emplace_back();
    } else {
      rows.push_back({""});
    }
  }
  rows.pop_back();  // the text ends with a line end
  return rows;
}

TEST(Csv, HasKeysForAHeaderAndEveryDigit) {
  EXPECT_EQ(toCsv(tableOf({labels("name", "Name", {"age", "sex"}),
                           numbers("pValue", "p", Kind::kPValue, {1.0 / 3, 1e-300})})),
            "name,pValue\nage,0.3333333333333333\nsex,1e-300\n");
}

TEST(Csv, ShowsWhatDoesNotExistAndWhatIsInfinite) {
  EXPECT_EQ(toCsv(tableOf({numbers("lower", "", Kind::kEstimate, {std::nan(""), -kInfinite}),
                           numbers("upper", "", Kind::kEstimate, {kInfinite, -0.0})})),
            "lower,upper\n,inf\n-inf,-0\n");
}

TEST(Csv, ARowOfOneEmptyCellIsNoEmptyLine) {
  EXPECT_EQ(toCsv(tableOf({labels("name", "", {"", "a"})})), "name\n\"\"\na\n");
  EXPECT_EQ(toCsv(tableOf({numbers("x", "", Kind::kTime, {std::nan("")})})), "x\n\"\"\n");
}

TEST(Csv, OfATableWithoutRowsIsItsHeader) {
  EXPECT_EQ(toCsv(tableOf({labels("group", "", {}), numbers("n", "", Kind::kCount, {})})),
            "group,n\n");
}

TEST(Csv, EveryLabelComesBackByteForByte) {
  const std::vector<std::string> all = test::hostileLabels();
  const auto rows = parsed(toCsv(tableOf({labels("a,b \"c\"", "", all), labels("b", "", all)})));
  ASSERT_EQ(rows.size(), all.size() + 1);
  EXPECT_EQ(rows[0], (std::vector<std::string>{"a,b \"c\"", "b"}));
  for (std::size_t i = 0; i < all.size(); ++i) {
    EXPECT_EQ(rows[i + 1], (std::vector<std::string>{all[i], all[i]}));
  }
}

TEST(Csv, AFileIsNamedByItsTable) {
  const auto files = toCsvFiles(test::sample());
  ASSERT_EQ(files.size(), 3u);
  EXPECT_EQ(files[0].first, "groups.csv");
  EXPECT_EQ(files[0].second, "group,n,median,lower,upper\n6-MP,21,23,13,\nplacebo,21,8,4,11\n");
  EXPECT_EQ(files[2].first, "residuals.csv");
  EXPECT_EQ(files[2].second, "line,residual\n2,0.1\n3,-inf\n");
}

}  // namespace
}  // namespace survmeth::report
