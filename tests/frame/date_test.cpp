// ISO dates against Python's datetime: fromisoformat(text).toordinal() less that of 1970-01-01.
#include "frame/date.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace survmeth::frame {
namespace {

TEST(ParseDate, GivesDaysSince1970) {
  const std::pair<const char*, double> cases[] = {
      {"1970-01-01", 0},       {"1969-12-31", -1},      {"2024-03-01", 19783},
      {"2000-02-29", 11016},   {"1900-03-01", -25508},  {"2100-02-28", 47540},
      {"1600-12-31", -134775}, {"0001-01-01", -719162}, {"9999-12-31", 2932896},
      {"0000-01-01", -719528},  // a leap year, one before year 1; R's as.Date
  };
  for (const auto& [text, days] : cases) {
    ASSERT_TRUE(parseDate(text)) << text;
    EXPECT_EQ(*parseDate(text), days) << text;
    EXPECT_EQ(dateText(days), text);
  }
}

TEST(ParseDate, RefusesWhatIsInNoCalendarAndOtherForms) {
  for (const char* text :
       {"2023-02-29", "1900-02-29", "2024-13-01", "2024-00-10", "2024-04-31", "2024-01-00",
        "2024-1-01", "2024-03-1", "24-03-01", "2024/03/01", "20240301", "2024-03-01T00:00",
        " 2024-03-01", "+024-03-01", "2024-0a-01", ""}) {
    EXPECT_FALSE(parseDate(text)) << text;
  }
}

TEST(DateText, IsTheDateOfEveryDay) {
  std::string before;
  for (int day = -719528; day <= 2932896; day += 37) {
    const std::string text = dateText(day);
    ASSERT_EQ(parseDate(text), day) << text;
    ASSERT_LT(before, text);
    before = text;
  }
}

TEST(CellText, IsADateOfDaysOfAColumnOfDatesElseTheNumber) {
  EXPECT_EQ(cellText(19783, true), "2024-03-01");
  EXPECT_EQ(cellText(19783, false), "19783");
  EXPECT_EQ(cellText(-719528, true), "0000-01-01");
  EXPECT_EQ(cellText(2932896, true), "9999-12-31");
  EXPECT_EQ(cellText(0.5, true), "0.5");  // no day
  EXPECT_EQ(cellText(-719529, true), "-719529");
  EXPECT_EQ(cellText(2932897, true), "2932897");
}

}  // namespace
}  // namespace survmeth::frame
