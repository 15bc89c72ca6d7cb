// Plans: from text to checked requests. What is refused is among the cases of the command line.
#include "analysis/plan.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace survmeth::analysis {
namespace {

std::optional<Setting> settingOf(const Planned& planned, const std::string& option) {
  return planned.declaration->find(option)->get(planned.request.get());
}

TEST(Plan, GivesEachAnalysisItsRequest) {
  const Plan plan = readPlan(R"({"title": "Both", "analyses": [
    {"analysis": "life", "data": "a.csv",
     "options": {"time": "t", "event": "e", "event-value": ["1", "2"], "bounds": [0, 2.5]}},
    {"analysis": "roc", "data": "b.csv", "name": "markers",
     "options": {"class": "c", "marker": "m", "table": true, "missing": "?"}}]})");
  EXPECT_EQ(plan.title, "Both");
  ASSERT_EQ(plan.analyses.size(), 2u);
  const Planned& life = plan.analyses[0];
  EXPECT_EQ(life.name, "1-life");
  EXPECT_EQ(life.data, "a.csv");
  EXPECT_EQ(settingOf(life, "time"), Setting(std::string("t")));
  EXPECT_EQ(settingOf(life, "event-value"), Setting(std::vector<std::string>{"1", "2"}));
  EXPECT_EQ(settingOf(life, "bounds"), Setting(std::vector<double>{0, 2.5}));
  EXPECT_TRUE(life.reading.missing.empty());
  const Planned& roc = plan.analyses[1];
  EXPECT_EQ(roc.name, "markers");
  EXPECT_EQ(settingOf(roc, "marker"), Setting(std::vector<std::string>{"m"}));
  EXPECT_EQ(settingOf(roc, "table"), Setting(true));
  EXPECT_EQ(roc.reading.missing, std::vector<std::string>{"?"});
}

TEST(Plan, ReadingOptionsAreNoAnalysisOptions) {
  for (const Declaration& declaration : declarations()) {
    for (const Option& option : readingOptions()) {
      EXPECT_EQ(declaration.find(option.name), nullptr) << declaration.name << " " << option.name;
    }
  }
}

}  // namespace
}  // namespace survmeth::analysis
