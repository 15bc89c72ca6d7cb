// The facade's Cox regression: R's numbers, and a word for every model that does not exist.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "analysis/coxChecks.h"
#include "analysis/coxModel.h"
#include "tests/support/csv.h"
#include "tests/support/role.h"

namespace {

using survmeth::CoxModel;
using survmeth::CoxRequest;
using survmeth::NoSuchModel;
using survmeth::engine::Refusal;
using survmeth::test::Csv;

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
  const Csv csv(SURVMETH_DATA "/lung.csv");
  Data data;
  data.x = {{"age", {}}, {"male", {}}, {"ph.ecog", {}}};
  for (std::size_t i = 0; i < csv.rows(); ++i) {
    if (csv.text("ph.ecog", i).empty()) continue;
    data.time.push_back(csv.number("time", i));
    data.event.push_back(csv.text("status", i) == "1");
    data.x[0].second.push_back(csv.number("age", i));
    data.x[1].second.push_back(csv.text("sex", i) == "male");
    data.x[2].second.push_back(csv.number("ph.ecog", i));
  }
  return data;
}

Data veteran() {
  const Csv csv(SURVMETH_DATA "/veteran.csv");
  Data data;
  data.time = csv.numbers("time");
  for (const std::string& cell : csv.texts("status")) data.event.push_back(cell == "1");
  for (const char* name : {"karno", "age", "diagtime"}) {
    data.x.emplace_back(name, csv.numbers(name));
  }
  const std::vector<std::string> cells = {"squamous", "smallcell", "adeno", "large"};
  for (const std::string& cell : csv.texts("celltype")) {
    data.stratum.push_back(
        static_cast<std::uint32_t>(std::find(cells.begin(), cells.end(), cell) - cells.begin()));
  }
  data.strata = 4;
  return data;
}

// Relative: both programs iterate until nothing moves beyond about 1e-9 of an estimate.
void expectNear(double value, double reference) {
  EXPECT_NEAR(value, reference, 1e-8 * std::fabs(reference));
}

// Of residuals, which are differences of numbers around 1.
void expectResidual(double value, double reference) { EXPECT_NEAR(value, reference, 1e-8); }

void expectReference(const CoxModel& model, const std::string& name) {
  const std::string base = SURVMETH_REFERENCE "/cox_" + name;
  const Csv coefficients(base + "_coefficients.csv");
  ASSERT_EQ(model.coefficients.size(), coefficients.rows());
  for (std::size_t j = 0; j < model.coefficients.size(); ++j) {
    const survmeth::CoxCoefficient& c = model.coefficients[j];
    EXPECT_EQ(c.name, coefficients.text("term", j));
    expectNear(c.coef, coefficients.number("coef", j));
    expectNear(c.se, coefficients.number("se", j));
    expectNear(c.z * c.z, coefficients.number("wald.chisq", j));
    expectNear(c.hazardRatio, coefficients.number("hazard.ratio", j));
    expectNear(c.lower, coefficients.number("lower95", j));
    expectNear(c.upper, coefficients.number("upper95", j));
  }
  const Csv fit(base + "_fit.csv");
  expectNear(model.logLikNull, fit.number("loglik.null", 0));
  expectNear(model.logLik, fit.number("loglik", 0));
  expectNear(model.likelihoodRatio.chiSquare, fit.number("lr", 0));
  expectNear(model.score.chiSquare, fit.number("score", 0));
  expectNear(model.wald.chiSquare, fit.number("wald", 0));
  EXPECT_EQ(model.n, fit.number("n", 0));
  EXPECT_EQ(model.events, fit.number("events", 0));
  const Csv residuals(base + "_residuals.csv");
  ASSERT_EQ(model.martingale.size(), residuals.rows());
  for (std::size_t i = 0; i < model.n; ++i) {
    expectResidual(model.martingale[i], residuals.number("martingale", i));
    expectResidual(model.deviance[i], residuals.number("deviance", i));
  }
}

TEST(CoxModel, LungMatchesTheReference) {
  const Data data = lung();
  CoxRequest request = data.request();
  request.residuals = true;
  expectReference(survmeth::coxModel(request), "lung");
}

