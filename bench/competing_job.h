// Competing risks in the engine: Gray's tests with the curves of every group, Fine and Gray's
// regression, and histories through states.
#ifndef BENCH_COMPETING_JOB_H_
#define BENCH_COMPETING_JOB_H_

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>

#include "bench/columns.h"
#include "bench/timing.h"
#include "engine/finegray/fit.h"
#include "engine/incidence/curve.h"
#include "engine/incidence/gray.h"
#include "engine/states/estimate.h"

namespace survmeth::bench {

inline std::vector<std::uint32_t> codesOf(const Column& column, double first) {
  std::vector<std::uint32_t> codes;
  for (const double value : column) codes.push_back(static_cast<std::uint32_t>(value - first));
  return codes;
}

// Columns time, status 0 to 2, group from 1.
struct EngineGray : Analysis {
  explicit EngineGray(const Columns& raw)
      : time(raw[0]), event(codesOf(raw[1], 0)), group(codesOf(raw[2], 1)) {}
  void run() override {
    const engine::Response response{{}, time, event, 2};
    const engine::incidence::Groups groups{group, 3};
    const std::uint32_t types[] = {1, 2};
    const engine::incidence::Ordered ordered(response, {}, groups);
    const auto tests = engine::incidence::grayTests(ordered, types, {});
    for (std::size_t i = 0; i < tests.size(); ++i) statistic[i] = tests[i].chiSquare;
    const engine::incidence::Causes sorted(ordered);
    curves = engine::incidence::estimate(sorted, {}, engine::incidence::Variance::kAalen);
  }
  Results results() const override { return {{"type1", statistic[0]}, {"type2", statistic[1]}}; }

  Column time;
  std::vector<std::uint32_t> event, group;
  double statistic[2] = {};
  std::vector<engine::incidence::Curve> curves;
};

// Columns time, status 0 to 2, covariates.
struct FineGray : Analysis {
  explicit FineGray(const Columns& raw)
      : time(raw[0]), event(codesOf(raw[1], 0)), columns(raw.begin() + 2, raw.end()) {
    for (std::size_t j = 0; j < columns.size(); ++j) {
      design.columns.emplace_back(columns[j]);
      design.names.push_back("x" + std::to_string(j + 1));
      design.term.push_back(j);
    }
    design.termNames = design.names;
  }
  void run() override {
    numerics::Progress progress;
    fit = engine::finegray::fit({{}, time, event, 2}, {}, design, {}, {}, progress);
  }
  Results results() const override {
    return {{"beta", fit.coefficients[0]}, {"error", fit.standardError(0)}};
  }

  Column time;
  std::vector<std::uint32_t> event;
  Columns columns;
  engine::Design design;
  engine::finegray::Fit fit;
};

inline Columns fineGrayColumns(int n, int covariates) {
  std::mt19937_64 random(20240602);
  std::normal_distribution<double> normal;
  std::exponential_distribution<double> exponential;
  Columns columns(2 + static_cast<std::size_t>(covariates));
  for (int i = 0; i < n; ++i) {
    double eta = 0.0;
    for (int j = 0; j < covariates; ++j) {
      columns[2 + static_cast<std::size_t>(j)].push_back(normal(random));
      eta += columns[2 + static_cast<std::size_t>(j)].back() * std::cos(j) / 3;
    }
    const double own = exponential(random) / std::exp(eta);
    const double other = 1.5 * exponential(random);
    const double censored = 1.2 * exponential(random);
    const double time = std::min({own, other, censored});
    columns[0].push_back(time);
    columns[1].push_back(time == own ? 1.0 : time == other ? 2.0 : 0.0);
  }
  return columns;
}

// Columns entry, exit, from, to (-1 nowhere), subject.
struct States : Analysis {
  static constexpr std::size_t kStates = 5;
  explicit States(const Columns& raw)
      : entry(raw[0]), exit(raw[1]), from(codesOf(raw[2], 0)), subject(codesOf(raw[4], 0)) {
    for (const double state : raw[3]) {
      to.push_back(state < 0.0 ? engine::states::kNowhere : static_cast<std::uint32_t>(state));
    }
  }
  void run() override {
    const engine::states::Histories histories{
        entry, exit, from, to, subject, kStates, subject.back() + std::size_t{1}, {}};
    faults = engine::states::check(histories).size();
    engine::states::Options options;
    options.horizon = 3.0;
    found = engine::states::estimate(histories, options);
  }
  Results results() const override {
    return {{"faults", static_cast<double>(faults)}, {"stay", found.stays[0].time}};
  }

  Column entry, exit;
  std::vector<std::uint32_t> from, to, subject;
  std::size_t faults = 0;
  engine::states::Estimates found;
};

// The last state is for good; of the others any may follow.
inline Columns statesColumns(int n) {
  std::mt19937_64 random(20240603);
  std::exponential_distribution<double> exponential;
  std::uniform_int_distribution<int> next(1, 4), end(0, 6);
  Columns columns(5);
  for (double subject = 0; static_cast<int>(columns[0].size()) < n; ++subject) {
    double time = 0.0;
    int state = 0;
    while (state < 4 && static_cast<int>(columns[0].size()) < n) {
      columns[0].push_back(time);
      time += exponential(random);
      columns[1].push_back(time);
      columns[2].push_back(state);
      const bool censored = end(random) == 0;
      state = (state + next(random)) % 5;
      columns[3].push_back(censored ? -1 : state);
      columns[4].push_back(subject);
      if (censored) break;
    }
  }
  return columns;
}

}  // namespace survmeth::bench

#endif  // BENCH_COMPETING_JOB_H_
