// Coefficients, tests, comparisons.
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "Dist/Dist"
#include "analysis/cox/describe.h"
#include "analysis/cox/procedures.h"
#include "numerics/elementary.h"
#include "report/build.h"
#include "report/keys.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;
namespace key = report::key;
using report::Kind;

struct Named {
  std::string name;
  cox::ChiSquareTest test;
};

// None of a test that does not exist.
double degreesOf(const cox::ChiSquareTest& test) {
  return std::isnan(test.chiSquare) ? kNone : static_cast<double>(test.degreesOfFreedom);
}

// A row for each test.
report::Table testTable(const char* id, std::string caption, const char* nameKey, const char* first,
                        const std::vector<Named>& tests) {
  const auto column = [&tests](const char* key, const char* heading, Kind kind, auto member) {
    return report::columnOf(key, heading, kind, tests,
                            [member](const Named& each) { return each.test.*member; });
  };
  return report::tableOf(
      id, std::move(caption),
      {report::columnOf(nameKey, first, Kind::kLabel, tests,
                        [](const Named& each) { return each.name; }),
       column(key::kChiSquare, "chi-square", Kind::kStatistic, &cox::ChiSquareTest::chiSquare),
       report::columnOf(key::kDegreesOfFreedom, "df", Kind::kCount, tests,
                        [](const Named& each) { return degreesOf(each.test); }),
       column(key::kPValue, "p-value", Kind::kPValue, &cox::ChiSquareTest::pValue)});
}

report::Table coefficientTable(const CoxAnswer& answer, const CoxRequest& request) {
  const std::vector<CoxEstimate> estimates = coxEstimates(answer, request);
  const auto of = [&estimates](const char* key, std::string heading, Kind kind, auto member) {
    return report::columnOf(key, std::move(heading), kind, estimates,
                            [member](const CoxEstimate& each) { return each.*member; });
  };
  const auto errors = [&answer](const char* key, const char* heading, bool robust) {
    std::vector<double> values;
    for (std::size_t j = 0; j < answer.columns.size(); ++j) {
      const auto& matrix = robust ? answer.fit.robustCovariance : answer.fit.covariance;
      values.push_back(std::sqrt(matrix(j, j)));
    }
    return report::numberColumn(key, heading, Kind::kEstimate, values);
  };
  const auto label = [&answer](const char* key, const char* heading, auto member) {
    return report::columnOf(key, heading, Kind::kLabel, answer.columns,
                            [member](const CoxColumn& column) { return column.*member; });
  };
  const std::string level = report::confidence(request.alpha);
  report::Table table =
      report::tableOf("coefficients", std::string("Coefficients and ") + coxRatio(request) + "s",
                      {label(key::kName, "covariate", &CoxColumn::name),
                       label(key::kReference, "reference", &CoxColumn::reference),
                       of(key::kCoef, "coef", Kind::kEstimate, &CoxEstimate::coef),
                       errors(key::kStandardError, "std error", false)});
  const auto add = [&table](report::Column column) { table.columns.push_back(std::move(column)); };
  if (answer.fit.robustCovariance.size() != 0) {
    add(errors(key::kRobustStandardError, "robust std error", true));
  }
  add(of(key::kZ, "z", Kind::kStatistic, &CoxEstimate::z));
  add(of(key::kPValue, "p-value", Kind::kPValue, &CoxEstimate::pValue));
  add(of(request.cases ? key::kOddsRatio : key::kHazardRatio, coxRatio(request), Kind::kEstimate,
         &CoxEstimate::ratio));
  add(of(key::kLower, level + " lower", Kind::kEstimate, &CoxEstimate::lower));
  add(of(key::kUpper, level + " upper", Kind::kEstimate, &CoxEstimate::upper));
  add(report::columnOf(key::kMean, "mean", Kind::kTime, answer.columns,
                       [](const CoxColumn& column) { return column.mean; }));
  return table;
}

std::vector<Named> termTests(const CoxAnswer& answer, const std::vector<cox::TermTest>& tests) {
  std::vector<Named> named;
  for (const cox::TermTest& each : tests) named.push_back({answer.terms[each.term], each.test});
  return named;
}

