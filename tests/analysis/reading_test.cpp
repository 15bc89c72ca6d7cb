// The options that say how files are read: their values, and what they become.
#include "analysis/reading.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace survmeth {
namespace {

using analysis::Reading;
using analysis::Setting;

void set(Reading& reading, const std::string& name, const std::string& text) {
  const analysis::Option* option = analysis::findReadingOption(name);
  ASSERT_NE(option, nullptr) << name;
  option->set(&reading, analysis::settingOf(*option, {text}));
}

TEST(ReadingOptions, BecomeWhatTheReaderTakes) {
  Reading reading;
  set(reading, "where", "age > 40");
  set(reading, "delimiter", "semicolon");
  set(reading, "decimal", ",");
  set(reading, "missing", "-9,lost");
  const frame::Reading made = reading.frame();
  EXPECT_EQ(made.where, "age > 40");
  EXPECT_EQ(made.delimiter, ';');
  EXPECT_EQ(made.decimal, ',');
  EXPECT_TRUE(made.missing("lost"));
  EXPECT_TRUE(made.missing("-9.0"));
  EXPECT_FALSE(made.missing("NA"));
}

TEST(ReadingOptions, ThatAreNotGivenAreFoundFromTheData) {
  const frame::Reading made = Reading().frame();
  EXPECT_EQ(made.where, "");
  EXPECT_EQ(made.delimiter, 0);
  EXPECT_EQ(made.decimal, 0);
  EXPECT_TRUE(made.missing("NA"));
  report::Report report;
  analysis::echo(Reading(), report);
  EXPECT_TRUE(report.plan.empty());
}

TEST(ReadingOptions, ArePartOfThePlanAsTheyWereGiven) {
  Reading reading;
  set(reading, "delimiter", "tab");
  set(reading, "where", "a == 1");
  report::Report report;
  analysis::echo(reading, report);
  ASSERT_EQ(report.plan.size(), 2U);
  EXPECT_EQ(report.plan[0].name, "where");
  EXPECT_EQ(report.plan[0].setting, Setting(std::string("a == 1")));
  EXPECT_EQ(report.plan[1].name, "delimiter");
  EXPECT_EQ(report.plan[1].setting, Setting(std::string("tab")));
}

TEST(ReadingOptions, RefuseDelimitersThatCellsHold) {
  for (const char* text : {"a", "7", ".", "\"", "'", "-", "+", "_", " ", ";;", "blank", "\n"}) {
    Reading reading;
    const analysis::Option& option = *analysis::findReadingOption("delimiter");
    try {
      option.set(&reading, std::string(text));
      ADD_FAILURE() << text;
    } catch (const analysis::BadOption& bad) {
      EXPECT_EQ(bad.option(), "delimiter");
      EXPECT_NE(
          std::string(bad.what())
              .find(" separates no cells; expected tab, comma, semicolon or a sign such as |"),
          std::string::npos);
    }
  }
}

}  // namespace
}  // namespace survmeth
