// Tests of equal survival of two groups in the engine: eight weights, the events of each group and
// the maximum combination of four, which the benchmarks time beside R's log-rank test alone.
#ifndef BENCH_TESTS_JOB_H_
#define BENCH_TESTS_JOB_H_

#include <algorithm>
#include <cstdint>
#include <vector>

#include "bench/columns.h"
#include "bench/life_job.h"
#include "bench/timing.h"
#include "engine/curves/combination.h"
#include "engine/curves/pooled.h"

namespace survmeth::bench {

// The columns time, status and group of the second and third group as one.
inline Columns testColumns(int rows, bool wholeDays) {
  LifeData data = makeLifeData(rows, wholeDays);
  for (double& group : data.group) group = std::min(group, 1.0);
  return {data.time, data.status, data.group};
}

struct EqualSurvival : Analysis {
  explicit EqualSurvival(const Columns& raw) : time(raw[0]) {
    for (const double status : raw[1]) event.push_back(status != 0.0 ? 1 : 0);
    for (const double code : raw[2]) group.push_back(static_cast<std::uint32_t>(code));
  }
  void run() override {
    namespace curves = engine::curves;
    using enum curves::Weighting::Kind;
    const std::vector<curves::Weighting> weights = {{kLogRank},
                                                    {kGehanBreslow},
                                                    {kTaroneWare},
                                                    {kPetoPeto},
                                                    {kModifiedPetoPeto},
                                                    {kFlemingHarrington, 1, 0},
                                                    {kFlemingHarrington, 0, 1},
                                                    {kFlemingHarrington, 1, 1}};
    const curves::Pooled pooled({{}, time, event, 1}, {}, {group, 2}, engine::risk::kTieTolerance);
    logRank = curves::compare(pooled, weights).tests[0].chiSquare;
    combined = curves::combine(pooled, curves::usualCombination()).statistic;
  }
  Results results() const override { return {{"logRank", logRank}}; }

  std::vector<double> time;
  std::vector<std::uint32_t> event, group;
  double logRank = 0.0, combined = 0.0;
};

}  // namespace survmeth::bench

#endif  // BENCH_TESTS_JOB_H_
