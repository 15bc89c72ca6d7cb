// Made-up competing-risks data and their analysis through the flat entry points: what the
// benchmarks time.
#ifndef BENCH_CUMINC_JOB_H_
#define BENCH_CUMINC_JOB_H_

#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

#include "bench/columns.h"
#include "survival/calls/cuminc.h"
#include "survival/calls/life.h"

namespace survmeth::bench {

// Rows with status 0 (censored), 1 or 2 alike often, in groups 1..K in turn; nearly no equal times,
// or whole days.
struct CumIncData {
  int n;
  Column time, status, group, flag, sizes;

  CumIncData(int rows, bool wholeDays, int groups = 1)
      : n(rows), flag(rows), sizes(groups), random_(3) {
    std::uniform_real_distribution<double> uniform;
    for (int i = 0; i < n; ++i) {
      const double t = -1000 * std::log(1 - uniform(random_));
      time.push_back(wholeDays ? std::ceil(t) : t);
      status.push_back(std::floor(3 * uniform(random_)));
      group.push_back(1 + i % groups);
      ++sizes[i % groups];
    }
  }

  void prepare() {
    double maxTime = 0.0;
    Cpp_ReorganizeDataCum(time.data(), n, status.data(), flag.data(), group.data(), sizes.data(),
                          static_cast<int>(sizes.size()), &maxTime);
  }

 private:
  std::mt19937_64 random_;
};

// The Kaplan-Meier table of one group with all types pooled.
struct Pooled {
  int first, rows;
  Column intervals, table;
  int groups = 0;

  explicit Pooled(CumIncData& data, int number = 1)
      : first(0), rows(static_cast<int>(data.sizes[static_cast<std::size_t>(number) - 1])) {
    for (int g = 1; g < number; ++g) {
      first += static_cast<int>(data.sizes[static_cast<std::size_t>(g) - 1]);
    }
    intervals.resize(static_cast<std::size_t>(rows + 1) * 2);
    table.resize(static_cast<std::size_t>(rows + 2) * 12);
    int offset = first;
    double bounds = 0.0, total = 0.0, grid = 0.0;
    Column weights(data.time.size(), 1.0);
    RunLife(data.n, 1, &offset, 0, 1.0, 0, 1, rows, 1, 0, 0, data.time.data(), data.flag.data(),
            weights.data(), 0, 0, 0, 0, &bounds, intervals.data(), &total, table.data(), &groups,
            &grid);
  }
};

// Incidence of one type in one group.
struct Incidence {
  Column table, complement;

  explicit Incidence(const Pooled& pooled)
      : table(static_cast<std::size_t>(pooled.groups) * 10), complement(table.size()) {}

  void run(CumIncData& data, Pooled& pooled, int type) {
    Cpp_CumIncCalc(pooled.groups, data.n, data.time.data(), data.status.data(), type, 0.05,
                   pooled.rows, pooled.first, pooled.table.data(), table.data(), complement.data());
  }

  double at(const Pooled& pooled, int row) const {
    return table[static_cast<std::size_t>(row) + 5 * static_cast<std::size_t>(pooled.groups)];
  }
};

}  // namespace survmeth::bench

#endif  // BENCH_CUMINC_JOB_H_
