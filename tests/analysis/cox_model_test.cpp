// The facade's Cox regression: R's numbers, and a word for every model that does not exist.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/coxChecks.h"
#include "analysis/coxModel.h"
#include "analysis/invalidRequest.h"

namespace {

using survmeth::CoxModel;
using survmeth::CoxRequest;
using survmeth::InvalidRequest;
using survmeth::NoSuchModel;

// A CSV file by column; cells as text.
std::map<std::string, std::vector<std::string>> readCsv(const std::string& path) {
  std::ifstream file(path);
  std::string line, cell;
  std::vector<std::string> names;
  std::map<std::string, std::vector<std::string>> columns;
  for (bool header = true; std::getline(file, line); header = false) {
    std::stringstream cells(line);
    for (std::size_t j = 0; std::getline(cells, cell, ','); ++j) {
      if (header) {
        names.push_back(cell);
      } else {
        columns[names.at(j)].push_back(cell);
      }
    }
    if (!header && line.back() == ',') columns[names.back()].push_back("");
  }
  return columns;
}

std::vector<double> numbersOf(const std::vector<std::string>& cells) {
  std::vector<double> values;
  for (const std::string& cell : cells) values.push_back(std::stod(cell));
  return values;
}

// Columns that own what a request points to.
struct Data {
  std::vector<double> time;
  std::vector<std::uint8_t> event;
  std::vector<std::pair<std::string, std::vector<double>>> x;
  std::vector<std::uint32_t> stratum;
  std::size_t strata = 1;

