// Settings of options: what people type, what programs give, and what is refused in which words.
#include "analysis/option.h"

#include <gtest/gtest.h>

#include "analysis/declare.h"

namespace {

using survmeth::analysis::above;
using survmeth::analysis::BadOption;
using survmeth::analysis::between;
using survmeth::analysis::checked;
using survmeth::analysis::Option;
using survmeth::analysis::Range;
using survmeth::analysis::Setting;
using survmeth::analysis::settingOf;
using survmeth::analysis::Type;
using survmeth::analysis::wholeFrom;

using Texts = std::vector<std::string>;
using Numbers = std::vector<double>;

Option option(Type type, Range range = {}) {
  Option made;
  made.name = "x";
  made.type = type;
  made.valueName = "VALUE";
  made.range = std::move(range);
  made.choices = {"plain", "log", "log-log"};
  return made;
}

std::string refusalOf(const Option& option, const std::vector<std::string>& texts) {
  try {
    settingOf(option, texts);
  } catch (const BadOption& bad) {
    EXPECT_EQ(bad.option(), "x");
    return bad.what();
  }
  return "taken";
}

std::string refusalOfValue(const Option& option, const Setting& value) {
  try {
    checked(option, value);
  } catch (const BadOption& bad) {
    return bad.what();
  }
  return "taken";
}

TEST(SettingOf, ANumberIsReadWhole) {
  EXPECT_EQ(std::get<double>(settingOf(option(Type::kNumber), {"+2.5e-3"})), 2.5e-3);
  EXPECT_EQ(refusalOf(option(Type::kNumber), {"2,5"}),
            "\"2,5\" is not a number; expected a number");
  EXPECT_EQ(refusalOf(option(Type::kNumber), {"inf"}),
            "\"inf\" is not a number; expected a number");
  EXPECT_EQ(refusalOf(option(Type::kNumber), {"+-1"}),
            "\"+-1\" is not a number; expected a number");
}

TEST(SettingOf, ANumberBeyondDoublesIsOutOfRange) {
  EXPECT_EQ(refusalOf(option(Type::kNumber), {"1e400"}),
            "\"1e400\" is out of range; expected a number");
}

TEST(SettingOf, RangesSayWhatTheyExpect) {
  EXPECT_EQ(refusalOf(option(Type::kNumber, between(0, 1)), {"1"}),
            "\"1\" is out of range; expected a number between 0 and 1");
  EXPECT_EQ(refusalOf(option(Type::kNumber, above(0)), {"0"}),
            "\"0\" is out of range; expected a positive number");
  EXPECT_EQ(refusalOf(option(Type::kNumber, above(1.5)), {"1.5"}),
            "\"1.5\" is out of range; expected a number above 1.5");
  EXPECT_EQ(refusalOf(option(Type::kNumber, wholeFrom(1)), {"1.5"}),
            "\"1.5\" is out of range; expected a whole number not below 1");
  EXPECT_EQ(std::get<double>(settingOf(option(Type::kNumber, wholeFrom(1)), {"1"})), 1.0);
}

TEST(SettingOf, AnEmptyValueIsRefused) {
  EXPECT_EQ(refusalOf(option(Type::kText), {""}), "the value is empty; expected VALUE");
  EXPECT_EQ(refusalOf(option(Type::kNumber), {""}), "the value is empty; expected VALUE");
}

TEST(SettingOf, ARepeatedOptionIsRefused) {
  EXPECT_EQ(refusalOf(option(Type::kText), {"a", "b", "c"}), "stands 3 times; expected once");
}

TEST(SettingOf, ListsAreSeparatedByCommasAndQuotesHoldThem) {
  EXPECT_EQ(
      std::get<Texts>(settingOf(option(Type::kColumns), {"age,\"g, group\",\"say \"\"x\"\"\""})),
      (Texts{"age", "g, group", "say \"x\""}));
  EXPECT_EQ(refusalOf(option(Type::kColumns), {"a,,b"}),
            "\"a,,b\" has an empty item; expected column names separated by commas");
  EXPECT_EQ(refusalOf(option(Type::kColumns), {"a,b,a"}), "\"a\" stands there twice");
  EXPECT_EQ(refusalOf(option(Type::kTexts), {"\"a"}),
            "a quote in \"\"a\" is not closed before the end; expected quotes around a whole item, "
            "each quote inside it doubled");
}

TEST(SettingOf, NumbersMayHaveToAscend) {
  Range range;
  range.ascending = true;
  range.expected = "ascending numbers";
  EXPECT_EQ(std::get<Numbers>(settingOf(option(Type::kNumbers, range), {"0,1,2.5"})),
            (Numbers{0, 1, 2.5}));
  EXPECT_EQ(refusalOf(option(Type::kNumbers, range), {"0,2,2"}),
            "\"2\" is out of order; expected ascending numbers");
}

TEST(SettingOf, NumbersMayHaveToBeSoMany) {
  const Option pair = option(Type::kNumbers, survmeth::analysis::numbersOf(2, "two"));
  EXPECT_EQ(std::get<Numbers>(settingOf(pair, {"2,1"})), (Numbers{2, 1}));
  EXPECT_EQ(refusalOf(pair, {"2"}), "there is 1 number; expected two");
  EXPECT_EQ(refusalOf(pair, {"1,2,3"}), "there are 3 numbers; expected two");
  EXPECT_EQ(refusalOf(pair, {"1,b"}), "\"b\" is not a number; expected a number");
}

TEST(SettingOf, AChoiceOutsideTheListNamesTheNearest) {
  EXPECT_EQ(std::get<std::string>(settingOf(option(Type::kChoice), {"log"})), "log");
  EXPECT_EQ(refusalOf(option(Type::kChoice), {"lgo-log"}),
            "there is no \"lgo-log\"; expected one of \"log-log\", \"log\", \"plain\"");
}

TEST(Checked, ValuesFromProgramsBecomeTheOptionsType) {
  EXPECT_EQ(std::get<Texts>(checked(option(Type::kTexts), 2.0)), (Texts{"2"}));
  EXPECT_EQ(std::get<Texts>(checked(option(Type::kTexts), Numbers{1, 2})), (Texts{"1", "2"}));
  EXPECT_EQ(std::get<Texts>(checked(option(Type::kColumns), std::string("a,b"))), (Texts{"a,b"}));
  EXPECT_EQ(std::get<Numbers>(checked(option(Type::kNumbers), 3.0)), (Numbers{3}));
  EXPECT_EQ(std::get<double>(checked(option(Type::kNumber), std::string("3"))), 3.0);
  EXPECT_EQ(std::get<std::string>(checked(option(Type::kText), 1.0)), "1");
}

TEST(Checked, ValuesOfAnotherTypeAreRefused) {
  EXPECT_EQ(refusalOfValue(option(Type::kFlag), Setting(1.0)),
            "the value is of another type; expected true or false");
  EXPECT_EQ(refusalOfValue(option(Type::kNumber), Setting(true)),
            "the value is of another type; expected a number");
  EXPECT_EQ(refusalOfValue(option(Type::kColumn), Setting(2.0)),
            "the value is of another type; expected a text");
  EXPECT_EQ(refusalOfValue(option(Type::kNumber, between(0, 1)), Setting(2.0)),
            "\"2\" is out of range; expected a number between 0 and 1");
}

TEST(Option, ANameThatIsNoneOfThoseAllowedIsRefusedWithTheNearest) {
  EXPECT_NO_THROW(survmeth::analysis::requireAmong({"age"}, {"sex", "age"}, "factor", "covariate"));
  try {
    survmeth::analysis::requireAmong({"age", "sec"}, {"age", "sex"}, "factor", "covariate");
    ADD_FAILURE() << "accepted";
  } catch (const BadOption& bad) {
    EXPECT_EQ(bad.option(), "factor");
    EXPECT_STREQ(bad.what(), "\"sec\" is no covariate; expected one of \"sex\", \"age\"");
  }
}

}  // namespace
