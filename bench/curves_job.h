// What survmeth life computes without an option, in the engine: curves of three groups with limits,
// quartiles with theirs, follow-up, three tests of equal survival.
#ifndef BENCH_CURVES_JOB_H_
#define BENCH_CURVES_JOB_H_

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "bench/columns.h"
#include "bench/life_job.h"
#include "bench/timing.h"
#include "engine/curves/comparison.h"
#include "engine/curves/pooled.h"
#include "engine/curves/quantiles.h"

namespace survmeth::bench {

// The columns time, status, group and entry: half of the rows enter late, nearly all times are
// distinct.
inline Columns entryColumns(int rows) {
  Columns columns = lifeColumns(rows, false);
  std::mt19937_64 random(20240301);
  std::uniform_real_distribution<double> share(-0.66, 0.66);
  Column entry;
  for (const double time : columns[0]) entry.push_back(time * std::max(0.0, share(random)));
  columns.push_back(std::move(entry));
  return columns;
}

struct Curves : Analysis {
  explicit Curves(const Columns& raw) : time(raw[0]) {
    for (const double status : raw[1]) event.push_back(status != 0.0 ? 1 : 0);
    for (const double code : raw[2]) group.push_back(static_cast<std::uint32_t>(code));
    if (raw.size() > 3) entry = raw[3];
  }
  void run() override {
    namespace curves = engine::curves;
    using enum curves::Weighting::Kind;
    constexpr std::array<double, 3> kQuartiles = {0.25, 0.5, 0.75};
    const engine::Response response = {entry, time, event, 1};
    const curves::Groups groups = {group, kGroups};
    const engine::risk::TimeCodes codes =
        curves::checkedCodes(response, {}, groups, engine::risk::kTieTolerance, "Curves");
    {
      const curves::Sample sample(codes, response, {}, groups);
      const auto all = curves::estimate(sample, {}, {});
      for (const curves::Curve& curve : all) {
        quartiles.push_back(curves::quantiles(curve, kQuartiles)[1].time);
        followUp.push_back(curves::followUp(curve, 0.5));
      }
    }
    const std::vector<curves::Weighting> weights = {{kLogRank}, {kGehanBreslow}, {kTaroneWare}};
    const curves::Pooled pooled(codes, response, {}, groups);
    logRank = curves::compare(pooled, weights).tests[0].chiSquare;
  }
  Results results() const override {
    if (!entry.empty()) return {{"median", quartiles[0]}};
    return {{"logRank", logRank}, {"median", quartiles[0]}};
  }

  std::vector<double> entry, time, quartiles, followUp;
  std::vector<std::uint32_t> event, group;
  double logRank = 0.0;
};

}  // namespace survmeth::bench

#endif  // BENCH_CURVES_JOB_H_
