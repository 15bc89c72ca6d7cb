// Fits of public data sets against R's survival (tests/reference/cox/make.R).
//
// R converges until the log-likelihood changes by less than 1e-14 of itself; what is left is below
// 1e-9 of a standard error.
#include <gtest/gtest.h>

#include "engine/cox/fit.h"
#include "engine/cox/residuals.h"
#include "tests/engine/cox/data.h"

namespace survmeth {
namespace {

using engine::cox::Fit;
using test::CoxCase;
using test::Csv;

const std::string kFolder = std::string(SURVMETH_REFERENCE) + "/cox/";

// The cells of one case's file, by item.
struct Cell {
  std::size_t row, column;
  double value;
};

std::map<std::string, std::vector<Cell>> cellsOf(const std::string& name) {
  const Csv file(kFolder + "fits/" + name + ".csv");
  std::map<std::string, std::vector<Cell>> cells;
  for (std::size_t i = 0; i < file.rows(); ++i) {
    cells[file.text("item", i)].push_back({static_cast<std::size_t>(file.number("row", i)),
                                           static_cast<std::size_t>(file.number("column", i)),
                                           file.number("value", i)});
  }
  return cells;
}

class CoxReference : public testing::TestWithParam<std::size_t> {
 protected:
  CoxReference()
      : case_(test::coxCase(Csv(kFolder + "cases.csv"), GetParam())), cells_(cellsOf(case_.name)) {
    // R takes the sandwich for clusters and for weights that are no whole numbers.
    case_.options.robust = cells_.contains("robustCovariance");
    fit_ = case_.data.fit(case_.options);
  }

  // Each cell of the item against actual(row, column), to 1e-9 of the larger of the value and
  // `scale`(column).
  template <typename Actual, typename Scale>
  void compare(const std::string& item, Actual actual, Scale scale) {
    const auto found = cells_.find(item);
    if (found == cells_.end()) return;
    for (const Cell& cell : found->second) {
      const double tolerance =
          1e-9 * std::max(std::fabs(cell.value), static_cast<double>(scale(cell.column)));
      EXPECT_NEAR(actual(cell.row, cell.column), cell.value, tolerance)
          << case_.name << ": " << item << " " << cell.row << ", " << cell.column;
    }
  }
  template <typename Actual>
  void compare(const std::string& item, Actual actual) {
    compare(item, actual, [](std::size_t) { return 0.0; });
  }
  // Residuals scatter about 0: their unit is 1, or what one row does to a coefficient.
  void compareRows(const std::string& item, const std::vector<double>& values) {
    compare(
        item, [&](std::size_t row, std::size_t) { return values.at(row); },
        [](std::size_t) { return 1.0; });
  }
  void compareColumns(const std::string& item, const std::vector<std::vector<double>>& columns) {
    std::vector<double> scale;
    for (const std::vector<double>& column : columns) {
      double squares = 0.0;
      for (const double value : column) squares += value * value;
      scale.push_back(std::sqrt(squares / static_cast<double>(column.size())));
    }
    compare(
        item, [&](std::size_t row, std::size_t j) { return columns.at(j).at(row); },
        [&](std::size_t j) { return scale.at(j); });
  }

  CoxCase case_;
  std::map<std::string, std::vector<Cell>> cells_;
  Fit fit_;
};

TEST_P(CoxReference, CoefficientsCovariancesAndTestsAreRs) {
  ASSERT_TRUE(fit_.converged);
  ASSERT_TRUE(fit_.outcomes.empty()) << fit_.outcomes.front().text;
  const auto error = [&](std::size_t j) { return std::sqrt(fit_.covariance(j, j)); };
  compare(
      "coefficient", [&](std::size_t j, std::size_t) { return fit_.coefficients[j]; },
      [&](std::size_t) { return error(0); });
  const auto smallest = [&](std::size_t j) {
    double least = error(j);
    for (std::size_t k = 0; k < fit_.coefficients.size(); ++k) least = std::min(least, error(k));
    return error(j) * least;
  };
  compare(
      "covariance", [&](std::size_t i, std::size_t j) { return fit_.covariance(i, j); }, smallest);
  compare(
      "robustCovariance", [&](std::size_t i, std::size_t j) { return fit_.robustCovariance(i, j); },
      smallest);
  const auto one = [&](const std::string& item, double value) {
    compare(item, [&](std::size_t, std::size_t) { return value; });
  };
  one("logLikelihoodNull", fit_.logLikelihoodNull);
  one("logLikelihood", fit_.logLikelihood);
  one("score", fit_.score.chiSquare);
  one("wald", fit_.wald.chiSquare);
  one("robustScore", fit_.robustScore.chiSquare);
  one("aic", fit_.aic);
  one("bic", fit_.bic);
}

TEST_P(CoxReference, ResidualsAreRs) {
  if (case_.options.ties == engine::cox::Ties::kDiscrete) return;
  for (const bool weighted : {false, true}) {
    const std::string tag = weighted ? "Weighted" : "";
    compareRows("martingale" + tag, martingaleResiduals(fit_, {weighted, false}));
    compareColumns("score" + tag + "Residual", scoreResiduals(fit_, {weighted, false}));
    compareColumns("dfbeta" + tag, dfbetaResiduals(fit_, {weighted, false}));
    compareColumns("dfbetas" + tag, dfbetasResiduals(fit_, {weighted, false}));
    if (case_.data.clusters == 0) continue;
    compareRows("martingaleCluster" + tag, martingaleResiduals(fit_, {weighted, true}));
    compareColumns("dfbetaCluster" + tag, dfbetaResiduals(fit_, {weighted, true}));
  }
  compareRows("deviance", devianceResiduals(fit_, {}));
  compareColumns("schoenfeld", schoenfeldResiduals(fit_, false).column);
  compareColumns("scaledSchoenfeld", scaledSchoenfeldResiduals(fit_, false).column);
  if (case_.data.clusters > 0)
    compareRows("devianceCluster", devianceResiduals(fit_, {false, true}));
  if (case_.data.stratum.empty()) {
    compareRows("schoenfeldTime", schoenfeldResiduals(fit_, false).time);
  }
}

std::vector<std::size_t> allCases() {
  std::vector<std::size_t> cases(Csv(kFolder + "cases.csv").rows());
  for (std::size_t i = 0; i < cases.size(); ++i) cases[i] = i;
  return cases;
}

std::string caseName(const testing::TestParamInfo<std::size_t>& parameter) {
  return Csv(kFolder + "cases.csv").text("case", parameter.param);
}

INSTANTIATE_TEST_SUITE_P(PublicData, CoxReference, testing::ValuesIn(allCases()), caseName);

}  // namespace
}  // namespace survmeth
