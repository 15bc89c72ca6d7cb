// Expressions: how they are read, written again and refused.
#include "frame/expression.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace survmeth::frame {
namespace {

using Strings = std::vector<std::string>;

// The tree as R's prefix calls.
std::string shape(const Expression& expression) {
  if (expression.arguments.empty() && expression.kind != Expression::Kind::kCall) {
    return expression.text;
  }
  std::string text = expression.text == "(" ? "" : expression.text;
  text += "(";
  for (std::size_t i = 0; i < expression.arguments.size(); ++i) {
    if (i > 0) text += ",";
    text += shape(expression.arguments[i]);
  }
  return text + ")";
}
std::string read(const std::string& text) { return shape(parseExpression(text)); }

ExpressionError refusal(const std::string& text) {
  try {
    parseExpression(text);
  } catch (const ExpressionError& error) {
    return error;
  }
  ADD_FAILURE() << text << " is read";
  return {"", 0, ""};
}
void expectRefused(const std::string& text, std::size_t at, const std::string& sentence) {
  const ExpressionError error = refusal(text);
  EXPECT_EQ(error.at(), at) << text;
  EXPECT_STREQ(error.what(), sentence.c_str()) << text;
  EXPECT_EQ(error.text(), text);
}

// Each as R 4.2 parses it.
TEST(Expression, BindsAsInR) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"a^b^c", "^(a,^(b,c))"},
      {"-a^b", "-(^(a,b))"},
      {"a^-b^c", "^(a,-(^(b,c)))"},
      {"a**b", "^(a,b)"},
      {"-a:b", ":(-(a),b)"},
      {"a:b:c", ":(:(a,b),c)"},
      {"a:b*c", "*(:(a,b),c)"},
      {"a %in% b:c", "%in%(a,:(b,c))"},
      {"a * b %in% c", "*(a,%in%(b,c))"},
      {"a * b / c", "/(*(a,b),c)"},
      {"a - b + c", "+(-(a,b),c)"},
      {"a + b * c", "+(a,*(b,c))"},
      {"a * -b + c", "+(*(a,-(b)),c)"},
      {"a < b + c", "<(a,+(b,c))"},
      {"!a == b", "!(==(a,b))"},
      {"!a & b", "&(!(a),b)"},
      {"a + !b == c", "+(a,!(==(b,c)))"},
      {"a | b & c", "|(a,&(b,c))"},
      {"a || b && c", "|(a,&(b,c))"},
      {"a == b & c != d", "&(==(a,b),!=(c,d))"},
      {"a ~ b | c", "~(a,|(b,c))"},
      {"~ a + b", "~(+(a,b))"},
      {"(a + b)*c", "*((+(a,b)),c)"},
      {"f(a, k = b + 1)", "f(a,+(b,1))"},
      {"f()", "f()"},
  };
  for (const auto& [text, want] : cases) EXPECT_EQ(read(text), want) << text;
}

TEST(Expression, TakesNamesWithDotsUnderscoresAndLettersOfAnyScript) {
  EXPECT_EQ(read("ph.ecog + .x + a_1 + größe"), "+(+(+(ph.ecog,.x),a_1),größe)");
}

TEST(Expression, TakesAnyNameInBackticksAndNeverAsAFunction) {
  const Expression name = parseExpression("`blood pressure (mm)`");
  EXPECT_EQ(name.kind, Expression::Kind::kName);
  EXPECT_EQ(name.text, "blood pressure (mm)");
  EXPECT_EQ(deparse(name), "`blood pressure (mm)`");
  EXPECT_EQ(refusal("`log`(x)").at(), 5U);
}

TEST(Expression, TakesTextsInEitherQuotesWithEscapes) {
  for (const char* text : {R"("say \"no\"")", R"('say "no"')"}) {
    const Expression made = parseExpression(text);
    EXPECT_EQ(made.kind, Expression::Kind::kText);
    EXPECT_EQ(made.text, "say \"no\"");
    EXPECT_EQ(deparse(made), R"("say \"no\"")");
  }
  EXPECT_EQ(parseExpression(R"("a\\b")").text, "a\\b");
}

TEST(Expression, TakesNumbersWithPointAndExponent) {
  EXPECT_EQ(parseExpression("1.5e-3").number, 0.0015);
  EXPECT_EQ(parseExpression(".5").number, 0.5);
  EXPECT_EQ(parseExpression("12.").number, 12);
}

TEST(Expression, KnowsWhereItsPartsStand) {
  const Expression made = parseExpression(" log( age ) + 1");
  EXPECT_EQ(made.at, 1U);
  EXPECT_EQ(made.end, 15U);
  EXPECT_EQ(made.arguments[0].end, 11U);
  EXPECT_EQ(made.arguments[0].arguments[0].at, 6U);
}

