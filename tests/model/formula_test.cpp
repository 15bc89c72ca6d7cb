// Formulas: their expansion held against terms() of R, and the words of each refusal.
#include "model/formula.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/model/data.h"

namespace survmeth::model {
namespace {

using Strings = std::vector<std::string>;

Strings termsOf(const std::string& text, const Strings& columns = {}) {
  Strings names;
  for (const Term& term : parseFormula(text, columns).terms) names.push_back(term.name);
  return names;
}

TEST(Formula, HasTheTermsOfRInItsOrder) {
  const auto jobs = tabbed("terms.txt");
  ASSERT_GE(jobs.size(), 40U);
  for (const Strings& job : jobs) {
    std::string joined;
    for (const std::string& name : termsOf(job[0], {"a", "b", "c", "d"})) {
      joined += (joined.empty() ? "" : " ") + name;
    }
    EXPECT_EQ(joined, job.size() > 1 ? job[1] : "") << job[0];
  }
}

TEST(Formula, OfCasesHasTheTimeOneForEverybody) {
  const Formula formula = parseCaseFormula("ill == \"yes\" ~ smoke + strata(set)");
  EXPECT_EQ(frame::deparse(*formula.exit), "1");
  EXPECT_FALSE(formula.entry);
  EXPECT_EQ(frame::deparse(*formula.event), "ill == \"yes\"");
  EXPECT_EQ(formula.terms.size(), 1U);
  EXPECT_EQ(formula.strataNames, Strings{"set"});
  EXPECT_FALSE(parseCaseFormula("~ smoke").exit);
  try {
    parseCaseFormula("smoke");
    ADD_FAILURE() << "it is read";
  } catch (const frame::ExpressionError& error) {
    EXPECT_STREQ(error.what(),
                 "there is no ~ between response and terms; expected case ~ terms + strata(set)");
  }
}

void expectRefused(const std::string& text, std::size_t at, const std::string& sentence,
                   const Strings& columns = {}) {
  try {
    parseFormula(text, columns);
    ADD_FAILURE() << text << " is read";
  } catch (const frame::ExpressionError& error) {
    EXPECT_EQ(error.at(), at) << text;
    EXPECT_STREQ(error.what(), sentence.c_str()) << text;
    EXPECT_EQ(error.text(), text);
  }
}

// Response as "entry | exit | event".
std::string responseOf(const std::string& text) {
  const Formula formula = parseFormula(text);
  return (formula.entry ? deparse(*formula.entry) : "") + " | " + deparse(*formula.exit) + " | " +
         deparse(*formula.event);
}

TEST(Formula, HasAResponseOfTwoOrThreeArguments) {
  EXPECT_EQ(responseOf("Surv(time, status) ~ age"), " | time | status");
  EXPECT_EQ(responseOf("Surv(start, stop, status) ~ age"), "start | stop | status");
  EXPECT_EQ(responseOf("Surv(time / 7, status == \"dead\") ~ 1"), " | time/7 | status == \"dead\"");
  EXPECT_EQ(responseOf("Surv(time, status %in% c(\"dead\", \"tx\")) ~ 1"),
            " | time | status %in% c(\"dead\", \"tx\")");
}

TEST(Formula, TakesArgumentsOfSurvByTheirNamesFirst) {
  EXPECT_EQ(responseOf("Surv(event = d, time = t) ~ 1"), " | t | d");
  EXPECT_EQ(responseOf("Surv(time = t, d) ~ 1"), " | t | d");
  EXPECT_EQ(responseOf("Surv(event = d, t) ~ 1"), " | t | d");
  EXPECT_EQ(responseOf("Surv(a, time2 = b, event = d) ~ 1"), "a | b | d");
  EXPECT_EQ(responseOf("Surv(event = d, a, b) ~ 1"), "a | b | d");
}

TEST(Formula, MayHaveNoResponse) {
  const Formula formula = parseFormula("~ age");
  EXPECT_FALSE(formula.exit);
  EXPECT_FALSE(formula.event);
}

TEST(Formula, KeepsStrataClustersAndOffsetsBesideTheTerms) {
  const Formula formula = parseFormula(
      "Surv(t, d) ~ age + strata(site, age > 40) + cluster(id) + sex + offset(log(w)) + "
      "(strata(arm) + offset(v))");
  EXPECT_EQ(formula.strataNames, (Strings{"site", "age > 40", "arm"}));
  EXPECT_EQ(formula.strata.size(), 3U);
  EXPECT_EQ(deparse(*formula.cluster), "id");
  ASSERT_EQ(formula.offsets.size(), 2U);
  EXPECT_EQ(deparse(formula.offsets[0]), "log(w)");
  EXPECT_EQ(formula.terms.size(), 2U);
}

TEST(Formula, LetsStrataInteractWithoutAMainEffect) {
  for (const char* text : {"~ x * strata(s)", "~ x + x:strata(s) + strata(s)", "~ x/strata(s)",
                           "~ (x + strata(s))^2", "~ x + x %in% strata(s)"}) {
    const Formula formula = parseFormula(text);
    EXPECT_EQ(formula.strataNames, Strings{"s"}) << text;
    ASSERT_EQ(formula.terms.size(), 2U) << text;
    EXPECT_EQ(formula.terms[0].name, "x") << text;
    EXPECT_EQ(formula.terms[1].name, "x:strata(s)") << text;
    EXPECT_EQ(formula.variables.size(), 2U) << text;
  }
  EXPECT_EQ(parseFormula("~ x + strata(s)").variables.size(), 1U);
}

TEST(Formula, IsSpelledOutAgain) {
  const auto spelled = [](const char* text) { return textOf(parseFormula(text, {"t", "d", "x"})); };
  EXPECT_EQ(spelled("Surv(t, d == 2) ~ x*`a b` + strata(s, r > 1) + cluster(i) + offset(log(w))"),
            "Surv(t, d == 2) ~ x + `a b` + x:`a b` + strata(s, r > 1) + cluster(i) + "
            "offset(log(w))");
  EXPECT_EQ(spelled("Surv(event = d, a, t) ~ ."), "Surv(a, t, d) ~ x");
  EXPECT_EQ(spelled("~ 1"), "~ 1");
  EXPECT_EQ(textOf(parseCaseFormula("ill == \"yes\" ~ smoke + strata(set)")),
            "ill == \"yes\" ~ smoke + strata(set)");
}

TEST(Formula, ReadsItsColumnsOnceTheResponseFirst) {
  EXPECT_EQ(parseFormula("Surv(a, b, c == 1) ~ log(x) + x*y - z + strata(s) + cluster(id) + "
                         "offset(w) + ns(v, df = 3) - y")
                .columns(),
            (Strings{"a", "b", "c", "x", "y", "v", "s", "id", "w"}));
}

TEST(Formula, KnowsWhatItsVariablesAre) {
  const Formula formula = parseFormula(
      "~ a + C(b) + factor(c) + as.factor(d) + ns(e, 3) + rcs(f, 4) + poly(g, 2) + log(h) + (i > "
      "3)");
  const std::vector<VariableKind> want = {
      VariableKind::kPlain,      VariableKind::kFactor,        VariableKind::kFactor,
      VariableKind::kFactor,     VariableKind::kNaturalSpline, VariableKind::kRestrictedSpline,
      VariableKind::kPolynomial, VariableKind::kNumbers,       VariableKind::kNumbers};
  ASSERT_EQ(formula.variables.size(), want.size());
  for (std::size_t i = 0; i < want.size(); ++i) {
    EXPECT_EQ(formula.variables[i].kind, want[i]) << formula.variables[i].name;
  }
}

TEST(Formula, LetsADotStandForTheColumnsThatAreNotUsedOtherwise) {
  const Strings all = {"t", "d", "age", "sex", "site", "id", "w"};
  EXPECT_EQ(termsOf("Surv(t, d) ~ . + strata(site) + cluster(id) + offset(w)", all),
            (Strings{"age", "sex"}));
  EXPECT_EQ(termsOf("Surv(t, d) ~ sex:. - sex - w - id - site + strata(site)", all),
            (Strings{"sex:age", "sex:id", "sex:w"}));
  EXPECT_TRUE(hasDot("Surv(t, d) ~ . - age"));
  EXPECT_FALSE(hasDot("Surv(t, d) ~ x.y"));
}

TEST(Formula, NestsByInAsByColon) { EXPECT_EQ(termsOf("~ a + b %in% a"), (Strings{"a", "a:b"})); }

TEST(Formula, IsRefusedWithItsPlace) {
  expectRefused("age + sex", 9,
                "there is no ~ between response and terms; expected Surv(time, status) ~ terms");
  expectRefused("time ~ age", 0,
                "the left side is \"time\"; expected Surv(time, status) or Surv(entry, exit, "
                "status)");
  expectRefused("Surv(t) ~ age", 0,
                "Surv() has 1 argument; expected Surv(time, status) or Surv(entry, exit, status)");
  expectRefused("Surv(t, d, type = right) ~ age", 18,
                "Surv() has no argument \"type\"; expected time, time2 or event");
  expectRefused("Surv(time = t, time = d) ~ age", 22,
                "Surv() has \"time\" twice; expected it once");
  expectRefused("Surv(t, time2 = u) ~ age", 0,
                "Surv() has no time or no event; expected Surv(time, status) or Surv(entry, exit, "
                "status)");
  expectRefused("~ strata()", 2, "strata() is empty; expected a column");
  expectRefused("~ strata(a, shortlabel = TRUE)", 25,
                "strata() has no argument \"shortlabel\"; expected a column");
  expectRefused("~ cluster(a, b)", 2, "cluster() has 2 arguments; expected one");
  expectRefused("~ cluster(a) + cluster(b)", 15, "there is more than one cluster(); expected one");
  expectRefused("~ a * strata(s, r)", 6,
                "strata() in an interaction takes one column; expected strata(site)");
  expectRefused("~ a : strata(s > 1)", 6,
                "strata() in an interaction takes one column; expected strata(site)");
  expectRefused("~ a * cluster(s)", 6,
                "cluster() has no part in interactions; expected it as a summand, and C(...) for a "
                "factor that interacts");
  expectRefused("~ (a + offset(s))^2", 7,
                "offset() has no part in interactions; expected it as a summand, and C(...) for a "
                "factor that interacts");
  expectRefused("~ a + 2", 6, "\"2\" is no term; expected a column, or I(...) around arithmetic");
  expectRefused("~ a^b", 4,
                "\"b\" is no power of a sum of terms; expected a whole number, or I(...) around "
                "arithmetic");
  expectRefused("~ a^1.5", 4,
                "\"1.5\" is no power of a sum of terms; expected a whole number, or I(...) around "
                "arithmetic");
  expectRefused("~ \"a b\"", 2,
                "\"a b\" is a text; expected a column (in backticks where its name needs it)");
  expectRefused("~ .", 2,
                "\".\" stands for all other columns, which are not known here; expected their "
                "names");
}

TEST(Formula, RefusesMoreTermsThanAnybodyWants) {
  std::string sum = "a0";
  for (int i = 1; i < 150; ++i) sum += "+a" + std::to_string(i);
  expectRefused("~ (" + sum + ")^2", 2, "there are more than 10,000 terms");
}

}  // namespace
}  // namespace survmeth::model