// Tests of all coefficients; the likelihood ratio of a ridge has degrees of freedom that are no whole
// number.
report::Table globalTests(const CoxAnswer& answer) {
  const bool robust = answer.fit.robustCovariance.size() != 0;
  std::vector<Named> tests = {{"likelihood ratio", answer.fit.likelihoodRatio}};
  if (!answer.penalised) tests.push_back({"score", answer.fit.score});
  tests.push_back({robust ? "Wald, robust" : "Wald", answer.fit.wald});
  if (robust) tests.push_back({"score, robust", answer.fit.robustScore});
  const bool ridge =
      answer.penalised && answer.penalised->penalty.kind == cox::Penalty::Kind::kRidge;
  if (answer.penalised && !ridge) tests[0].name = "penalised likelihood ratio";
  if (!ridge) return testTable("tests", "All coefficients 0?", key::kTest, "test", tests);
  const cox::PenalisedFit& fit = *answer.penalised;
  return report::tableOf(
      "tests", "All coefficients 0?",
      {report::labelColumn(key::kTest, "test", {"likelihood ratio, on effective df"}),
       report::numberColumn(key::kChiSquare, "chi-square", Kind::kStatistic,
                            std::vector<double>{fit.chiSquare}),
       report::numberColumn(key::kDegreesOfFreedom, "df", Kind::kEstimate,
                            std::vector<double>{fit.effectiveDegrees}),
       report::numberColumn(key::kPValue, "p-value", Kind::kPValue,
                            std::vector<double>{fit.pValue})});
}

report::Table stepTable(const CoxAnswer& answer, const CoxRequest& request) {
  const bool byPValue = request.criterion.empty() || request.criterion == "p";
  const auto number = [&answer](const char* key, const char* heading, Kind kind, auto cell) {
    return report::columnOf(key, heading, kind, answer.steps, cell);
  };
  report::Table table = report::tableOf(
      "steps",
      byPValue ? "Steps of the selection (Wald tests)"
               : "Steps of the selection (likelihood ratios)",
      {report::columnOf(
           key::kChange, "change", Kind::kLabel, answer.steps,
           [](const CoxStep& step) { return std::string(step.added ? "added" : "removed"); }),
       report::columnOf(key::kName, "term", Kind::kLabel, answer.steps,
                        [](const CoxStep& step) { return step.term; }),
       number(key::kChiSquare, "chi-square", Kind::kStatistic,
              [](const CoxStep& step) { return step.test.chiSquare; }),
       number(key::kDegreesOfFreedom, "df", Kind::kCount,
              [](const CoxStep& step) { return degreesOf(step.test); }),
       number(key::kPValue, "p-value", Kind::kPValue,
              [](const CoxStep& step) { return step.test.pValue; }),
       number(key::kAic, "AIC after", Kind::kStatistic,
              [](const CoxStep& step) { return step.aic; }),
       number(key::kBic, "BIC after", Kind::kStatistic,
              [](const CoxStep& step) { return step.bic; })});
  if (answer.steps.empty()) table.remarks.emplace_back("The model was left as it began.");
  return table;
}

report::Table selectedTable(const CoxAnswer& answer) {
  return report::tableOf(
      "selected", "The model that is left",
      {report::labelColumn(key::kModel, "model", {model::textOf(answer.coding.formula())})});
}

report::Table versusTable(const CoxAnswer& answer) {
  const CoxComparison& comparison = *answer.versus;
  const cox::Fit* fits[] = {&answer.fit, &comparison.other};
  if (!comparison.versusIsSmaller) std::swap(fits[0], fits[1]);
  const cox::ChiSquareTest tests[] = {{}, comparison.test};
  const auto ofTests = [&tests](const char* key, const char* heading, Kind kind, auto cell) {
    return report::columnOf(key, heading, kind, tests, cell);
  };
  return report::tableOf(
      "versus", "Does the larger model fit better? Likelihood ratio",
      {report::labelColumn(key::kModel, "model", {comparison.larger, comparison.smaller}),
       report::columnOf(key::kLogLikelihood, "log-likelihood", Kind::kStatistic, fits,
                        [](const cox::Fit* fit) { return fit->logLikelihood; }),
       report::columnOf(key::kAic, "AIC", Kind::kStatistic, fits,
                        [](const cox::Fit* fit) { return fit->aic; }),
       ofTests(key::kChiSquare, "chi-square", Kind::kStatistic,
               [](const cox::ChiSquareTest& test) { return test.chiSquare; }),
       ofTests(key::kDegreesOfFreedom, "df", Kind::kCount, degreesOf),
       ofTests(key::kPValue, "p-value", Kind::kPValue,
               [](const cox::ChiSquareTest& test) { return test.pValue; })});
}

