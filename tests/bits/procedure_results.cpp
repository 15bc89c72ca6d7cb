// Penalised fits of the reference data sets, their profiles, predictions and bootstrap.
#include <cstddef>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "engine/cox/baseline.h"
#include "engine/cox/penalised.h"
#include "engine/cox/profile.h"
#include "procedures/bootstrap.h"
#include "tests/bits/numbers.h"
#include "tests/bits/results.h"
#include "tests/engine/cox/data.h"

namespace survmeth::test {
namespace {

namespace cox = engine::cox;

void takePenalised(const TakeNumbers& take, const CoxCase& one) {
  engine::Rows rows = one.data.rows();
  rows.cluster = {};
  rows.clusters = 0;
  rows.weightKind = engine::WeightKind::kFrequencies;
  cox::Options options;
  options.ties = one.options.ties;
  options.dropAliased = true;
  numerics::Progress progress;
  const auto fitted = [&](const cox::Penalty& penalty) {
    return cox::fitPenalised(one.data.response(), rows, one.data.design(), options, penalty,
                             progress);
  };
  const auto takeFit = [&](const char* what, const cox::PenalisedFit& made) {
    Numbers all = made.fit.coefficients;
    appendCells(all, made.fit.covariance);
    append(all, {made.logLikelihood, made.logLikelihoodNull, made.fit.logLikelihood,
                 made.effectiveDegrees, made.chiSquare, made.pValue});
    take(one.name + what, all);
  };
  if (one.options.ties != cox::Ties::kDiscrete && one.data.exit.size() < 2000) {
    const cox::PenalisedFit firth = fitted({});
    takeFit(", determinant", firth);
    const auto profile = cox::profileOf(firth, 0, progress);
    const double step = firth.fit.standardError(0);
    for (const double away : {-1.5, 0.25}) {
      const cox::Held held = profile->at(firth.fit.coefficients[0] + away * step);
      take(one.name + ", penalised profile " + (away < 0.0 ? "below" : "above"),
           Numbers{held.logLikelihood, held.slope});
    }
  }
  if (one.options.ties != cox::Ties::kDiscrete) {
    takeFit(", ridge", fitted({cox::Penalty::Kind::kRidge, 3.0}));
  }
}

void takePredictions(const TakeNumbers& take, const CoxCase& one) {
  if (one.options.ties == cox::Ties::kDiscrete) return;
  const cox::Fit fit = one.data.fit(one.options);
  if (!fit.converged) return;
  const cox::BaselineHazard baseline(fit);
  Numbers all;
  for (const std::size_t row : {std::size_t{0}, one.data.exit.size() / 2}) {
    Numbers x;
    for (const Numbers& column : one.data.columns) x.push_back(column[row]);
    const std::uint32_t stratum = one.data.stratum.empty() ? 0 : one.data.stratum[row];
    const cox::CumulativeHazard curve = baseline.at(x, 0.0, stratum);
    append(all, curve.hazard);
    append(all, curve.standardError);
    cox::Stay stay;
    stay.x = x;
    stay.stratum = stratum;
    const cox::HazardValue expected = baseline.over({&stay, 1});
    append(all, {expected.hazard, expected.standardError});
  }
  take(one.name + ", predictions", all);
}

// The coefficients of a replicate's rows.
Numbers refitted(const CoxData& data, std::span<const std::uint32_t> units) {
  CoxData drawn = data;
  for (Numbers* column : {&drawn.entry, &drawn.exit, &drawn.weight, &drawn.offset}) {
    if (column->empty()) continue;
    const Numbers all = *column;
    for (std::size_t i = 0; i < units.size(); ++i) (*column)[i] = all[units[i]];
  }
  for (std::size_t j = 0; j < drawn.columns.size(); ++j) {
    for (std::size_t i = 0; i < units.size(); ++i) {
      drawn.columns[j][i] = data.columns[j][units[i]];
    }
  }
  for (auto* codes : {&drawn.event, &drawn.stratum}) {
    if (codes->empty()) continue;
    const std::vector<std::uint32_t> all = *codes;
    for (std::size_t i = 0; i < units.size(); ++i) (*codes)[i] = all[units[i]];
  }
  const cox::Fit fit = drawn.fit();
  return fit.converged ? fit.coefficients : Numbers{};
}

void takeBootstrap(const TakeNumbers& take, const CoxCase& one) {
  CoxData data = one.data;
  data.cluster = {};
  data.clusters = 0;
  numerics::Progress progress;
  const procedures::Bootstrap made = procedures::bootstrap(
      data.exit.size(),
      [&](std::span<const std::uint32_t> units) {
        // Leaving a row out gives fewer units; the fit takes as many rows as there are.
        if (units.size() != data.exit.size()) return Numbers{};
        return refitted(data, units);
      },
      {.replicates = 20, .seed = 7, .accelerated = false}, progress);
  Numbers all;
  for (const Numbers& replicate : made.replicates) append(all, replicate);
  for (std::size_t j = 0; j < made.estimate.size(); ++j) {
    for (const auto kind :
         {procedures::BootstrapLimits::kPercentile, procedures::BootstrapLimits::kBasic}) {
      const procedures::BootstrapSummary summary = procedures::summarise(made, j, 0.9, kind);
      append(all, {summary.bias, summary.standardError, summary.lower, summary.upper});
    }
  }
  take(one.name + ", bootstrap", all);
}

}  // namespace

void procedureResults(const TakeNumbers& take) {
  const Csv cases(std::string(SURVMETH_REFERENCE) + "/cox/cases.csv");
  std::set<std::string> seen;
  for (std::size_t at = 0; at < cases.rows(); ++at) {
    const CoxCase one = coxCase(cases, at);
    takePredictions(take, one);
    takePenalised(take, one);
    if (seen.insert(cases.text("data", at)).second && one.data.exit.size() < 500) {
      takeBootstrap(take, one);
    }
  }
}

}  // namespace survmeth::test
