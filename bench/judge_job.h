// Made-up answers at inspections, and their preparation through the flat entry point: what the
// benchmarks time.
#ifndef BENCH_JUDGE_JOB_H_
#define BENCH_JUDGE_JOB_H_

#include <cstddef>
#include <random>
#include <vector>

#include "bench/columns.h"
#include "survival/calls/judge.h"

namespace survmeth::bench {

// n subjects who answer yes (1) or no (0) at eight inspections and turn to no at a random one.
struct Inspections {
  static constexpr int kTimes = 8;

  explicit Inspections(int rows)
      : n(rows), answers(static_cast<std::size_t>(rows) * kTimes), times(kTimes), covariates(n) {
    std::mt19937_64 random(4);
    for (int j = 0; j < kTimes; ++j) times[static_cast<std::size_t>(j)] = 1.0 + j;
    for (int i = 0; i < n; ++i) {
      const int turns = static_cast<int>(random() % (kTimes + 1));
      covariates[static_cast<std::size_t>(i)] = static_cast<double>(random() % 100);
      for (int j = 0; j < kTimes; ++j) {
        answers[static_cast<std::size_t>(j) * n + i] = j <= turns ? 1.0 : 0.0;
      }
    }
  }

  int run() {
    int removed = 0;
    const std::size_t rows = static_cast<std::size_t>(n);
    std::vector<int> flags(rows);
    Column bounds(2 * rows), type(rows), key(rows), kept(rows), summary(2 * kTimes);
    return Cpp_PrepareIntervalData(answers.data(), n, kTimes, times.data(), covariates.data(), 1,
                                   &removed, flags.data(), &keptCount, bounds.data(), type.data(),
                                   key.data(), kept.data(), summary.data());
  }

  int n;
  Column answers, times, covariates;
  int keptCount = 0;
};

}  // namespace survmeth::bench

#endif  // BENCH_JUDGE_JOB_H_
