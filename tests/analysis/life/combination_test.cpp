// The maximum combination, permutations and the regression's hazard ratio of survmeth life, and the
// words that say which test answers what.
#include "analysis/life/combination.h"

#include "analysis/life/describe.h"
#include "analysis/option.h"
#include "tests/analysis/life/data.h"

namespace survmeth {
namespace {

using analysis::LifeAnswer;
using analysis::LifeRequest;
using test::Columns;
using test::groupsOf;
using test::near;

// Group b is spared at first and fails at once later.
Columns crossing() {
  std::vector<std::vector<std::pair<double, int>>> rows(2);
  for (int i = 0; i < 20; ++i) {
    rows[0].push_back({i < 16 ? 1.0 + i : 31.0 + i, 1});
    rows[1].push_back({18.0 + 0.25 * i, 1});
  }
  return groupsOf(rows);
}

LifeRequest asking(std::vector<std::string> combination, std::string permutations = {}) {
  LifeRequest request;
  request.combination = std::move(combination);
  request.permutations = std::move(permutations);
  return request;
}

std::string noteOf(const LifeAnswer& answer, const std::string& code) {
  for (const report::Note& note : describeLife(answer, answer.request).notes) {
    if (note.code == code) return note.text;
  }
  return {};
}

TEST(LifeCombination, IsTheEnginesForTwoGroups) {
  const LifeAnswer answer = test::lifeOf(crossing(), asking({"usual"}));
  ASSERT_EQ(answer.combination.size(), 1U);
  const auto& test = answer.combination[0].test;
  EXPECT_EQ(test.weightings.size(), 4U);
  // The log-rank test of all groups is one of them.
  EXPECT_TRUE(near(test.z[0] * test.z[0], answer.comparison.tests[0].test.chiSquare, 1e-12));
  EXPECT_GT(test.pValue, test.alone[test.largest]);
}

TEST(LifeCombination, CurvesThatCrossAreNoted) {
  LifeRequest request = asking({"usual"});
  request.alpha = 0.06;
  const LifeAnswer answer = test::lifeOf(crossing(), request);
  EXPECT_EQ(noteOf(answer, "crossing"),
            "the curves of \"a\" and \"b\" cross: Fleming-Harrington (1, 0) finds \"b\" failing "
            "less, Fleming-Harrington (0, 1) finds it failing more; no single hazard ratio "
            "describes that");
}

TEST(LifeCombination, ADisagreementSaysWhyAndWhichTestAnswers) {
  const LifeAnswer answer = test::lifeOf(crossing(), asking({"usual"}));
  ASSERT_GT(answer.comparison.tests[0].test.pValue, 0.05);
  ASSERT_LT(answer.combination[0].test.pValue, 0.05);
  const std::string said = noteOf(answer, "testsDisagree");
  EXPECT_NE(said.find(" finds a difference, the test \"Log-rank\" (p = "), std::string::npos)
      << said;
  EXPECT_NE(said.find("does not: the difference lies where Fleming-Harrington (1, 0) weighs most; "
                      "the answer is that of the test that was chosen before the data were seen"),
            std::string::npos)
      << said;
}

TEST(LifeCombination, TestsThatAgreeAreNotNoted) {
  std::vector<std::string> labels;
  const LifeAnswer answer = test::lifeOf(
      test::fromFile("leukemia.csv", "weeks", "relapse", "treatment", &labels), asking({"usual"}));
  EXPECT_EQ(noteOf(answer, "testsDisagree"), "");
  EXPECT_EQ(noteOf(answer, "crossing"), "");
}

TEST(LifeCombination, OfSeveralGroupsIsOfEachPair) {
  std::vector<std::string> labels;
  const LifeAnswer answer =
      test::lifeOf(test::fromFile("veteran.csv", "time", "status", "celltype", &labels),
                   asking({"logrank", "fh:0:1"}, "99"));
  EXPECT_EQ(answer.combination.size(), 6U);
  EXPECT_EQ(answer.combination[0].test.weightings.size(), 2U);
  EXPECT_FALSE(answer.permutation->combination.has_value());
}

TEST(LifePermutation, KeepsTheTestsOfTheRequestAndTheCombination) {
  LifeRequest request = asking({"usual"}, "500");
  request.tests = {"peto-peto"};
  request.seed = 11;
  const LifeAnswer answer = test::lifeOf(crossing(), request);
  ASSERT_TRUE(answer.permutation.has_value());
  EXPECT_EQ(answer.permutation->found.tests.size(), 1U);
  EXPECT_EQ(answer.permutation->asked.seed, 11U);
  EXPECT_EQ(answer.permutation->found.looked, 500U);
  EXPECT_GT(answer.permutation->combination->pValue, 0.0);
}

TEST(LifePermutation, ExchangesRowsHoweverManyThereAre) {
  Columns many;
  many.groups = 2;
  for (std::uint32_t i = 0; i < 20'000; ++i) {
    many.time.push_back(1.0 + i % 50);
    many.event.push_back(1);
    many.group.push_back(i / 50 % 2);
  }
  const LifeAnswer answer = test::lifeOf(many, asking({}, "9"));
  EXPECT_EQ(answer.permutation->found.looked, 9U);
  // 10,000 of 20,000 rows: C(20000, 10000) is beyond a double.
  EXPECT_TRUE(std::isinf(answer.permutation->found.arrangements));
}

TEST(LifePermutation, WithoutATestThereIsNone) {
  Columns censored = crossing();
  for (auto& event : censored.event) event = 0;
  EXPECT_FALSE(test::lifeOf(censored, asking({"usual"}, "500")).permutation.has_value());
}

// R's coxph(Surv(weeks, relapse) ~ treatment), survival 3.5-3: coefficient 1.5721251488, standard
// error 0.4123967177.
TEST(LifeCoxRatio, IsThatOfTheRegression) {
  std::vector<std::string> labels;
  LifeRequest request;
  request.hazardRatios = true;
  const LifeAnswer answer = test::lifeOf(
      test::fromFile("leukemia.csv", "weeks", "relapse", "treatment", &labels), request);
  EXPECT_NEAR(std::log(answer.comparison.coxRatio.estimate), 1.5721251488, 1e-9);
  EXPECT_NEAR(answer.comparison.coxRatio.standardError, 0.4123967177, 1e-9);
}

TEST(LifeCoxRatio, OfAGroupThatAlwaysFailsFirstIsInfiniteWithoutLimits) {
  LifeRequest request;
  request.hazardRatios = true;
  const LifeAnswer answer =
      test::lifeOf(groupsOf({{{5, 1}, {6, 1}, {7, 0}}, {{1, 1}, {2, 1}, {3, 1}}}), request);
  EXPECT_EQ(answer.comparison.coxRatio.estimate, std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(answer.comparison.coxRatio.lower));
}

void expectBad(const LifeRequest& request, const std::string& option, const std::string& text) {
  try {
    LifeRequest asked = request;
    asked.time = "t";
    asked.event = "e";
    checkLife(asked);
    ADD_FAILURE() << "not refused: " << text;
  } catch (const analysis::BadOption& bad) {
    EXPECT_EQ(bad.option(), option);
    EXPECT_EQ(bad.what(), text);
  }
}

TEST(LifeCombination, RefusesWhatItCannotCombine) {
  expectBad(asking({"logrank", "gehan-breslow", "tarone-ware", "peto-peto", "fh:0:1"}),
            "combination", "has 5 tests; expected usual, or up to 4 as --tests names them");
  expectBad(asking({"wilcoxon"}), "combination",
            "\"wilcoxon\" is no test; expected some of logrank, gehan-breslow, tarone-ware, "
            "peto-peto, modified-peto-peto, fh:P:Q, or usual by itself");
  for (const std::string text : {"many", "0", "-3", "2.5", "1000000001"}) {
    expectBad(asking({}, text), "permutations",
              "\"" + text +
                  "\" is no number of permutations; expected a whole number from 1 to "
                  "1,000,000,000, or exact");
  }
  LifeRequest alone;
  alone.seed = 3;
  expectBad(alone, "seed", "stands without --permutations; expected both or none");
}

}  // namespace
}  // namespace survmeth
