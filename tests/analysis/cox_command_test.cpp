// survmeth cox below its faces: what a run refuses, notes and keeps.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "analysis/all.h"
#include "analysis/cox/run.h"
#include "analysis/cox/smooth.h"
#include "analysis/cox/subjects.h"
#include "frame/reader.h"
#include "tests/support/csv.h"

namespace {

using namespace survmeth;  // NOLINT(google-build-using-namespace)
using analysis::CoxAnswer;
using analysis::CoxRequest;

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

frame::Frame frameOf(std::vector<frame::Column> columns) {
  frame::Frame data;
  data.source = "memory";
  data.rows = data.rowsRead = columns[0].rows();
  data.columns = std::move(columns);
  return data;
}

frame::Frame eightRows() {
  return frameOf({frame::numberColumn("t", {1, 2, 2, 3, 4, 4, 5, 6}),
                  frame::numberColumn("e", {1, 1, 1, 0, 1, 1, 1, 0}),
                  frame::numberColumn("x", {0.5, 1.5, 1, 2, 0.25, 3, 2.5, 1}),
                  frame::numberColumn("w", {1, 2, kMissing, 3, 1, 2, 1, 2})});
}

CoxRequest requestOf(const std::string& formula) {
  CoxRequest request;
  request.formula = formula;
  return request;
}

std::string refusalOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::invalid_argument& refused) {
    return refused.what();
  }
  return "nothing is refused";
}

analysis::Fitted analysed(const frame::Frame& data, const CoxRequest& request) {
  numerics::Progress progress;
  return analysis::analyse(analysis::coxDeclaration(), data, &request, progress);
}

TEST(CoxCommand, AnswersAFormulaOfAFrameInMemory) {
  const analysis::Fitted fitted = analysed(eightRows(), requestOf("Surv(t, e) ~ x"));
  const auto& answer = *static_cast<const CoxAnswer*>(fitted.result.get());
  EXPECT_EQ(answer.fit.rows, 8u);
  EXPECT_EQ(answer.columns.at(0).name, "x");
  EXPECT_EQ(answer.coding.formula().text, "Surv(t, e) ~ x");
}

TEST(CoxCommand, RowsWithAMissingCellAreLeftOutAndCounted) {
  const analysis::Fitted fitted = analysed(eightRows(), requestOf("Surv(t, e) ~ x + w"));
  EXPECT_EQ(fitted.report.data.rowsUsed, 7u);
  ASSERT_FALSE(fitted.report.notes.empty());
  EXPECT_EQ(fitted.report.notes[0].code, "rowsLeftOut");
  EXPECT_EQ(fitted.report.notes[0].text, "1 of 8 rows left out: missing in \"w\" (1)");
}

TEST(CoxCommand, ARefusalNamesTheRowThatWasReadNotTheOneThatWasKept) {
  frame::Frame data = eightRows();
  data.columns[0] =
      frame::numberColumn("t", {1, 2, 2, 3, 4, std::numeric_limits<double>::infinity(), 5, 6});
  try {
    analysed(data, requestOf("Surv(t, e) ~ x + w"));
    FAIL() << "nothing is refused";
  } catch (const engine::Refusal& refusal) {
    EXPECT_EQ(refusal.row(), 5u);
    EXPECT_STREQ(refusal.what(), "\"t\" is infinite");
  }
}

TEST(CoxCommand, AWrongFormulaIsShownWithItsPlace) {
  EXPECT_EQ(refusalOf([] { analysed(eightRows(), requestOf("Surv(t, e) ~ x + y")); }),
            "there is no column \"y\"; expected one of \"t\", \"e\", \"x\", \"w\"\n"
            "    Surv(t, e) ~ x + y\n"
            "                     ^");
}

TEST(CoxCommand, ADotStandsForTheColumnsThatNothingElseNames) {
  CoxRequest request = requestOf("Surv(t, e) ~ .");
  request.weights = "w";
  const model::Formula formula = analysis::coxFormula(request, {"t", "e", "x", "w", "z"});
  ASSERT_EQ(formula.terms.size(), 2u);
  EXPECT_EQ(formula.terms[0].name, "x");
  EXPECT_EQ(formula.terms[1].name, "z");
}

