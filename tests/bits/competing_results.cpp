// Competing events and states of the reference data sets: incidences with errors and limits, Gray's
// tests, regressions of subdistribution hazards, probabilities of states.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "engine/finegray/fit.h"
#include "engine/incidence/curve.h"
#include "engine/incidence/gray.h"
#include "engine/incidence/lost.h"
#include "engine/states/estimate.h"
#include "tests/bits/numbers.h"
#include "tests/bits/results.h"
#include "tests/engine/incidence/data.h"

namespace survmeth::test {
namespace {

namespace finegray = engine::finegray;
namespace incidence = engine::incidence;
namespace states = engine::states;

const std::string& folder() {
  static const std::string path = std::string(SURVMETH_REFERENCE) + "/incidence/";
  return path;
}

void takeCurves(const TakeNumbers& take, const std::string& name, const CauseData& data,
                incidence::Variance asked, double horizon) {
  const incidence::Causes sorted = data.sorted();
  const engine::Rows rows = data.rows();
  const incidence::Variance variance = incidence::varianceFor(rows, asked);
  const std::vector<incidence::Curve> curves = incidence::estimate(sorted, rows, variance);
  constexpr double kNormal = 1.96;
  for (std::size_t cause = 0; cause < sorted.causes(); ++cause) {
    Numbers all;
    for (const incidence::Curve& curve : curves) {
      if (curve.time.empty()) continue;
      const incidence::CauseCurve& one = curve.causes[cause];
      append(all, one.incidence);
      append(all, one.variance);
      append(all, one.hazard);
      append(all, one.hazardVariance);
      append(all, curve.survival);
      append(all, incidence::kaplanMeierComplement(curve, cause));
      for (const auto scale : {engine::curves::Scale::kPlain, engine::curves::Scale::kLog,
                               engine::curves::Scale::kLogLog, engine::curves::Scale::kArcsine}) {
        const Numbers times = {horizon * 0.2, horizon * 0.7};
        for (const auto& read : incidence::readings(curve, cause, times, kNormal, scale)) {
          append(all, {read.incidence, read.standardError, read.lower, read.upper});
        }
      }
    }
    for (const auto& lost :
         incidence::timesLost(sorted, rows, curves, cause, variance, horizon, 0.9)) {
      append(all, {lost.lost, lost.standardError, lost.lower, lost.upper});
    }
    take(name + ", cause " + std::to_string(cause + 1), all);
  }
}

void takeGray(const TakeNumbers& take, const std::string& name, const CauseData& data) {
  if (!data.entry.empty() || !data.cluster.empty() || data.groupCount < 2) return;
  Numbers all;
  for (const double rho : {0.0, -0.5, 1.0}) {
    for (std::uint32_t cause = 1; cause <= data.causes; ++cause) {
      const incidence::GrayOptions options = {cause, rho, 0.0};
      const auto test = incidence::grayTest(data.response(), data.rows(), data.groups(), options);
      append(all, {test.chiSquare, test.degreesOfFreedom, test.pValue});
      for (const auto& pair : incidence::grayPairs(data.response(), data.rows(), data.groups(),
                                                   options, engine::curves::Adjustment::kHolm)) {
        append(all, {pair.chiSquare, pair.pValue, pair.adjusted});
      }
    }
  }
  take(name + ", Gray", all);
}

struct Covariates {
  explicit Covariates(const std::string& data) {
    const Csv file(folder() + "data/" + data + ".csv");
    for (const std::string& name : file.names()) {
      if (name[0] == 'x') columns.push_back(file.numbers(name));
    }
    for (const Numbers& column : columns) {
      design.term.push_back(design.columns.size());
      design.columns.emplace_back(column);
      design.names.push_back("x" + std::to_string(design.columns.size()));
      design.termNames.push_back(design.names.back());
    }
  }
  Covariates(const Covariates&) = delete;
  Covariates& operator=(const Covariates&) = delete;

