// The accuracy of every function: never worse than promised, and never more than the recorded
// largest error. With SURVMETH_ACCURACY_WRITE=1 in the environment the records and
// docs/accuracy.md are written anew, for a larger table or a smaller error.
#include "accuracy.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string>

#include "distFunctions.h"
#include "elementaryFunctions.h"
#include "page.h"

namespace accuracy_tests {
namespace {

std::string threeDigits(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", std::ceil(value * 1000.0) / 1000.0);
  return text;
}

void writeRecord(const Library& library) {
  std::ofstream record(referencePath(library, "recorded.csv"));
  record << "function,rows,ulp," << (library.conditioned ? "ulp/(1+k)" : "dense") << '\n';
  for (const Function& function : library.functions) {
    const Worst worst = worstOf(library, function);
    record << function.name << ',' << worst.rows << ',' << threeDigits(worst.ulp);
    if (library.conditioned) {
      record << ',' << threeDigits(worst.scaled) << '\n';
    } else {
      record << ',' << (function.dense != nullptr ? threeDigits(function.dense()) : "-") << '\n';
    }
  }
}

struct Case {
  Library library;
  Function function;
};

// Found by GoogleTest, which would print the bytes otherwise, padding included.
void PrintTo(const Case& instance, std::ostream* out) { *out << instance.function.name; }

class Accuracy : public testing::TestWithParam<Case> {
 protected:
  static void SetUpTestSuite() {
    if (std::getenv("SURVMETH_ACCURACY_WRITE") == nullptr) return;
    writeRecord(dist());
    writeRecord(elementary());
    std::ofstream(pagePath()) << page(dist(), elementary());
  }
};

TEST_P(Accuracy, IsAsPromisedAndNoWorseThanRecorded) {
  const auto& [library, function] = GetParam();
  const Worst worst = worstOf(library, function);
  ASSERT_GT(worst.rows, 50u) << "the table is missing";
  std::ostringstream where;
  where.precision(17);
  for (const double a : worst.where) where << a << ' ';
  EXPECT_LE(worst.scaled, library.allowed(function.name)) << "at " << where.str();

  const auto record = readRecord(library);
  const auto line = record.find(function.name);
  ASSERT_NE(line, record.end()) << "no record";
  EXPECT_EQ(std::stoul(line->second[0]), worst.rows);
  EXPECT_LE(worst.ulp, std::stod(line->second[1])) << "at " << where.str();
  if (library.conditioned) {
    EXPECT_LE(worst.scaled, std::stod(line->second[2])) << "at " << where.str();
  } else if (function.dense != nullptr) {
    const double dense = function.dense();
    EXPECT_LE(dense, library.allowed(function.name));
    EXPECT_LE(dense, std::stod(line->second[2]));
  }
}

std::vector<Case> cases() {
  std::vector<Case> all;
  for (const Library& library : {dist(), elementary()}) {
    for (const Function& function : library.functions) all.push_back({library, function});
  }
  return all;
}

INSTANTIATE_TEST_SUITE_P(Of, Accuracy, testing::ValuesIn(cases()), [](const auto& instance) {
  return std::string(instance.param.function.name);
});

TEST(AccuracyPage, IsTheOneMadeFromTheRecords) {
  std::ifstream in(pagePath());
  std::ostringstream text;
  text << in.rdbuf();
  EXPECT_EQ(text.str(), page(dist(), elementary()));
}

TEST(AccuracyMeasure, CountsUnitsInTheLastPlace) {
  EXPECT_EQ(unitInLastPlace(1.0), 0x1p-52);
  EXPECT_EQ(unitInLastPlace(1.5), 0x1p-52);
  EXPECT_EQ(unitInLastPlace(-0.75), 0x1p-53);
  EXPECT_EQ(unitInLastPlace(0.0), 0x1p-1074);
  EXPECT_EQ(errorInUlp(1.0 + 0x1p-51, {{}, 1.0, 0.5, 0.0}), 1.5);
}

}  // namespace
}  // namespace accuracy_tests
