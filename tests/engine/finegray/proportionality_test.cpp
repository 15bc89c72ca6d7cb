// Tests of proportional subdistribution hazards: by the information against survival's cox.zph of
// what finegray makes of the rows (make_finegray_zph.R), by the influences against the sums over
// pairs of rows that define them (make_finegray_errors.py).
#include "engine/finegray/proportionality.h"

#include <gtest/gtest.h>

#include <map>

#include "tests/engine/finegray/data.h"
#include "tests/support/progress.h"

namespace survmeth {
namespace {

using engine::finegray::CensoringTies;
using engine::finegray::Errors;
using engine::finegray::TimeTransform;
using test::Csv;
using test::FineGrayCase;

const std::string kFolder = std::string(SURVMETH_REFERENCE) + "/incidence/";

const std::map<std::string, TimeTransform> kTransforms = {
    {"identity", TimeTransform::kIdentity},
    {"log", TimeTransform::kLog},
    {"rank", TimeTransform::kRank},
    {"incidence", TimeTransform::kKaplanMeier}};

engine::finegray::Proportionality testOf(const engine::finegray::Fit& fit,
                                         TimeTransform transform) {
  numerics::Progress progress;
  return engine::finegray::testProportionality(fit, transform, progress);
}

void expectTests(const engine::cox::TermTests& tests,
                 const std::map<std::string, double>& expected) {
  ASSERT_EQ(tests.terms.size() + 1, expected.size());
  for (const engine::cox::TermTest& each : tests.terms) {
    const double value = expected.at("x" + std::to_string(each.term + 1));
    // The score's own rounding, some 1e-12 of its error, counts where it is next to 0.
    EXPECT_NEAR(each.test.chiSquare, value, 1e-9 * std::max(value, 1e-3)) << each.term;
    EXPECT_EQ(each.test.degreesOfFreedom, 1u);
  }
  EXPECT_NEAR(tests.global.chiSquare, expected.at("GLOBAL"), 1e-9 * expected.at("GLOBAL"));
  EXPECT_EQ(tests.global.degreesOfFreedom, tests.terms.size());
}

TEST(FineGrayProportionality, ByTheInformationIsThatOfTheWeightedRows) {
  const Csv file(kFolder + "finegray_zph.csv");
  std::size_t tested = 0;
  for (std::size_t i = 0; i < file.rows();) {
    const auto text = [&](const char* name) { return file.text(name, i); };
    const std::string transform = text("transform");
    SCOPED_TRACE(text("data") + " " + text("cause") + " " + text("strata") + " " + transform);
    std::map<std::string, double> expected;
    FineGrayCase made(file, i);
    made.options.censoringTies = CensoringTies::kAfterEvents;
    do {
      expected[file.text("term", i)] = file.number("chiSquare", i);
    } while (file.text("term", i++) != "GLOBAL");
    const auto found = testOf(made.fit(), kTransforms.at(transform));
    expectTests(found.modelBased, expected);
    ++tested;
  }
  EXPECT_EQ(tested, 112u);
}

TEST(FineGrayProportionality, ByTheInfluencesIsThatOfTheDefinition) {
  const Csv cases(kFolder + "finegray_errors_cases.csv");
  const Csv file(kFolder + "finegray_score_tests.csv");
  std::map<std::pair<std::string, std::string>, std::map<std::string, double>> expected;
  for (std::size_t i = 0; i < file.rows(); ++i) {
    expected[{file.text("case", i), file.text("transform", i)}][file.text("term", i)] =
        file.number("chiSquare", i);
  }
  for (std::size_t i = 0; i < cases.rows(); ++i) {
    FineGrayCase made(cases, i);
    if (cases.text("ties", i) == "after-events") {
      made.options.censoringTies = CensoringTies::kAfterEvents;
    }
    if (cases.text("errors", i) == "sandwich") made.options.errors = Errors::kSandwich;
    if (cases.text("offset", i) == "far") {
      made.data.offset.assign(made.data.exit.size(), 0.0);
      made.data.offset[4] = 27.5;
    }
    const auto fit = made.fit();
    for (const char* transform : {"identity", "log"}) {
      SCOPED_TRACE(cases.text("case", i) + " " + transform);
      expectTests(testOf(fit, kTransforms.at(transform)),
                  expected.at({cases.text("case", i), transform}));
    }
  }
}

TEST(FineGrayProportionality, ScaledResidualsHaveTheCoefficientForMean) {
  const Csv cases(kFolder + "finegray_errors_cases.csv");
  const FineGrayCase made(cases, 0);
  const auto fit = made.fit();
  const auto found = testOf(fit, TimeTransform::kIdentity);
  ASSERT_EQ(found.scaledTerms.size(), fit.coefficients.size());
  EXPECT_EQ(found.transformed.size(), fit.events);
  for (const engine::cox::TermResiduals& term : found.scaledTerms) {
    ASSERT_EQ(term.value.size(), fit.events);
    double sum = 0;
    for (const double value : term.value) sum += value;
    // The residuals themselves add up to the score, 0 but for rounding.
    EXPECT_NEAR(sum / static_cast<double>(fit.events), term.coefficient,
                1e-9 * std::sqrt(term.variance));
  }
}

TEST(FineGrayProportionality, RefusesTheLogarithmAtTimesThatAreNotPositive) {
  const Csv cases(kFolder + "finegray_errors_cases.csv");
  FineGrayCase made(cases, 0);
  for (double& time : made.data.exit) time -= 1000;
  try {
    testOf(made.fit(), TimeTransform::kLog);
    ADD_FAILURE();
  } catch (const engine::Refusal& refusal) {
    EXPECT_STREQ(refusal.what(), "the logarithm needs positive event times");
  }
}

TEST(FineGrayProportionality, ReportsHowFarItIsAndStopsThere) {
  const engine::finegray::Fit fit = FineGrayCase("melanoma", 1).fit();
  test::expectStops([&](numerics::Progress& progress) {
    engine::finegray::testProportionality(fit, TimeTransform::kRank, progress);
  });
}

}  // namespace
}  // namespace survmeth