  std::vector<Numbers> columns;
  engine::Design design;
};

void takeFit(const TakeNumbers& take, const Csv& cases, std::size_t at) {
  const auto text = [&](const char* column) { return cases.text(column, at); };
  const CauseData data =
      causeData(text("data"), "", text("weight"), text("cluster"), text("strata"));
  const Covariates covariates(text("data"));
  std::vector<std::uint32_t> censoring;
  std::size_t groups = 1;
  if (const std::string name = text("censoring"); !name.empty()) {
    censoring = codesOf(Csv(folder() + "data/" + text("data") + ".csv").numbers(name), groups);
  }
  finegray::Options options;
  options.cause = static_cast<std::uint32_t>(cases.number("cause", at));
  numerics::Progress progress;
  const finegray::Fit fit = finegray::fit(data.response(), data.rows(), covariates.design,
                                          {censoring, groups}, options, progress);
  Numbers all = fit.coefficients;
  appendCells(all, fit.covariance);
  appendCells(all, fit.inverseInformation);
  append(all, {fit.logLikelihoodNull, fit.logLikelihood, fit.wald.chiSquare, fit.wald.pValue,
               static_cast<double>(fit.iterations)});
  for (const Numbers& column : finegray::schoenfeld(fit)) append(all, column);
  take(text("case") + ", fit", all);
}

void takeStates(const TakeNumbers& take) {
  const Csv file(folder() + "states_data.csv");
  std::map<std::string, std::vector<std::size_t>> sets;
  for (std::size_t i = 0; i < file.rows(); ++i) sets[file.text("set", i)].push_back(i);
  for (const auto& [name, rows] : sets) {
    Numbers entry, exit;
    std::vector<std::uint32_t> from, to;
    states::Histories histories;
    double last = 0.0;
    for (const std::size_t i : rows) {
      entry.push_back(file.number("entry", i));
      exit.push_back(file.number("exit", i));
      last = std::max(last, exit.back());
      from.push_back(static_cast<std::uint32_t>(file.number("from", i)) - 1);
      const auto next = static_cast<std::uint32_t>(file.number("to", i));
      to.push_back(next == 0 ? states::kNowhere : next - 1);
      for (const std::uint32_t state : {from.back() + 1, next}) {
        histories.states = std::max<std::size_t>(histories.states, state);
      }
    }
    histories.entry = entry;
    histories.exit = exit;
    histories.from = from;
    histories.to = to;
    states::Options options;
    options.horizon = last * 0.8;
    const states::Estimates estimates = states::estimate(histories, options);
    Numbers all;
    for (const states::State& state : estimates.states) {
      append(all, state.probability);
      append(all, state.variance);
    }
    for (const states::Transition& transition : estimates.transitions) {
      append(all, transition.hazard);
      append(all, transition.hazardVariance);
    }
    for (const states::Stay& stay : estimates.stays) append(all, {stay.time, stay.standardError});
    take(name + ", states", all);
  }
}

}  // namespace

void competingResults(const TakeNumbers& take) {
  const Csv cases(folder() + "cases.csv");
  for (std::size_t at = 0; at < cases.rows(); ++at) {
    const std::string variance = cases.text("variance", at);
    const CauseData data = causeData(cases.text("data", at), cases.text("group", at),
                                     cases.text("weight", at), cases.text("cluster", at));
    takeCurves(take, cases.text("case", at), data,
               variance == "aalen"   ? incidence::Variance::kAalen
               : variance == "delta" ? incidence::Variance::kDelta
                                     : incidence::Variance::kRobust,
               cases.number("tau", at));
    takeGray(take, cases.text("case", at), data);
  }
  const Csv fits(folder() + "finegray_cases.csv");
  for (std::size_t at = 0; at < fits.rows(); ++at) takeFit(take, fits, at);
  takeStates(take);
}

}  // namespace survmeth::test