report::Table bootstrapTable(const CoxAnswer& answer, const CoxRequest& request) {
  const procedures::BootstrapLimits kind = coxBootstrapLimits(request);
  const procedures::Bootstrap& made = *answer.bootstrap;
  std::vector<std::string> names;
  std::vector<double> coef, bias, error, ratio, lower, upper;
  for (std::size_t j = 0; j < answer.columns.size(); ++j) {
    if (answer.fit.column[j] != cox::Column::kEstimated) continue;
    const auto summary = procedures::summarise(made, names.size(), 1 - request.alpha, kind);
    names.push_back(answer.columns[j].name);
    coef.push_back(answer.fit.coefficients[j]);
    bias.push_back(summary.bias);
    error.push_back(summary.standardError);
    ratio.push_back(numerics::exp(coef.back()));
    lower.push_back(numerics::exp(summary.lower));
    upper.push_back(numerics::exp(summary.upper));
  }
  const std::string level = report::confidence(request.alpha);
  return report::tableOf(
      "bootstrap", "Bootstrap",
      {report::labelColumn(key::kName, "covariate", std::move(names)),
       report::numberColumn(key::kCoef, "coef", Kind::kEstimate, coef),
       report::numberColumn(key::kBias, "bias", Kind::kEstimate, bias),
       report::numberColumn(key::kStandardError, "std error", Kind::kEstimate, error),
       report::numberColumn(key::kHazardRatio, "hazard ratio", Kind::kEstimate, ratio),
       report::numberColumn(key::kLower, level + " lower", Kind::kEstimate, lower),
       report::numberColumn(key::kUpper, level + " upper", Kind::kEstimate, upper)});
}

report::Table covarianceTable(const CoxAnswer& answer) {
  const bool robust = answer.fit.robustCovariance.size() != 0;
  const numerics::SquareMatrix& matrix = answer.fit.inference();
  report::Table table = report::tableOf(
      "covariance", std::string(robust ? "Robust" : "Model-based") + " covariance of coefficients",
      {report::columnOf(key::kName, "covariate", Kind::kLabel, answer.columns,
                        [](const CoxColumn& column) { return column.name; })});
  for (std::size_t j = 0; j < answer.columns.size(); ++j) {
    table.columns.push_back(
        report::numberColumn(std::string(key::kCovariance) + " " + answer.columns[j].name,
                             answer.columns[j].name, Kind::kEstimate, matrix.row(j)));
  }
  table.display = report::Display::kFilesOnly;
  return table;
}

bool hasLongTerm(const CoxAnswer& answer) {
  for (std::size_t j = 1; j < answer.columns.size(); ++j) {
    if (answer.columns[j].term == answer.columns[j - 1].term) return true;
  }
  return false;
}

}  // namespace

std::vector<CoxEstimate> coxEstimates(const CoxAnswer& answer, const CoxRequest& request) {
  const double quantile = InvCDFNormalStd(1 - request.alpha / 2);
  std::vector<CoxEstimate> estimates;
  for (std::size_t j = 0; j < answer.columns.size(); ++j) {
    CoxEstimate each;
    each.coef = answer.fit.coefficients[j];
    each.ratio = numerics::exp(each.coef);
    const double error = answer.fit.standardError(j);
    if (answer.fit.column[j] == cox::Column::kEstimated) {
      each.z = each.coef / error;
      each.pValue = cox::chiSquareTest(each.z * each.z, 1).pValue;
      each.lower = numerics::exp(each.coef - quantile * error);
      each.upper = numerics::exp(each.coef + quantile * error);
    }
    if (!answer.profile.empty()) {
      each.lower = numerics::exp(answer.profile[j].lower);
      each.upper = numerics::exp(answer.profile[j].upper);
    }
    estimates.push_back(each);
  }
  return estimates;
}

void addCoxTables(const CoxAnswer& answer, const CoxRequest& request, report::Report& report) {
  const auto add = [&report](report::Table table) { report.tables.push_back(std::move(table)); };
  add(coefficientTable(answer, request));
  if (!answer.columns.empty()) add(globalTests(answer));
  if (request.firth) {
    add(testTable("terms", "All coefficients of a term 0? Penalised likelihood ratio", key::kName,
                  "term", termTests(answer, answer.fit.terms)));
  } else if (hasLongTerm(answer)) {
    add(testTable("terms", "All coefficients of a term 0? Wald", key::kName, "term",
                  termTests(answer, answer.fit.terms)));
  }
  if (!answer.dropOne.empty()) {
    add(testTable("dropOne", "The model without a term: likelihood ratio", key::kName, "term",
                  termTests(answer, answer.dropOne)));
  }
  if (answer.versus) add(versusTable(answer));
  if (request.select != CoxSelection::kNone) {
    add(stepTable(answer, request));
    add(selectedTable(answer));
  }
  if (answer.bootstrap) add(bootstrapTable(answer, request));
  if (answer.zph) add(coxProportionalityTable(answer, request));
  if (request.covariance) add(covarianceTable(answer));
  if (request.baseline) add(coxBaselineTable(answer, request));
  if (answer.residuals) add(coxResidualTable(answer, request));
}

}  // namespace survmeth::analysis