TEST(CoxCommand, OptionsSayWhatAFormulaSays) {
  CoxRequest request;
  request.time = "t";
  request.event = "e";
  request.covariates = {"x"};
  const auto options = analysed(eightRows(), request);
  const auto formula = analysed(eightRows(), requestOf("Surv(t, e) ~ x"));
  const auto of = [](const analysis::Fitted& fitted) {
    return static_cast<const CoxAnswer*>(fitted.result.get())->fit;
  };
  EXPECT_EQ(of(options).coefficients, of(formula).coefficients);
  EXPECT_EQ(of(options).logLikelihood, of(formula).logLikelihood);
}

TEST(CoxCommand, AFitThatDoesNotConvergeIsRefusedWithItsReason) {
  CoxAnswer answer;
  answer.fit.column = {engine::cox::Column::kEstimated};
  answer.fit.outcomes = {{"notConverged", "the limit was reached after 50 iterations", {}}};
  EXPECT_EQ(refusalOf([&] { requireCoxAnswer(CoxRequest(), analysis::CoxInput(), answer); }),
            "the fit does not converge: the limit was reached after 50 iterations");
}

TEST(CoxCommand, CanBeCancelled) {
  struct Impatient : numerics::Progress {
    bool stop() override { return true; }
  } progress;
  const CoxRequest request = requestOf("Surv(t, e) ~ x");
  EXPECT_THROW(analysis::analyse(analysis::coxDeclaration(), eightRows(), &request, progress),
               numerics::Cancelled);
}

TEST(CoxCommand, ProgressStaysBetweenNothingAndAll) {
  struct Recorder : numerics::Progress {
    std::vector<double> seen;
    void show(double done) override { seen.push_back(done); }
  } progress;
  CoxRequest request = requestOf("Surv(t, e) ~ x");
  request.limits = analysis::CoxLimits::kProfile;
  request.dropOne = true;
  analysis::analyse(analysis::coxDeclaration(), eightRows(), &request, progress);
  ASSERT_FALSE(progress.seen.empty());
  for (const double done : progress.seen) {
    EXPECT_GE(done, 0);
    EXPECT_LE(done, 1);
  }
}

TEST(CoxSubjects, RowsThatFollowEachOtherAreOneSubject) {
  const std::vector<double> entry = {0, 4, 0}, exit = {4, 9, 5};
  const std::vector<std::uint32_t> event = {0, 1, 1};
  frame::Frame data;
  data.rows = 3;
  const analysis::CoxSubjects subjects = analysis::checkSubjects(
      data, {entry, exit, event, 1}, {}, {{"a", "b"}, {0, 0, 1}, {2, 1}}, {});
  EXPECT_FALSE(subjects.severalEvents);
  EXPECT_FALSE(subjects.gaps);
}

TEST(CoxSubjects, OverlapsWithinLongerRowsAreFound) {
  const std::vector<double> entry = {0, 1, 6}, exit = {9, 2, 7};
  const std::vector<std::uint32_t> event = {0, 0, 1};
  const std::vector<std::uint32_t> stratum = {0, 1, 0};
  frame::Frame data;
  data.rows = 3;
  engine::Rows rows;
  rows.stratum = stratum;
  rows.strata = 2;
  EXPECT_EQ(
      refusalOf([&] {
        analysis::checkSubjects(data, {entry, exit, event, 1}, rows, {{"a"}, {0, 0, 0}, {3}}, {});
      }),
      "the subject \"a\" is at risk twice at one time in one stratum: (6, 7] here and (0, 9] "
      "in row 1");
}

TEST(CoxSubjects, GapsBetweenDatesAreDates) {
  const std::vector<double> entry = {19783, 19790}, exit = {19788, 19799};
  const std::vector<std::uint32_t> event = {0, 1};
  frame::Frame data;
  data.rows = 2;
  const auto gaps = [&](model::DatedTimes dated) {
    return analysis::checkSubjects(data, {entry, exit, event, 1}, {}, {{"a"}, {0, 0}, {2}}, dated)
        .gaps.value()
        .text;
  };
  const std::string start =
      "one subject has times between rows at which nobody observes it: \"a\" (row 1 ends at ";
  EXPECT_EQ(gaps({true, true}), start + "2024-03-06, row 2 begins at 2024-03-08)");
  EXPECT_EQ(gaps({}), start + "19788, row 2 begins at 19790)");
}

