// Made-up validation samples and bootstrap statistics, and their summaries through the flat entry
// points: what the benchmarks time.
#ifndef BENCH_VALIDATION_JOB_H_
#define BENCH_VALIDATION_JOB_H_

#include <cmath>
#include <random>

#include "bench/columns.h"
#include "survival/calls/validation.h"

namespace survmeth::bench {

// A validation sample of a model with three covariates: nearly no ties, or whole days and scores.
struct ValidationData {
  Column time, status, X;

  ValidationData(int n, bool wholeDays) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> uniform;
    for (int i = 0; i < n; ++i) {
      const double t = -1000 * std::log(1 - uniform(random));
      time.push_back(wholeDays ? std::ceil(t) : t);
      status.push_back(uniform(random) < 0.6 ? 1 : 0);
    }
    for (int i = 0; i < 3 * n; ++i) {
      X.push_back(wholeDays ? std::floor(20 * uniform(random)) : uniform(random));
    }
  }
};

// One row of the validation table; its fourth cell is the concordance.
struct ValidationRow {
  Column beta{0.5, -0.25, 1.0}, H{Column(9, 1.0)}, F{Column(12, 1.0)}, table{Column(5, 0.0)};

  void run(ValidationData& data) {
    Cpp_ComputeCVTable(static_cast<int>(data.time.size()), 3, data.time.data(), data.status.data(),
                       data.X.data(), beta.data(), H.data(), F.data(), 1, 1, table.data());
  }
};

// B samples of five statistics.
inline Column makeBootstrap(int B) {
  std::mt19937_64 random(2);
  std::normal_distribution<double> normal;
  Column statistics(static_cast<std::size_t>(B) * 5);
  for (double& value : statistics) value = normal(random);
  return statistics;
}

struct BootstrapSummary {
  Column summary{Column(20)};

  void run(Column& statistics) {
    Cpp_ComputeBootOut(static_cast<int>(statistics.size() / 5), 0.05, statistics.data(),
                       summary.data());
  }
};

}  // namespace survmeth::bench

#endif  // BENCH_VALIDATION_JOB_H_
