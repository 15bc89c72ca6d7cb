// Designs held against model.matrix of R, column by column.
#include "model/design.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <limits>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "tests/model/data.h"
#include "tests/support/csv.h"

namespace survmeth::model {
namespace {

using Strings = std::vector<std::string>;

Coding learnt(const std::string& formula, const frame::Frame& data,
              const CodingOptions& options = {}) {
  return Coding::learn(parseFormula(formula), data, options);
}

std::vector<double> column(const DesignColumns& made, std::size_t j) {
  return {made.design.columns[j].begin(), made.design.columns[j].end()};
}

// R computes the same columns by other roads: an orthogonal factorisation for poly(), B-splines
// summed in another order for ns(). Each value is compared with the largest of its column, which
// is what a coefficient multiplies.
void expectNear(std::span<const double> have, const std::vector<double>& want,
                const std::string& what) {
  constexpr double kBasis = 1e-12;
  double largest = 0;
  for (const double value : want) largest = std::max(largest, std::fabs(value));
  ASSERT_EQ(have.size(), want.size()) << what;
  for (std::size_t i = 0; i < want.size(); ++i) {
    ASSERT_NEAR(have[i], want[i], kBasis * largest) << what << ", row " << i;
  }
}

TEST(Design, IsThatOfR) {
  const frame::Frame all = patients();
  const auto jobs = tabbed("formulas.txt");
  ASSERT_GE(jobs.size(), 80U);
  for (const Strings& job : jobs) {
    const std::string what = job[3] + " on " + job[1] + " rows";
    const frame::Frame data = firstRows(all, std::stoul(job[1]));
    const DesignColumns made = learnt(job[3], data).design(data);
    const test::Csv want(reference("design_" + job[0] + ".csv"));
    EXPECT_EQ(made.design.size(), want.names().size()) << what;
    if (made.design.size() != want.names().size()) continue;
    for (std::size_t j = 0; j < made.design.size(); ++j) {
      const std::vector<double> numbers = want.numbers(want.names()[j]);
      if (job[2] == "coding") {
        EXPECT_EQ(column(made, j), numbers) << what << ", " << made.design.names[j];
      } else {
        expectNear(made.design.columns[j], numbers, what + ", " + made.design.names[j]);
      }
    }
  }
}

TEST(Design, OfInteractionsWithStrataIsThatOfR) {
  const frame::Frame data = patients();
  const auto jobs = tabbed("strata_formulas.txt");
  ASSERT_EQ(jobs.size(), 8U);
  for (const Strings& job : jobs) {
    const DesignColumns made = learnt(job[1], data).design(data);
    const test::Csv want(reference("strata_design_" + job[0] + ".csv"));
    ASSERT_EQ(made.design.size(), want.names().size()) << job[1];
    for (std::size_t j = 0; j < made.design.size(); ++j) {
      EXPECT_EQ(column(made, j), want.numbers(want.names()[j])) << job[1];
    }
  }
}

TEST(Design, OfNewRowsIsThatOfR) {
  const frame::Frame data = patients();
  const test::Csv table(reference("new.csv"));
  const frame::Frame fresh = frameOf({frame::numberColumn("age", table.numbers("age")),
                                      frame::numberColumn("bmi", table.numbers("bmi"))});
  std::size_t compared = 0;
  for (const Strings& job : tabbed("formulas.txt")) {
    const std::string file = reference("new_" + job[0] + ".csv");
    if (!std::ifstream(file)) continue;
    ++compared;
    const DesignColumns made = learnt(job[3], data).design(fresh);
    const test::Csv want(file);
    ASSERT_EQ(made.design.size(), want.names().size()) << job[3];
    for (std::size_t j = 0; j < made.design.size(); ++j) {
      expectNear(made.design.columns[j], want.numbers(want.names()[j]), job[3]);
    }
  }
  EXPECT_EQ(compared, 8U);
}

TEST(Design, NamesItsColumnsTermsAndLevels) {
  const frame::Frame data = patients();
  const DesignColumns made = learnt("~ age + trt + ns(bmi, 2) + sex:trt", data).design(data);
  EXPECT_EQ(made.design.names, (Strings{"age", "trt=low", "trt=high", "ns(bmi, 2)1", "ns(bmi, 2)2",
                                        "trt=placebo:sex=m", "trt=low:sex=m", "trt=high:sex=m"}));
  EXPECT_EQ(made.design.termNames, (Strings{"age", "trt", "ns(bmi, 2)", "trt:sex"}));
  EXPECT_EQ(made.design.term, (std::vector<std::size_t>{0, 1, 1, 2, 2, 3, 3, 3}));
  using Levels = std::vector<std::pair<std::string, std::string>>;
  EXPECT_EQ(made.meaning[0].levels, Levels());
  EXPECT_EQ(made.meaning[2].levels, (Levels{{"trt", "high"}}));
  EXPECT_EQ(made.meaning[6].levels, (Levels{{"trt", "low"}, {"sex", "m"}}));
}

TEST(Design, BorrowsColumnsThatStandByThemselves) {
  const frame::Frame data = patients();
  const DesignColumns made = learnt("~ age", data).design(data);
  EXPECT_EQ(made.design.columns[0].data(), data.find("age")->numbers.data());
}

TEST(Design, MayHaveNoColumns) {
  const frame::Frame data = patients();
  EXPECT_EQ(learnt("Surv(time, status) ~ 1", data).design(data).design.size(), 0U);
}

TEST(Design, TakesTheReferencesThatItIsTold) {
  const frame::Frame data = patients();
  CodingOptions options;
  options.factors = {"dose"};
  options.references = {{"trt", "low"}, {"dose", "5.0"}, {"site", "C"}};
  const DesignColumns made = learnt("~ trt + dose + C(site)", data, options).design(data);
  EXPECT_EQ(made.design.names, (Strings{"trt=placebo", "trt=high", "dose=1", "dose=2", "dose=10",
                                        "C(site)=A", "C(site)=B", "C(site)=D"}));
  for (std::size_t i = 0; i < data.rows; ++i) {
    ASSERT_EQ(made.design.columns[3][i], data.find("dose")->numbers[i] == 2 ? 1 : 0);
  }
}

TEST(Design, TakesLogicalValuesAsNumbers) {
  const frame::Frame data = patients();
  const DesignColumns made = learnt("~ I(age > 50) + (sex == \"m\")", data).design(data);
  ASSERT_EQ(made.design.names, (Strings{"I(age > 50)", "sex == \"m\""}));
  for (std::size_t i = 0; i < data.rows; ++i) {
    ASSERT_EQ(made.design.columns[0][i], data.find("age")->numbers[i] > 50 ? 1 : 0);
  }
}

frame::Frame people(const Strings& sex, std::vector<double> age) {
  return frameOf({labelled("sex", sex), frame::numberColumn("age", std::move(age))});
}
constexpr double kNa = std::numeric_limits<double>::quiet_NaN();

TEST(Design, OfNewRowsKeepsTheLevelsThatWereLearnt) {
  const Coding coding = learnt("~ sex * age", people({"f", "m", "x", "f"}, {1, 2, 3, 4}));
  const DesignColumns made = coding.design(people({"x", "x"}, {5, 6}));
  EXPECT_EQ(made.design.names, (Strings{"sex=m", "sex=x", "age", "sex=m:age", "sex=x:age"}));
  EXPECT_EQ(column(made, 0), (std::vector<double>{0, 0}));
  EXPECT_EQ(column(made, 1), (std::vector<double>{1, 1}));
  EXPECT_EQ(column(made, 4), (std::vector<double>{5, 6}));
}

TEST(Design, OfNewRowsMayLackALabelThatAComparisonNames) {
  const Coding coding = learnt("~ I(sex == \"m\")", people({"f", "m"}, {1, 2}));
  EXPECT_EQ(column(coding.design(people({"f", "f"}, {1, 2})), 0), (std::vector<double>{0, 0}));
}

TEST(Design, IsMissingWhereACellIs) {
  const frame::Frame data = patients();
  const Coding coding = learnt("~ sex + ns(age, 2) + rcs(age, 3) + poly(age, 2) + sex:age", data);
  const DesignColumns made = coding.design(people({"NA", "f", "m"}, {40, kNa, 40}));
  const auto isMissing = [&](std::size_t row) {
    std::string text;
    for (const auto& cells : made.design.columns) text += std::isnan(cells[row]) ? '1' : '0';
    return text;
  };
  EXPECT_EQ(isMissing(0), "100000011");
  EXPECT_EQ(isMissing(1), "011111111");
  EXPECT_EQ(isMissing(2), "000000000");
}

template <typename Call>
void expectRefused(const Call& call, std::size_t row, const std::string& sentence,
                   const std::string& expected = "") {
  try {
    call();
    ADD_FAILURE() << "not refused: " << sentence;
  } catch (const engine::Refusal& refusal) {
    EXPECT_EQ(refusal.role(), engine::Role::kFormula);
    EXPECT_EQ(refusal.row(), row);
    EXPECT_STREQ(refusal.what(), sentence.c_str());
    EXPECT_EQ(refusal.expected(), expected);
  }
}
void expectMisread(const std::string& text, std::size_t at, const std::string& sentence) {
  try {
    learnt(text, patients());
    ADD_FAILURE() << text << " is learnt";
  } catch (const frame::ExpressionError& error) {
    EXPECT_EQ(error.at(), at) << text;
    EXPECT_STREQ(error.what(), sentence.c_str()) << text;
  }
}
constexpr std::size_t kNone = engine::Refusal::kNone;

TEST(Design, RefusesAnUnknownLevelByItsNameAndRow) {
  const Coding coding = learnt("~ sex", people({"f", "m"}, {1, 2}));
  expectRefused(
      [&] {
        coding.design(people({"m", "w", "w"}, {1, 2, 3}));
      },
      1, "\"w\" is no level of \"sex\" that the model knows", "one of \"f\", \"m\"");
}

TEST(Design, RefusesNewDataWithoutAColumn) {
  const Coding coding = learnt("~ sex", people({"f", "m"}, {1, 2}));
  expectRefused([&] { coding.design(frameOf({frame::numberColumn("age", {1})})); }, kNone,
                "there is no column \"sex\"", "one of \"age\"");
}

TEST(Design, RefusesWhatCannotBeLearnt) {
  const auto learn = [](const std::string& text, CodingOptions options = {}) {
    return [text, options] { learnt(text, patients(), options); };
  };
  CodingOptions reference;
  reference.references = {{"trt", "lo"}};
  expectRefused(learn("~ trt", reference), kNone,
                "no row of \"trt\" holds the reference \"lo\"; expected one of \"low\", \"high\", "
                "\"placebo\"");
  expectRefused(learn("~ log(status)"), 0, "\"log(status)\" is infinite");
  expectRefused(learn("~ ns(dose, 4)"), kNone,
                "\"ns(dose, 4)\" has 4 different values; expected at least 5");
  expectRefused(learn("~ poly(status, 3)"), kNone,
                "\"poly(status, 3)\" has 3 different values; expected at least 4");
  expectRefused(learn("~ ns(age, knots = 200)"), kNone,
                "a knot of \"ns(age, knots = 200)\" is at 200; expected it between 30 and 79");
}

// The fifth smallest of these is 2 and so is the median.
TEST(Design, RefusesKnotsThatCoincide) {
  const frame::Frame data = frameOf({frame::numberColumn("x", {1, 2, 2, 2, 2, 2, 2, 3, 4, 5, 6})});
  expectRefused([&] { learnt("~ rcs(x, 3)", data); }, kNone,
                "the knots of \"rcs(x, 3)\" do not ascend: 2 follows 2, for too few rows differ; "
                "expected fewer knots");
}

TEST(Design, RefusesWrongArgumentsWithTheirPlace) {
  expectMisread(
      "~ aeg", 2,
      "there is no column \"aeg\"; expected one of \"age\", \"sex\", \"bmi\", \"trt\", "
      "\"lab\", \"mark\", \"dose\", \"site\", \"time\", \"smokes\", \"status\", \"entry\"");
  expectMisread("~ C(age + 1)", 2, "C() takes one column; expected C(stage)");
  expectMisread("~ ns()", 2, "ns() is empty; expected a column");
  expectMisread("~ ns(df = 3, age)", 10, "the first argument of ns() is \"df\"; expected a column");
  expectMisread("~ ns(age, 2.5)", 10,
                "\"2.5\" is no number of columns of ns(); expected a whole number from 1 to 50");
  expectMisread("~ ns(age, 3, 4)", 13, "ns() has too many arguments");
  expectMisread("~ ns(age, Df = 3)", 15,
                "there is no argument \"Df\" of ns(); expected one of \"df\", \"knots\"");
  expectMisread("~ ns(age, df = 3, knots = c(40, 50))", 15,
                "ns() has both df and knots; expected one of them");
  expectMisread("~ ns(age, knots = c(50, 40))", 24,
                "the knots do not ascend; expected each above the one before");
  expectMisread("~ rcs(age, 8)", 11,
                "\"8\" is no number of knots of rcs(); expected a whole number from 3 to 7");
  expectMisread("~ rcs(age, c(40, 50))", 11, "rcs() has 2 knots; expected 3 or more");
  expectMisread("~ rcs(age, c(40, x, 50))", 17,
                "\"x\" is not a number; expected c(...) of numbers");
  expectMisread("~ poly(age, 0)", 12,
                "\"0\" is no degree of poly(); expected a whole number from 1 to 20");
  expectMisread("~ poly(age, 2, raw = T)", 21, "\"T\" is no answer; expected TRUE or FALSE");
}

TEST(Coding, LearntOnDrawnRowsIsThatOfTheirFrame) {
  const frame::Frame data = patients();
  const std::vector<std::uint32_t> drawn = {5, 90, 5, 17, 33, 2, 64, 101, 64, 71, 12, 48};
  const frame::Frame some = frame::selectRows(data, drawn);
  frame::Frame alone;
  alone.rows = drawn.size();
  std::vector<double> age;
  Strings site;
  const frame::Column& sites = *data.find("site");
  for (const std::uint32_t row : drawn) {
    age.push_back(data.find("age")->numbers[row]);
    site.push_back(sites.levels[sites.codes[row]]);
  }
  alone.columns = {frame::numberColumn("age", age), labelled("site", site)};
  const std::string text = "~ ns(age, 2) + site + poly(age, 2) + rcs(age, 3)";
  EXPECT_EQ(learnt(text, some).variables(), learnt(text, alone).variables());
  EXPECT_FALSE(learnt(text, some).variables() == learnt(text, data).variables());
}

TEST(Coding, LearnsFromTheValuesThatArePresent) {
  const auto variables = [](std::vector<double> x) {
    return learnt("~ rcs(x, 3) + ns(x, 2) + poly(x, 2)",
                  frameOf({frame::numberColumn("x", std::move(x))}))
        .variables();
  };
  EXPECT_EQ(variables({1, 9, kNa, 2, 3, 5, 8, 13, 21, 34, 55, 60, kNa}),
            variables({1, 9, 2, 3, 5, 8, 13, 21, 34, 55, 60}));
}

TEST(Coding, LeavesOutRowsInWhichAVariableHasNoValue) {
  const frame::Frame data = people({"f", "NA", "m", "m"}, {4, 1, -1, 9});
  using Rows = std::vector<std::uint32_t>;
  EXPECT_EQ(Coding::completeRows(parseFormula("~ log(age)"), data), (Rows{0, 1, 3}));
  EXPECT_EQ(Coding::completeRows(parseFormula("~ C(sex) + age"), data), (Rows{0, 2, 3}));
  EXPECT_EQ(Coding::completeRows(parseFormula("~ ns(sqrt(age), 2) + offset(log(age - 1))"), data),
            (Rows{0, 1, 3}));
}

}  // namespace
}  // namespace survmeth::model