TEST(Expression, IsRefusedWithItsPlace) {
  expectRefused("", 0, "the text is empty; expected an expression");
  expectRefused("  ", 0, "the text is empty; expected an expression");
  expectRefused("age +", 5,
                "the end of the text does not fit here; expected a name, a number or a "
                "parenthesis");
  expectRefused("age * / 2", 6,
                "\"/\" does not fit here; expected a name, a number or a parenthesis");
  expectRefused("age sex", 4, "\"sex\" does not fit here; expected an operator or the end");
  expectRefused("age = 3", 4, "\"=\" does not fit here; expected == for a comparison");
  expectRefused("log(2 = x)", 6, "\"=\" does not fit here; expected == for a comparison");
  expectRefused("log(age", 3, "the parenthesis that begins here is not closed; expected )");
  expectRefused("(age", 0, "the parenthesis that begins here is not closed; expected )");
  expectRefused("log(age sex)", 8, "\"sex\" does not fit here; expected ) or a comma");
  expectRefused("age)", 3, "\")\" does not fit here; expected an operator or the end");
  expectRefused("sex == \"f", 7, "the quote that begins here is not closed; expected \"");
  expectRefused("`age", 0, "the quote that begins here is not closed; expected `");
  expectRefused("``", 0, "a name is empty; expected a column's name");
  expectRefused("age $ 2", 4,
                "\"$\" is no part of an expression; expected a name, a number or an operator");
  expectRefused("age %% 2", 4,
                "\"%\" is no part of an expression; expected a name, a number or an operator");
  expectRefused("2nd", 1,
                "a name cannot begin with a digit; expected backticks around it, or an operator");
  expectRefused("1e400", 0, "\"1e400\" is out of range; expected a number");
}

TEST(Expression, RefusesComparisonsInAChain) {
  expectRefused("1 < age < 3", 8,
                "\"<\" does not fit here: comparisons make no chain; expected & between two of "
                "them");
  EXPECT_EQ(read("(a < b) == c"), "==((<(a,b)),c)");
}

TEST(Expression, RefusesToBeNestedOrChainedWithoutEnd) {
  const std::string deep = std::string(5000, '(') + "a";
  EXPECT_STREQ(refusal(deep).what(), "the expression is nested too deeply");
  EXPECT_STREQ(refusal(std::string(5000, '-') + "a").what(), "the expression is nested too deeply");
  std::string powers = "a", sums = "a", most = "a";
  for (int i = 0; i < 5000; ++i) powers += "^a";
  for (int i = 0; i < 100000; ++i) sums += "+a";
  for (int i = 0; i < 2000; ++i) most += "+a";
  EXPECT_STREQ(refusal(powers).what(), "the expression is nested too deeply");
  EXPECT_STREQ(refusal(sums).what(), "the expression is too long");
  EXPECT_EQ(namesIn(parseExpression(most)), (Strings{"a"}));
}

TEST(Expression, IsShownWithACaretUnderThePlace) {
  EXPECT_EQ(refusal("age + * 2").shown(),
            "age + * 2\n"
            "      ^\n"
            "\"*\" does not fit here; expected a name, a number or a parenthesis");
}

TEST(Expression, CountsCharactersAndNotBytesUnderTheCaret) {
  const ExpressionError error = refusal("größe + * 2");
  EXPECT_EQ(error.at(), 10U);
  EXPECT_EQ(error.shown(),
            "größe + * 2\n"
            "        ^\n"
            "\"*\" does not fit here; expected a name, a number or a parenthesis");
}

TEST(Expression, IsShownOnOneLine) {
  EXPECT_EQ(refusal("age\n+\t*").shown(),
            "age + *\n"
            "      ^\n"
            "\"*\" does not fit here; expected a name, a number or a parenthesis");
}

// Each as deparse() of R 4.2 writes it.
TEST(Expression, IsWrittenAsByR) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"a+b", "a + b"},
      {"a*b-c", "a * b - c"},
      {"a / b", "a/b"},
      {"a : b ^ 2", "a:b^2"},
      {"-a", "-a"},
      {"!a&b|c", "!a & b | c"},
      {"a>=2", "a >= 2"},
      {"x%in%c('u',\"v\")", "x %in% c(\"u\", \"v\")"},
      {"ns( age,df=3 )", "ns(age, df = 3)"},
      {"( a+b )*c", "(a + b) * c"},
      {"`a`+`b c`", "a + `b c`"},
  };
  for (const auto& [text, want] : cases) EXPECT_EQ(deparse(parseExpression(text)), want) << text;
}

TEST(Expression, WrittenIsReadAsTheSame) {
  for (const char* text :
       {"`_x` + `1st` + `.5`", "-a^-b", "a %in% c(\"\\\\\", '\"')", "!(a | b)"}) {
    const Expression once = parseExpression(text);
    EXPECT_EQ(shape(parseExpression(deparse(once))), shape(once)) << text;
  }
}

TEST(Expression, NamesItsColumnsOnceAndNoFunctionsOrConstants) {
  EXPECT_EQ(namesIn(parseExpression("log(b) + a*b + f(c, raw = TRUE) + (x == \"y\")")),
            (Strings{"b", "a", "c", "x"}));
}

}  // namespace
}  // namespace survmeth::frame