TEST(CoxModel, TheBaselineIsTheReferencesMovedToTheMeans) {
  const Data data = lung();
  CoxRequest request = data.request();
  request.baseline = true;
  const CoxModel model = survmeth::coxModel(request);
  // The reference's holds at covariates of 0; its own coefficients take it to the means.
  const Csv coefficients(SURVMETH_REFERENCE "/cox_lung_coefficients.csv");
  double shift = 0;
  for (std::size_t j = 0; j < 3; ++j) {
    double sum = 0;
    for (const double value : data.x[j].second) sum += value;
    const double mean = sum / static_cast<double>(data.time.size());
    expectNear(model.centre[j], mean);
    shift += coefficients.number("coef", j) * mean;
  }
  const Csv baseline(SURVMETH_REFERENCE "/cox_lung_baseline_hazard.csv");
  ASSERT_EQ(model.baseline.size(), 1u);
  ASSERT_EQ(model.baseline[0].time.size(), baseline.rows());
  for (std::size_t k = 0; k < baseline.rows(); ++k) {
    EXPECT_EQ(model.baseline[0].time[k], baseline.number("time", k));
    const double expected = baseline.number("hazard", k) * std::exp(shift);
    expectNear(model.baseline[0].cumulativeHazard[k], expected);
    expectNear(model.baseline[0].survival[k], std::exp(-expected));
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
  EXPECT_EQ(refusal(data),
            "the covariate \"z\" follows exactly from \"x\" and \"y\"; leave out one of them");
}

TEST(CoxModel, NamesOnlyTheCovariatesThatAnotherFollowsFrom) {
  Data data = small({1, 5, 2, 6, 3, 4});
  data.event.assign(6, 1);
  data.x.push_back({"y", {2, 1, 1, 3, 1, 2}});
  data.x.push_back({"twice x", {2, 10, 4, 12, 6, 8}});
  EXPECT_EQ(refusal(data),
            "the covariate \"twice x\" follows exactly from \"x\"; leave out one of them");
  data.x.push_back({"minus y", {-2, -1, -1, -3, -1, -2}});
  EXPECT_EQ(refusal(data),
            "the covariate \"twice x\" follows exactly from \"x\", and \"minus y\" from \"y\"; "
            "leave out one of each");
}

TEST(CoxModel, HugeTinyAndRemoteCovariatesAreFittedLikeOthers) {
  const std::vector<double> x = {9, 8, 1, 7, 5, 4};
  const CoxModel model = survmeth::coxModel(small(x).request());
  // The steps end where the log-likelihood, about 7, stands still in its last digit, 1e-15: that
  // settles the estimate to some 1e-8 of its error, and how far inside that it ends is chance.
  constexpr double close = 1e-8;
  for (const double unit : {1e-300, 1e-200, 1e200, 1e300}) {
    std::vector<double> scaled = x;
    for (double& value : scaled) value *= unit;
    const CoxModel other = survmeth::coxModel(small(scaled).request());
    // The same standardized column but for rounding.
    EXPECT_NEAR(other.coefficients[0].z, model.coefficients[0].z, close);
    EXPECT_NEAR(other.coefficients[0].coef * unit, model.coefficients[0].coef, close);
    EXPECT_NEAR(other.logLik, model.logLik, close);
  }
  std::vector<double> remote = x;
  for (double& value : remote) value += 1e14;  // exact
  const CoxModel other = survmeth::coxModel(small(remote).request());
  EXPECT_NEAR(other.coefficients[0].coef, model.coefficients[0].coef, close);
  EXPECT_NEAR(other.logLik, model.logLik, close);
}

TEST(CoxModel, NamesHugeAndTinyCovariatesForWhatTheyAre) {
  EXPECT_EQ(refusal(small(std::vector<double>(6, 1e200))), "the covariate \"x\" does not vary");
  EXPECT_EQ(refusal(small(std::vector<double>(6, 0.1))), "the covariate \"x\" does not vary");
  Data data = small({1e200, 5e200, 2e200, 6e200, 3e200, 4e200});
  data.x.push_back({"y", {1e-200, 5e-200, 2e-200, 6e-200, 3e-200, 4e-200}});
  EXPECT_EQ(refusal(data), "the covariate \"y\" follows exactly from \"x\"; leave out one of them");
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
  Data data = small({1, 0, 1, 0, 0, 0});
  data.event.assign(6, 1);
  data.x.push_back({"y", {0, 1, 0, 0, 0, 0}});
  EXPECT_EQ(
      refusal(data),
      "the estimate of \"x\" runs away: a combination of the covariates separates the events");
}

TEST(CoxModel, SaysWhenTheIterationsDoNotConverge) {
  // Separated by x + y like the above, with a likelihood that goes on rising for longer.
  Data data;
  data.time = {1, 2, 3, 4, 5, 6, 7};
  data.event = {1, 1, 1, 1, 1, 1, 1};
  data.x = {{"x", {6, 1, 5, 0, 3, 2, 1}}, {"y", {1, 5, 0, 4, 0, 0, 0}}};
  EXPECT_EQ(refusal(data), "no convergence in 60 iterations");
}

// What the refusal of a changed request says, its member first.
std::string refused(const std::function<void(CoxRequest&)>& change) {
  const Data data = small({1, 5, 2, 6, 3, 4});
  CoxRequest request = data.request();
  change(request);
  try {
    survmeth::coxModel(request);
  } catch (const Refusal& invalid) {
    return nameOf(invalid.role()) + ": " + invalid.what();
  }
  return "";
}

TEST(CoxModel, RefusesWhatIsNotARequest) {
  const std::vector<std::uint8_t> noEvent(6, 0);
  const std::vector<double> five(5, 1);
  EXPECT_EQ(refused([](CoxRequest&) {}), "");
  EXPECT_EQ(refused([](CoxRequest& r) { r.covariates.clear(); }), "covariates: no covariate");
  EXPECT_EQ(refused([&](CoxRequest& r) { r.event = noEvent; }), "event: no row is an event");
  EXPECT_EQ(refused([&](CoxRequest& r) { r.event = r.event.first(5); }),
            "event: as many events as times are needed");
  EXPECT_EQ(refused([&](CoxRequest& r) { r.covariates[0].values = five; }),
            "covariates: as many values as times are needed");
  EXPECT_EQ(refused([](CoxRequest& r) { r.time = r.time.first(1); }), "time: fewer than two rows");
}

std::string requestRefusal(const CoxRequest& request) {
  try {
    survmeth::coxModel(request);
  } catch (const Refusal& refused) {
    return nameOf(refused.role()) + ": " + refused.what();
  }
  return "";
}

TEST(CoxModel, RefusesValuesAndCodesOutOfRange) {
  Data data = small({1, 5, 2, 6, 3, 4});
  data.stratum = {0, 0, 0, 1, 1, 2};
  data.strata = 2;
  EXPECT_EQ(requestRefusal(data.request()), "stratum: a stratum code is out of range");
  data.strata = 3;
  EXPECT_EQ(requestRefusal(data.request()), "");
  data.x[0].second[2] = NAN;
  EXPECT_EQ(requestRefusal(data.request()), "covariates: a value is not finite");
  data.x[0].second[2] = 2;
  data.time[5] = INFINITY;
  EXPECT_EQ(requestRefusal(data.request()), "time: a value is not finite");
  data.time[5] = 6;
  CoxRequest request = data.request();
  request.alpha = 1;
  EXPECT_EQ(requestRefusal(request), "alpha: the significance level is not between 0 and 1");
  request.alpha = 0.05;
  request.removeAt = NAN;
  EXPECT_EQ(requestRefusal(request), "removeAt: the p-value for removal is not between 0 and 1");
}

TEST(CoxModel, FitsTwentyThousandMatchedPairs) {
  // With one event in each pair, the earlier row, the likelihood is that of conditional logistic
  // regression: the estimate is log(n10 / n01), its error sqrt(1 / n10 + 1 / n01), by the pairs in
  // which only the event, or only the other row, is exposed (Breslow & Day 1980, 7.2).
  constexpr std::size_t kPairs = 20000, kExposedEvents = 8000, kExposedOthers = 4000;
  Data data;
  data.x = {{"exposed", {}}};
  for (std::size_t i = 0; i < kPairs; ++i) {
    const bool first = i < kExposedEvents;
    const bool second = !first && i < kExposedEvents + kExposedOthers;
    for (const bool event : {true, false}) {
      data.time.push_back(event ? 1 : 2);
      data.event.push_back(event ? 1 : 0);
      data.stratum.push_back(static_cast<std::uint32_t>(i));
      data.x[0].second.push_back((event ? first : second) ? 1 : 0);
    }
  }
  data.strata = kPairs;
  const CoxModel model = survmeth::coxModel(data.request());
  // The log-likelihood, about 1e4, is known to some 1e-12; its second derivative, 2667, turns that
  // into sqrt(2 1e-12 / 2667) = 3e-8 of the estimate.
  EXPECT_NEAR(model.coefficients[0].coef, std::log(2.0), 1e-7);
  EXPECT_NEAR(model.coefficients[0].se, std::sqrt(1 / 8000.0 + 1 / 4000.0), 1e-9);
}

TEST(CoxModel, RefusesTooManyStrataForSoManyTimes) {
  // 6,001 strata, one of them with 6,000 distinct times: more than 2^25 cells.
  Data data;
  data.x = {{"x", {}}};
  for (std::uint32_t i = 0; i < 12000; ++i) {
    data.time.push_back(i);
    data.event.push_back(1);
    data.stratum.push_back(i < 6000 ? 0 : i - 5999);
    data.x[0].second.push_back(i % 7);
  }
  data.strata = 6001;
  EXPECT_EQ(requestRefusal(data.request()),
            "stratum: there are too many strata for so many distinct times in one of them");
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
