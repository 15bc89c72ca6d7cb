// Proportional hazards in the engine: a bare fit, and a whole analysis with residuals and
// concordance, as the benchmarks time them beside R's coxph.fit and coxph.
#ifndef BENCH_HAZARDS_JOB_H_
#define BENCH_HAZARDS_JOB_H_

#include <cmath>
#include <cstdint>
#include <random>
#include <string>

#include "bench/columns.h"
#include "bench/timing.h"
#include "engine/cox/concordance.h"
#include "engine/cox/fit.h"
#include "engine/cox/residuals.h"

namespace survmeth::bench {

// Which columns stand before the covariates.
enum class HazardsShape {
  kRight,  // time, status
  kEntry,  // time, status, entry
  kPairs,  // time, status, pair
  kSets,   // time, status, matched set: two cases and two controls
};

struct HazardsModel {
  HazardsModel(const Columns& raw, HazardsShape shape) : time(raw[0]) {
    const std::size_t before = shape == HazardsShape::kRight ? 2 : 3;
    for (const double status : raw[1]) event.push_back(status != 0.0 ? 1 : 0);
    if (shape == HazardsShape::kEntry) entry = raw[2];
    if (shape == HazardsShape::kPairs || shape == HazardsShape::kSets) {
      for (const double set : raw[2]) stratum.push_back(static_cast<std::uint32_t>(set));
    }
    columns.assign(raw.begin() + static_cast<std::ptrdiff_t>(before), raw.end());
    for (std::size_t j = 0; j < columns.size(); ++j) {
      design.columns.emplace_back(columns[j]);
      design.names.push_back("x" + std::to_string(j + 1));
      design.term.push_back(j);
    }
    design.termNames = design.names;
  }
  HazardsModel(const HazardsModel&) = delete;
  HazardsModel& operator=(const HazardsModel&) = delete;

  void fit(bool robust, engine::cox::Ties ties = engine::cox::Ties::kEfron) {
    engine::Rows rows;
    rows.stratum = stratum;
    rows.strata = time.size() / 2;
    engine::cox::Options options;
    options.robust = robust;
    options.ties = ties;
    numerics::Progress progress;
    result = engine::cox::fit({entry, time, event, 1}, rows, design, options, progress);
  }
  void analyse() {
    fit(false);
    residuals = martingaleResiduals(result, {});
    concordance = engine::cox::concordance(result);
  }

  Column time, entry, residuals;
  std::vector<std::uint32_t> event, stratum;
  Columns columns;
  engine::Design design;
  engine::cox::Fit result;
  engine::cox::Concordance concordance;
};

// Every subject of `entry` has ten rows, the last of which may fail.
inline Columns hazardsColumns(int n, int covariates, HazardsShape shape) {
  std::mt19937_64 random(20240601);
  std::normal_distribution<double> normal;
  std::exponential_distribution<double> exponential;
  const int rowsEach = shape == HazardsShape::kEntry ? 10 : 1;
  Columns columns(2 + (shape == HazardsShape::kRight ? 0 : 1));
  const std::size_t before = columns.size();
  columns.resize(before + static_cast<std::size_t>(covariates));
  for (int i = 0; i < n; i += rowsEach) {
    double eta = 0.0;
    for (int j = 0; j < covariates; ++j) {
      const double x = normal(random);
      for (int k = 0; k < rowsEach; ++k) columns[before + static_cast<std::size_t>(j)].push_back(x);
      eta += x * std::cos(j) / std::sqrt(4.0 + covariates);
    }
    const double fails = exponential(random) / std::exp(eta);
    const double censored = 2.0 * exponential(random);
    const double last = std::min(fails, censored);
    for (int k = 1; k <= rowsEach; ++k) {
      columns[0].push_back(k == rowsEach ? last : last * k / rowsEach);
      columns[1].push_back(k == rowsEach && fails <= censored ? 1.0 : 0.0);
      if (shape == HazardsShape::kEntry) columns[2].push_back(last * (k - 1) / rowsEach);
    }
    if (shape == HazardsShape::kPairs) {
      columns[0].back() = i % 2 == 0 ? 1.0 : 2.0;
      columns[1].back() = i % 2 == 0 ? 1.0 : 0.0;
      columns[2].push_back(static_cast<double>(i) / 2.0 - (i % 2) / 2.0);
    }
    if (shape == HazardsShape::kSets) {
      columns[0].back() = 1.0;
      columns[1].back() = i % 4 < 2 ? 1.0 : 0.0;
      const std::size_t set = i / 4;
      columns[2].push_back(static_cast<double>(set));
    }
  }
  return columns;
}

enum class HazardsPart { kFit, kDiscrete, kRobust, kAll };

template <HazardsPart kPart, HazardsShape kShape>
struct Hazards : Analysis {
  explicit Hazards(const Columns& raw) : model(raw, kShape) {}
  void run() override {
    if (kPart == HazardsPart::kAll) {
      model.analyse();
    } else if (kPart == HazardsPart::kDiscrete) {
      model.fit(false, engine::cox::Ties::kDiscrete);
    } else {
      model.fit(kPart == HazardsPart::kRobust);
    }
  }
  Results results() const override {
    return {{"beta", model.result.coefficients[0]}, {"logLik", model.result.logLikelihood}};
  }
  HazardsModel model;
};

}  // namespace survmeth::bench

#endif  // BENCH_HAZARDS_JOB_H_