frame::Frame veteran(const CoxRequest& request) {
  static const analysis::Declaration kCox = analysis::coxDeclaration();
  return frame::readFrame(SURVMETH_DATA "/veteran.csv",
                          [&](const std::vector<std::string>& header) {
                            return analysis::wantedColumns(kCox, &request, header);
                          });
}

// R's cox.zph(terms = TRUE). Both fits are within 1e-10 standard errors of the maximum, and
// residuals of some hundred standard errors are that much further apart.
TEST(CoxProportionality, TermsOfSeveralCoefficientsHaveOnePanelAndRsResiduals) {
  CoxRequest request = requestOf("Surv(time, status) ~ karno + celltype + ns(age, 3)");
  request.zph = engine::cox::TimeTransform::kIdentity;
  const analysis::Fitted fitted = analysed(veteran(request), request);
  const auto& zph = *static_cast<const CoxAnswer*>(fitted.result.get())->zph;
  const test::Csv expected(SURVMETH_REFERENCE "/cox_command/zph_terms.csv");
  const test::Csv variances(SURVMETH_REFERENCE "/cox_command/zph_variances.csv");
  ASSERT_EQ(zph.test.scaledTerms.size(), 3u);
  for (std::size_t t = 0; t < 3; ++t) {
    const engine::cox::TermResiduals& term = zph.test.scaledTerms[t];
    const double variance = variances.number("variance", t);
    EXPECT_NEAR(term.variance, variance, 1e-9 * variance);
    const std::vector<double> values = expected.numbers(expected.names()[1 + t]);
    ASSERT_EQ(term.value.size(), values.size());
    for (std::size_t k = 0; k < values.size(); ++k) {
      EXPECT_EQ(zph.test.transformed[k], expected.number("time", k));
      EXPECT_NEAR(term.value[k], values[k], 1e-9 * std::sqrt(variance));
    }
  }
  const report::Figure& figure = fitted.report.figures.back();
  ASSERT_EQ(figure.panels.size(), 3u);
  EXPECT_EQ(figure.panels[0].title, "karno");
  EXPECT_EQ(figure.panels[1].title, "celltype");
  EXPECT_EQ(figure.panels[2].title, "ns(age, 3)");
  EXPECT_EQ(figure.panels[1].references[0].at, 1);
}

TEST(CoxCommand, ASelectionLeavesTheFormulaOfWhatIsLeft) {
  CoxRequest request =
      requestOf("Surv(time, status) ~ trt * age + celltype + karno + strata(prior)");
  request.select = analysis::CoxSelection::kBackward;
  const analysis::Fitted fitted = analysed(veteran(request), request);
  const auto& answer = *static_cast<const CoxAnswer*>(fitted.result.get());
  EXPECT_EQ(answer.coding.formula().text, "Surv(time, status) ~ celltype + karno + strata(prior)");
}

// R's lm(y ~ ns(x, 3)): rounding of two least-squares methods in four columns.
TEST(Smooth, IsLeastSquaresOnANaturalSpline) {
  const test::Csv residuals(SURVMETH_REFERENCE "/cox_command/residuals.csv");
  const test::Csv expected(SURVMETH_REFERENCE "/cox_command/smooth.csv");
  const analysis::Smooth smooth =
      analysis::smoothOf(residuals.numbers("x"), residuals.numbers("y"), 1, 2);
  ASSERT_EQ(smooth.x.size(), expected.rows());
  for (std::size_t i = 0; i < expected.rows(); ++i) {
    const double fit = expected.number("fit", i), error = expected.number("error", i);
    EXPECT_NEAR(smooth.x[i], expected.number("x", i), 1e-15);
    EXPECT_NEAR(smooth.fit[i], fit, 1e-12);
    EXPECT_NEAR(smooth.upper[i] - smooth.fit[i], 2 * error, 1e-12);
    EXPECT_NEAR(smooth.fit[i] - smooth.lower[i], 2 * error, 1e-12);
  }
}

TEST(Smooth, NeedsKnotsThatAscend) {
  const std::vector<double> x = {1, 1, 1, 1, 2}, y = {1, 2, 3, 4, 5};
  EXPECT_TRUE(analysis::smoothOf(x, y, 1, 2).x.empty());
  EXPECT_TRUE(analysis::smoothOf({}, {}, 1, 2).x.empty());
}

}  // namespace
