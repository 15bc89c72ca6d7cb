// Fits of public data sets against R's survival (tests/reference/cox/make.R).
//
// R converges until the log-likelihood changes by less than 1e-14 of itself; what is left is below
// 1e-9 of a standard error.
#include <gtest/gtest.h>

#include "engine/cox/baseline.h"
#include "engine/cox/concordance.h"
#include "engine/cox/fit.h"
#include "engine/cox/proportionality.h"
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

// R's seventh definition of a quantile, at 0.6.
double quantile60(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const double place = 0.6 * static_cast<double>(values.size() - 1);
  const auto below = static_cast<std::size_t>(place);
  const double part = place - static_cast<double>(below);
  return part == 0.0 ? values[below] : values[below] + part * (values[below + 1] - values[below]);
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

TEST_P(CoxReference, ConcordanceIsRs) {
  const engine::cox::Concordance c = concordance(fit_);
  const auto one = [&](const std::string& item, double value) {
    compare(item, [&](std::size_t, std::size_t) { return value; });
  };
  one("concordance", c.estimate);
  one("concordanceVariance", c.standardError * c.standardError);
  const double counts[] = {c.concordant, c.discordant, c.tiedScore, c.tiedTime, c.tiedBoth};
  compare("concordanceCount", [&](std::size_t i, std::size_t) { return counts[i]; });
}

TEST_P(CoxReference, TestsOfProportionalHazardsAreRs) {
  if (case_.options.ties == engine::cox::Ties::kDiscrete) return;
  const std::map<std::string, engine::cox::TimeTransform> transforms = {
      {"km", engine::cox::TimeTransform::kKaplanMeier},
      {"rank", engine::cox::TimeTransform::kRank},
      {"identity", engine::cox::TimeTransform::kIdentity},
      {"log", engine::cox::TimeTransform::kLog}};
  for (const auto& [name, transform] : transforms) {
    const engine::cox::Proportionality test = testProportionality(fit_, transform);
    const auto row = [&](std::size_t i) {
      return i < test.terms.size() ? test.terms[i].test : test.global;
    };
    const std::string item = "proportionality_" + name;
    compare(item, [&](std::size_t i, std::size_t) { return row(i).chiSquare; });
    compare(item + "_df", [&](std::size_t i, std::size_t) {
      return static_cast<double>(row(i).degreesOfFreedom);
    });
    compareRows(item + "_g", test.transformed);
    compareColumns(item + "_y", test.scaled.column);
  }
}

TEST_P(CoxReference, CumulativeHazardsAreRs) {
  if (case_.options.ties == engine::cox::Ties::kDiscrete) return;
  const engine::cox::BaselineHazard baseline(fit_);
  for (const std::string point : {"1", "2"}) {
    std::vector<double> x;
    for (const std::vector<double>& column : case_.data.columns) {
      x.push_back(point == "1" ? 0.0 : quantile60(column));
    }
    const std::vector<Cell>& times = cells_.at("hazardTime" + point);
    const std::vector<Cell>& hazards = cells_.at("hazard" + point);
    const std::vector<Cell>& errors = cells_.at("hazardError" + point);
    for (std::size_t i = 0; i < times.size(); ++i) {
      const std::uint32_t stratum =
          case_.data.stratum.empty() ? 0
                                     : case_.stratumCode.at(static_cast<double>(times[i].column));
      const engine::cox::CumulativeHazard hazard = baseline.at(x, 0.0, stratum);
      // The last event time at or before R's time, which may be a censored one.
      const auto after =
          std::upper_bound(hazard.time.begin(), hazard.time.end(), times[i].value * (1 + 1e-12));
      const auto k = static_cast<std::size_t>(after - hazard.time.begin());
      const double value = k == 0 ? 0.0 : hazard.hazard[k - 1];
      const double error = k == 0 ? 0.0 : hazard.standardError[k - 1];
      EXPECT_NEAR(value, hazards[i].value, 1e-9 * std::max(errors[i].value, hazards[i].value))
          << case_.name << point << " at " << times[i].value;
      EXPECT_NEAR(error, errors[i].value, 1e-9 * errors[i].value)
          << case_.name << point << " at " << times[i].value;
    }
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