  CoxRequest request() const {
    CoxRequest r;
    r.time = time;
    r.event = event;
    r.stratum = stratum;
    r.strata = strata;
    for (const auto& [name, values] : x) r.covariates.push_back({name, values});
    return r;
  }
};

Data lung() {
  auto columns = readCsv(SURVMETH_DATA "/lung.csv");
  Data data;
  data.x = {{"age", {}}, {"male", {}}, {"ph.ecog", {}}};
  for (std::size_t i = 0; i < columns["time"].size(); ++i) {
    if (columns["ph.ecog"][i].empty()) continue;
    data.time.push_back(std::stod(columns["time"][i]));
    data.event.push_back(columns["status"][i] == "1");
    data.x[0].second.push_back(std::stod(columns["age"][i]));
    data.x[1].second.push_back(columns["sex"][i] == "male");
    data.x[2].second.push_back(std::stod(columns["ph.ecog"][i]));
  }
  return data;
}

Data veteran() {
  auto columns = readCsv(SURVMETH_DATA "/veteran.csv");
  Data data;
  data.time = numbersOf(columns["time"]);
  for (const std::string& cell : columns["status"]) data.event.push_back(cell == "1");
  for (const char* name : {"karno", "age", "diagtime"}) {
    data.x.emplace_back(name, numbersOf(columns[name]));
  }
  const std::vector<std::string> cells = {"squamous", "smallcell", "adeno", "large"};
  for (const std::string& cell : columns["celltype"]) {
    data.stratum.push_back(
        static_cast<std::uint32_t>(std::find(cells.begin(), cells.end(), cell) - cells.begin()));
  }
  data.strata = 4;
  return data;
}

void expectNear(double value, double reference) {
  EXPECT_NEAR(value, reference, 1e-8 * std::max(1.0, std::fabs(reference)));
}

void expectReference(const CoxModel& model, const std::string& name) {
  auto coefficients = readCsv(SURVMETH_REFERENCE "/cox_" + name + "_coefficients.csv");
  ASSERT_EQ(model.coefficients.size(), coefficients["coef"].size());
  for (std::size_t j = 0; j < model.coefficients.size(); ++j) {
    const survmeth::CoxCoefficient& c = model.coefficients[j];
    EXPECT_EQ(c.name, coefficients["term"][j]);
    expectNear(c.coef, std::stod(coefficients["coef"][j]));
    expectNear(c.se, std::stod(coefficients["se"][j]));
    expectNear(c.z * c.z, std::stod(coefficients["wald.chisq"][j]));
    expectNear(c.hazardRatio, std::stod(coefficients["hazard.ratio"][j]));
    expectNear(c.lower, std::stod(coefficients["lower95"][j]));
    expectNear(c.upper, std::stod(coefficients["upper95"][j]));
  }
  auto fit = readCsv(SURVMETH_REFERENCE "/cox_" + name + "_fit.csv");
  expectNear(model.logLikNull, std::stod(fit["loglik.null"][0]));
  expectNear(model.logLik, std::stod(fit["loglik"][0]));
  expectNear(model.likelihoodRatio.chiSquare, std::stod(fit["lr"][0]));
  expectNear(model.score.chiSquare, std::stod(fit["score"][0]));
  expectNear(model.wald.chiSquare, std::stod(fit["wald"][0]));
  EXPECT_EQ(model.n, std::stoul(fit["n"][0]));
  EXPECT_EQ(model.events, std::stoul(fit["events"][0]));
  auto residuals = readCsv(SURVMETH_REFERENCE "/cox_" + name + "_residuals.csv");
  ASSERT_EQ(model.martingale.size(), residuals["martingale"].size());
  for (std::size_t i = 0; i < model.n; ++i) {
    expectNear(model.martingale[i], std::stod(residuals["martingale"][i]));
    expectNear(model.deviance[i], std::stod(residuals["deviance"][i]));
  }
}

TEST(CoxModel, LungMatchesTheReference) {
  const Data data = lung();
  CoxRequest request = data.request();
  request.residuals = true;
  request.baseline = true;
  const CoxModel model = survmeth::coxModel(request);
  expectReference(model, "lung");
  // The reference's baseline is at covariates 0, this one at their means.
  auto baseline = readCsv(SURVMETH_REFERENCE "/cox_lung_baseline_hazard.csv");
  double shift = 0;
  for (std::size_t j = 0; j < 3; ++j) shift += model.coefficients[j].coef * model.centre[j];
  ASSERT_EQ(model.baseline.size(), 1u);
  ASSERT_EQ(model.baseline[0].time.size(), baseline["time"].size());
  const double first = model.baseline[0].cumulativeHazard[0] / std::stod(baseline["hazard"][0]);
  EXPECT_TRUE(std::fabs(first - 1) < 1e-8 || std::fabs(first / std::exp(shift) - 1) < 1e-8);
  for (std::size_t k = 0; k < baseline["time"].size(); ++k) {
    EXPECT_EQ(model.baseline[0].time[k], std::stod(baseline["time"][k]));
    const double expected = std::stod(baseline["hazard"][k]) * first;
    EXPECT_NEAR(model.baseline[0].cumulativeHazard[k], expected, 1e-8 * expected);
  }
}

TEST(CoxModel, VeteranByCellTypeMatchesTheReference) {
  const Data data = veteran();
  CoxRequest request = data.request();
  request.residuals = true;
  expectReference(survmeth::coxModel(request), "veteran_by_celltype");
}

TEST(CoxModel, BackwardRemovalDropsTheLargestPValueFirst) {
  const Data data = veteran();
  CoxRequest request = data.request();
  request.removeAt = 0.1;
  const CoxModel model = survmeth::coxModel(request);
  ASSERT_EQ(model.removed.size(), 2u);
  EXPECT_EQ(model.removed[0].name, "diagtime");
  EXPECT_EQ(model.removed[1].name, "age");
  EXPECT_GE(model.removed[1].p, 0.1);
  ASSERT_EQ(model.coefficients.size(), 1u);
  EXPECT_EQ(model.coefficients[0].name, "karno");
}

TEST(CoxModel, ShiftAndScaleOfACovariateScaleItsCoefficient) {
  Data data = lung();
  const CoxModel before = survmeth::coxModel(data.request());
  for (double& value : data.x[0].second) value = 1e9 + 1000 * value;
  const CoxModel after = survmeth::coxModel(data.request());
  EXPECT_NEAR(after.coefficients[0].coef * 1000, before.coefficients[0].coef, 1e-8);
  EXPECT_NEAR(after.coefficients[1].coef, before.coefficients[1].coef, 1e-7);
  EXPECT_NEAR(after.logLik, before.logLik, 1e-7);
}

TEST(CoxModel, EmptyStrataHaveNoPart) {
  Data data = veteran();
  for (std::uint32_t& stratum : data.stratum) stratum = 2 * stratum + 1;
  data.strata = 9;
  CoxRequest request = data.request();
  request.baseline = true;
  const CoxModel model = survmeth::coxModel(request);
  EXPECT_EQ(model.baseline.size(), 4u);
  EXPECT_NEAR(model.coefficients[0].coef, -0.0364488161992752, 1e-8);
}

// Six rows of which the fourth is censored.
Data small(std::vector<double> x) {
  Data data;
  data.time = {1, 2, 3, 4, 5, 6};
  data.event = {1, 1, 1, 0, 1, 1};
  data.x = {{"x", std::move(x)}};
  return data;
}

std::string refusal(const Data& data) {
  try {
    survmeth::coxModel(data.request());
  } catch (const NoSuchModel& none) {
    return none.what();
  }
  return "";
}

TEST(CoxModel, NamesAConstantCovariateThatIsAlone) {
  EXPECT_EQ(refusal(small({2, 2, 2, 2, 2, 2})), "the covariate \"x\" does not vary");
}

TEST(CoxModel, NamesACovariateThatVariesOnlyBetweenStrata) {
  Data data = small({1, 1, 1, 4, 4, 4});
  data.stratum = {0, 0, 0, 1, 1, 1};
  data.strata = 2;
  EXPECT_EQ(refusal(data), "the covariate \"x\" does not vary within any stratum");
}

TEST(CoxModel, NamesDependentCovariates) {
  Data data = small({1, 5, 2, 6, 3, 4});
  data.x.push_back({"y", {2, 1, 1, 3, 1, 2}});
  data.x.push_back({"z", {}});
  for (int i = 0; i < 6; ++i) {
    data.x[2].second.push_back(3 * data.x[0].second[i] - data.x[1].second[i] + 7);
  }
  EXPECT_NE(refusal(data).find("follows exactly from"), std::string::npos) << refusal(data);
}

TEST(CoxModel, NamesACovariateThatSeparates) {
  EXPECT_NE(refusal(small({9, 8, 7, 1, 5, 4})).find("\"x\" separates the events"),
            std::string::npos);
  EXPECT_NE(refusal(small({1, 2, 3, 9, 5, 6})).find("smallest"), std::string::npos);
  EXPECT_EQ(refusal(small({9, 8, 1, 7, 5, 4})), "");
}

TEST(CoxModel, MoreCovariatesThanEventsAreFittedWhereThereIsAMaximum) {
  // The one event stands in the middle of the other four at risk: by symmetry both coefficients
  // are 0. Each covariate's variance over the five at risk is 2/5, the covariance is 0.
  Data data;
  data.time = {1, 2, 3, 4, 5};
  data.event = {1, 0, 0, 0, 0};
  data.x = {{"x", {0, 1, -1, 0, 0}}, {"y", {0, 0, 0, 1, -1}}};
  const CoxModel model = survmeth::coxModel(data.request());
  ASSERT_EQ(model.coefficients.size(), 2u);
  for (const survmeth::CoxCoefficient& c : model.coefficients) {
    EXPECT_NEAR(c.coef, 0, 1e-12);                 // a sum of five terms of size 1
    EXPECT_NEAR(c.se / std::sqrt(2.5), 1, 1e-12);  // likewise, relative
  }
  EXPECT_NEAR(model.logLik / -std::log(5), 1, 1e-12);
}

TEST(CoxModel, ListsAConstantCovariateWithoutCoefficientAndFitsTheOthers) {
  Data data = small({1, 5, 2, 6, 3, 4});
  data.x.push_back({"y", {2, 1, 1, 3, 1, 2}});
  CoxRequest alone = data.request();
  alone.baseline = alone.residuals = true;
  const CoxModel without = survmeth::coxModel(alone);
  Data more = data;
  more.x.insert(more.x.begin(), {"first", {7, 7, 7, 7, 7, 7}});
  more.x.insert(more.x.begin() + 2, {"middle", {0, 0, 0, 0, 0, 0}});
  CoxRequest request = more.request();
  request.baseline = request.residuals = true;
  const CoxModel with = survmeth::coxModel(request);

  ASSERT_EQ(with.coefficients.size(), 4u);
  ASSERT_EQ(with.centre.size(), 4u);
  ASSERT_EQ(with.schoenfeld.size(), 4u);
  const std::vector<std::string> names = {"first", "x", "middle", "y"};
  for (std::size_t j = 0; j < 4; ++j) {
    const survmeth::CoxCoefficient& c = with.coefficients[j];
    EXPECT_EQ(c.name, names[j]);
    EXPECT_EQ(c.constant, j % 2 == 0);
    if (!c.constant) continue;
    for (const double value : {c.coef, c.se, c.z, c.p, c.hazardRatio, c.lower, c.upper}) {
      EXPECT_TRUE(std::isnan(value));
    }
    EXPECT_TRUE(std::isnan(with.centre[j]));
    for (const double residual : with.schoenfeld[j]) EXPECT_TRUE(std::isnan(residual));
  }
  for (std::size_t j = 0; j < 2; ++j) {
    EXPECT_EQ(with.coefficients[2 * j + 1].coef, without.coefficients[j].coef);
    EXPECT_EQ(with.coefficients[2 * j + 1].se, without.coefficients[j].se);
    EXPECT_EQ(with.centre[2 * j + 1], without.centre[j]);
    for (std::size_t i = 0; i < 6; ++i) {
      if (data.event[i] == 0) continue;
      EXPECT_EQ(with.schoenfeld[2 * j + 1][i], without.schoenfeld[j][i]);
    }
  }
  EXPECT_EQ(with.likelihoodRatio.degreesOfFreedom, 2);
  EXPECT_EQ(with.martingale, without.martingale);
}

TEST(CoxModel, ConstantCovariatesKeepTheirPlaceAmongThoseLeftByRemoval) {
  Data data = small({1, 5, 2, 6, 3, 4});
  data.x.push_back({"c", {1, 1, 1, 1, 1, 1}});
  data.x.push_back({"y", {2, 1, 1, 3, 1, 2}});
  CoxRequest request = data.request();
  request.removeAt = 1e-9;
  const CoxModel model = survmeth::coxModel(request);
  ASSERT_EQ(model.removed.size(), 1u);
  ASSERT_EQ(model.coefficients.size(), 2u);
  EXPECT_EQ(model.coefficients[0].constant, model.removed[0].name == "x");
  EXPECT_EQ(model.coefficients[1].constant, model.removed[0].name == "y");
}

TEST(CoxModel, NamesAnEstimateThatRunsAwayInCombination) {
  // Neither covariate separates alone; x + y does: the largest sum fails first.
  Data data;
  data.time = {1, 2, 3, 4, 5, 6, 7};
  data.event = {1, 1, 1, 1, 1, 1, 1};
  data.x = {{"x", {6, 1, 5, 0, 3, 2, 1}}, {"y", {1, 5, 0, 4, 0, 0, 0}}};
  EXPECT_NE(refusal(data), "");
}

TEST(CoxModel, RefusesWhatIsNotARequest) {
  Data data = small({1, 5, 2, 6, 3, 4});
  CoxRequest request = data.request();
  request.covariates.clear();
  EXPECT_THROW(survmeth::coxModel(request), InvalidRequest);
  data.event.assign(6, 0);
  EXPECT_THROW(survmeth::coxModel(data.request()), InvalidRequest);
  data.event.pop_back();
  EXPECT_THROW(survmeth::coxModel(data.request()), InvalidRequest);
}

// Pairs counted one by one.
double literalConcordance(const survmeth::CoxRows& rows, const std::vector<double>& score) {
  double good = 0, pairs = 0;
  for (std::size_t s = 0; s + 1 < rows.starts.size(); ++s) {
    for (std::size_t i = rows.starts[s]; i < rows.starts[s + 1]; ++i) {
      for (std::size_t j = rows.starts[s]; j < rows.starts[s + 1]; ++j) {
        const bool outlived =
            rows.time[j] > rows.time[i] || (rows.time[j] == rows.time[i] && rows.event[j] == 0);
        if (rows.event[i] == 0 || !outlived) continue;
        pairs += 1;
        good += score[j] < score[i] ? 1 : score[j] == score[i] ? 0.5 : 0;
      }
    }
  }
  return good / pairs;
}

TEST(Concordance, CountsPairsWithinStrata) {
  unsigned state = 5;
  const auto random = [&state](unsigned bound) {
    return (state = state * 1664525 + 1013904223) / 7 % bound;
  };
  for (int trial = 0; trial < 200; ++trial) {
    survmeth::CoxRows rows;
    rows.starts = {0, 7, 7 + static_cast<std::size_t>(random(9)) + 2};
    std::vector<double> score;
    for (std::size_t s = 0; s < 2; ++s) {
      double time = 0;
      for (std::size_t i = rows.starts[s]; i < rows.starts[s + 1]; ++i) {
        rows.time.push_back(time += random(3));
        rows.event.push_back(random(3) > 0);
        score.push_back(random(4));
      }
    }
    const double expected = literalConcordance(rows, score);
    if (std::isnan(expected)) continue;
    EXPECT_EQ(survmeth::concordance(rows, score), expected);
  }
}

TEST(Concordance, WithoutAPairIsNotANumber) {
  survmeth::CoxRows rows;
  rows.starts = {0, 2};
  rows.time = {1, 1};
  rows.event = {1, 1};
  EXPECT_TRUE(std::isnan(survmeth::concordance(rows, {1, 2})));
}

}  // namespace
