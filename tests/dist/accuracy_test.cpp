// The accuracy of every function: never more than 4 units in the last place times one plus the
// condition number, and never more than the recorded largest error.
//
// With DIST_ACCURACY_WRITE=1 in the environment the record and docs/accuracy.md are written anew,
// for a larger table or a smaller error.
#include "accuracy.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace dist_tests {
namespace {

constexpr double kAllowed = 4.0;

std::string threeDigits(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", std::ceil(value * 1000.0) / 1000.0);
  return text;
}

// Recorded text: function -> {rows, largest error in ulp, largest error / (1 + k)}.
std::map<std::string, std::vector<std::string>> readRecord() {
  std::map<std::string, std::vector<std::string>> record;
  const survmeth::test::Csv csv(referencePath("recorded.csv"));
  for (std::size_t i = 0; i < csv.rows(); ++i) {
    record[csv.text("function", i)] = {csv.text("rows", i), csv.text("ulp", i),
                                       csv.text("ulp/(1+k)", i)};
  }
  return record;
}

// The page for people, from the record alone.
std::string page() {
  auto record = readRecord();
  std::ostringstream out;
  out << "# Accuracy of libDist\n\n"
         "Written by the accuracy test from `tests/reference/dist/recorded.csv`; do not edit.\n\n"
         "Errors are in units of the last place (ulp) of the exact value, against tables of 60\n"
         "digits (`tests/reference/dist/README.md`). A function multiplies a relative error of "
         "its\n"
         "arguments by its condition number k, so the last column divides by 1 + k; the test\n"
         "refuses more than 4 there, and anything above the figures below.\n\n"
         "| Function | Arguments tried | Rows | Largest error, ulp | Largest error / (1 + k) |\n"
         "|---|---|---:|---:|---:|\n";
  for (const Function& function : functions()) {
    const auto& cells = record[function.name];
    if (cells.size() != 3) continue;
    out << "| `" << function.name << "` | " << function.range << " | " << cells[0] << " | "
        << cells[1] << " | " << cells[2] << " |\n";
  }
  out << "\nk is the condition number with respect to the first argument; of a quantile the\n"
         "smallest of those with respect to p, 1 - p and, for the symmetric laws, p - 1/2; of the\n"
         "Wald, Wilson and log intervals and the correlation the sum over all arguments.\n\n"
         "The library uses +, -, *, / and square root only, no exponential or logarithm of the\n"
         "system, so these figures are the same on every machine, 32 bit and 64 bit.\n";
  return out.str();
}

std::string pagePath() { return std::string(SURVMETH_REFERENCE) + "/../../docs/accuracy.md"; }

class Accuracy : public testing::TestWithParam<Function> {
 protected:
  static void SetUpTestSuite() {
    if (std::getenv("DIST_ACCURACY_WRITE") == nullptr) return;
    std::ofstream record(referencePath("recorded.csv"));
    record << "function,rows,ulp,ulp/(1+k)\n";
    for (const Function& function : functions()) {
      const Worst worst = worstOf(function);
      record << function.name << ',' << worst.rows << ',' << threeDigits(worst.ulp) << ','
             << threeDigits(worst.scaled) << '\n';
    }
    record.close();
    std::ofstream(pagePath()) << page();
  }
};

TEST_P(Accuracy, IsFourUlpTimesOnePlusTheConditionAndNoWorseThanRecorded) {
  const Function& function = GetParam();
  const Worst worst = worstOf(function);
  ASSERT_GT(worst.rows, 50u) << "the table is missing";
  std::ostringstream where;
  where.precision(17);
  for (const double a : worst.where) where << a << ' ';
  EXPECT_LE(worst.scaled, kAllowed) << "at " << where.str();

  const auto record = readRecord();
  const auto line = record.find(function.name);
  ASSERT_NE(line, record.end()) << "no record";
  EXPECT_EQ(std::stoul(line->second[0]), worst.rows);
  EXPECT_LE(worst.ulp, std::stod(line->second[1]));
  EXPECT_LE(worst.scaled, std::stod(line->second[2])) << "at " << where.str();
}

INSTANTIATE_TEST_SUITE_P(Of, Accuracy, testing::ValuesIn(functions()),
                         [](const auto& function) { return std::string(function.param.name); });

TEST(AccuracyPage, IsTheOneMadeFromTheRecord) {
  std::ifstream in(pagePath());
  std::ostringstream text;
  text << in.rdbuf();
  EXPECT_EQ(text.str(), page());
}

TEST(AccuracyMeasure, CountsUnitsInTheLastPlace) {
  EXPECT_EQ(unitInLastPlace(1.0), 0x1p-52);
  EXPECT_EQ(unitInLastPlace(1.5), 0x1p-52);
  EXPECT_EQ(unitInLastPlace(-0.75), 0x1p-53);
  EXPECT_EQ(unitInLastPlace(0.0), 0x1p-1074);
  EXPECT_EQ(errorInUlp(1.0 + 0x1p-51, {{}, 1.0, 0x1p-53, 0.0}), 1.5);
}

}  // namespace
}  // namespace dist_tests
