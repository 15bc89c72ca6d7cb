// Fits of the reference data sets, and all that follows from a fit.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "engine/cox/baseline.h"
#include "engine/cox/concordance.h"
#include "engine/cox/fit.h"
#include "engine/cox/profile.h"
#include "engine/cox/proportionality.h"
#include "engine/cox/residuals.h"
#include "tests/bits/results.h"
#include "tests/bits/sequence.h"
#include "tests/engine/cox/data.h"

namespace survmeth::test {
namespace {

using engine::cox::ChiSquareTest;
using engine::cox::Fit;
using engine::cox::Ties;

// Results of one fit under a common name.
class Taken {
 public:
  Taken(const TakeNumbers& take, std::string name) : take_(take), name_(std::move(name)) {}

  void numbers(const char* what, const std::vector<double>& values) const {
    take_(name_ + ", " + what, values);
  }
  void matrix(const char* what, const numerics::SquareMatrix& values) const {
    std::vector<double> cells;
    for (std::size_t i = 0; i < values.size(); ++i) {
      for (std::size_t j = 0; j < values.size(); ++j) cells.push_back(values(i, j));
    }
    numbers(what, cells);
  }
  void columns(const char* what, const std::vector<std::vector<double>>& values) const {
    std::vector<double> cells;
    for (const auto& column : values) cells.insert(cells.end(), column.begin(), column.end());
    numbers(what, cells);
  }
  void test(const char* what, const ChiSquareTest& test) const {
    numbers(what, {test.chiSquare, test.pValue});
  }

 private:
  const TakeNumbers& take_;
  std::string name_;
};

void takeFit(const Taken& taken, const Fit& fit) {
  taken.numbers("coefficients", fit.coefficients);
  taken.matrix("covariance", fit.covariance);
  taken.matrix("robust covariance", fit.robustCovariance);
  taken.numbers("likelihoods", {fit.logLikelihoodNull, fit.logLikelihood, fit.aic, fit.bic,
                                fit.decrement, static_cast<double>(fit.iterations)});
  taken.test("likelihood ratio", fit.likelihoodRatio);
  taken.test("score", fit.score);
  taken.test("Wald", fit.wald);
  taken.test("robust score", fit.robustScore);
  const engine::cox::Concordance agreement = engine::cox::concordance(fit);
  taken.numbers("concordance", {agreement.concordant, agreement.discordant, agreement.tiedScore,
                                agreement.tiedTime, agreement.tiedBoth, agreement.estimate,
                                agreement.standardError});
}

void takeResiduals(const Taken& taken, const Fit& fit) {
  taken.numbers("martingale", engine::cox::martingaleResiduals(fit, {}));
  taken.numbers("deviance", engine::cox::devianceResiduals(fit, {}));
  taken.columns("score residuals", engine::cox::scoreResiduals(fit, {.weighted = true}));
  taken.columns("dfbeta", engine::cox::dfbetaResiduals(fit, {}));
  taken.columns("dfbetas", engine::cox::dfbetasResiduals(fit, {}));
  taken.columns("Schoenfeld", engine::cox::schoenfeldResiduals(fit, false).column);
}

void takeProportionality(const Taken& taken, const Fit& fit) {
  using engine::cox::TimeTransform;
  for (const TimeTransform transform :
       {TimeTransform::kKaplanMeier, TimeTransform::kRank, TimeTransform::kIdentity}) {
    const auto test = engine::cox::testProportionality(fit, transform);
    const std::string number = std::to_string(static_cast<int>(transform));
    taken.test(("proportionality " + number).c_str(), test.global);
    std::vector<double> terms = test.transformed;
    for (const auto& term : test.terms) terms.push_back(term.test.chiSquare);
    taken.numbers(("terms of proportionality " + number).c_str(), terms);
    taken.columns(("scaled residuals " + number).c_str(), test.scaled.column);
  }
}

void takeHazards(const Taken& taken, const Fit& fit, std::size_t columns) {
  const engine::cox::BaselineHazard baseline(fit);
  const std::vector<double> zeros(columns, 0.0);
  for (const std::uint32_t stratum : baseline.strata()) {
    if (stratum > 20) break;  // matched sets are many and alike
    const auto hazard = baseline.at(zeros, 0.0, stratum);
    const std::string number = std::to_string(stratum);
    taken.numbers(("hazard " + number).c_str(), hazard.hazard);
    taken.numbers(("error of hazard " + number).c_str(), hazard.standardError);
  }
}

// Where the exact treatments can be afforded: time grows with the ties.
bool isSmall(const CoxData& data) { return data.exit.size() < 250 && data.entry.empty(); }

void takeCase(const TakeNumbers& take, const CoxCase& one) {
  const bool plain = one.data.weight.empty() && one.data.cluster.empty();
  for (const Ties ties : {Ties::kEfron, Ties::kBreslow, Ties::kDiscrete, Ties::kMarginal}) {
    const bool exact = ties == Ties::kDiscrete || ties == Ties::kMarginal;
    if (exact && !(plain && isSmall(one.data))) continue;
    engine::cox::Options options = one.options;
    options.ties = ties;
    options.robust = !exact;
    const Fit fit = one.data.fit(options);
    const Taken taken(take, one.name + ", ties " + std::to_string(static_cast<int>(ties)));
    takeFit(taken, fit);
    if (exact) continue;
    takeResiduals(taken, fit);
    takeProportionality(taken, fit);
    takeHazards(taken, fit, one.data.columns.size());
    if (isSmall(one.data)) {
      numerics::Progress progress;
      const auto held =
          profileOf(fit, 0, progress)->at(fit.working[0] + 2 * std::sqrt(fit.covariance(0, 0)));
      taken.numbers("profile", {held.logLikelihood, held.slope});
    }
  }
}

}  // namespace

// A fit of so many rows that several threads take part in it.
void takeLarge(const TakeNumbers& take) {
  Sequence sequence(31);
  CoxData data;
  data.columns.assign(3, {});
  data.strata = 3;
  for (int i = 0; i < 50000; ++i) {
    for (auto& column : data.columns) column.push_back(sequence.share() - 0.5);
    const double exit = 0.01 + sequence.share() * (1.0 + data.columns[0].back());
    data.exit.push_back(exit);
    data.entry.push_back(exit * 0.5 * sequence.share());
    data.event.push_back(sequence.share() < 0.6 ? 1 : 0);
    data.stratum.push_back(static_cast<std::uint32_t>(3.0 * sequence.share()));
  }
  const Fit fit = data.fit({.robust = true});
  const Taken taken(take, "many rows");
  takeFit(taken, fit);
  taken.numbers("martingale", engine::cox::martingaleResiduals(fit, {}));
}

// Cases that differ in their treatment of ties alone count once: each is taken by all.
void coxResults(const TakeNumbers& take) {
  const Csv cases(std::string(SURVMETH_REFERENCE) + "/cox/cases.csv");
  std::set<std::string> seen;
  for (std::size_t at = 0; at < cases.rows(); ++at) {
    std::string model;
    for (const char* part : {"data", "columns", "strata", "cluster", "weight", "offset"}) {
      model += cases.text(part, at) + "|";
    }
    if (seen.insert(model).second) takeCase(take, coxCase(cases, at));
  }
  takeLarge(take);
}

}  // namespace survmeth::test
