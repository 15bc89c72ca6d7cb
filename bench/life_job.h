// Made-up survival data of three groups, and the whole analysis of them through the flat entry
// points: the job that the benchmarks time.
#ifndef BENCH_LIFE_JOB_H_
#define BENCH_LIFE_JOB_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

#include "bench/columns.h"
#include "bench/timing.h"
#include "survival/survival.h"

namespace survmeth::bench {

constexpr int kGroups = 3;
constexpr int kGridRows = 3 * kGroups + 1;

struct LifeData {
  std::vector<double> time, status, weight, group;
  std::vector<double> sizes;
};

// Exponential survival of mean 1000 to 1500 days, censored at random by another exponential and
// at ten years. In whole days there are some 3650 distinct times, otherwise hardly any two equal.
inline LifeData makeLifeData(int n, bool wholeDays) {
  std::mt19937_64 random(20240229);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  const auto exponential = [&](double mean) { return -mean * std::log1p(-uniform(random)); };
  LifeData data;
  data.sizes.assign(kGroups, 0.0);
  for (auto* column : {&data.time, &data.status, &data.weight, &data.group}) {
    column->reserve(static_cast<std::size_t>(n));
  }
  for (int i = 0; i < n; ++i) {
    const int group = static_cast<int>(uniform(random) * kGroups);
    const double event = exponential(1000.0 + 250.0 * group);
    const double censored = std::min(exponential(4000.0), 3650.0);
    const double time = std::min(event, censored);
    data.time.push_back(wholeDays ? std::ceil(time) : time);
    data.status.push_back(event <= censored ? 1.0 : 0.0);
    data.weight.push_back(1.0);
    data.group.push_back(group);
    data.sizes[static_cast<std::size_t>(group)] += 1.0;
  }
  return data;
}

// The raw columns time, status and group.
inline LifeData lifeData(const Columns& columns) {
  LifeData data;
  data.time = columns[0];
  data.status = columns[1];
  data.group = columns[2];
  data.weight.assign(data.time.size(), 1.0);
  data.sizes.assign(kGroups, 0.0);
  for (const double group : data.group) data.sizes[static_cast<std::size_t>(group)] += 1.0;
  return data;
}

inline void prepare(LifeData& data) {
  int n = static_cast<int>(data.time.size());
  double maxTime = 0.0;
  ReorganizeData(data.time.data(), &n, data.status.data(), data.weight.data(), data.group.data(),
                 data.sizes.data(), kGroups, 0, &maxTime);
}

// What stands between the prepared columns and the tests.
struct LifeTables {
  std::vector<double> grid;
  int gridTimes = 0;
  std::vector<double> intervals, table;  // of the group estimated last
  double medians[kGroups] = {};
};

inline void loadGrid(LifeData& data, LifeTables& tables) {
  const int n = static_cast<int>(data.time.size());
  tables.gridTimes = n;
  tables.grid.assign(static_cast<std::size_t>(kGridRows) * data.time.size(), 0.0);
  LoadKaplanTest(&tables.gridTimes, n, kGroups, data.time.data(), tables.grid.data());
}

inline void estimate(LifeData& data, LifeTables& tables) {
  const int n = static_cast<int>(data.time.size());
  int offset = 0;
  for (int j = 1; j <= kGroups; ++j) {
    const int m = static_cast<int>(data.sizes[static_cast<std::size_t>(j) - 1]);
    tables.intervals.assign(2 * (static_cast<std::size_t>(m) + 1), 0.0);
    tables.table.assign(12 * (static_cast<std::size_t>(m) + 2), 0.0);
    double bounds = 0.0;
    double total = 0.0;
    int rows = 0;
    RunLife(n, j, &offset, 0, 0.0, tables.gridTimes, kGroups, m, 1, 0, 0, data.time.data(),
            data.status.data(), data.weight.data(), 0, -1, 0, 0, &bounds, tables.intervals.data(),
            &total, tables.table.data(), &rows, tables.grid.data());
    double cut = 0.0;
    double mean[4];
    double quartiles[12];
    ComputeKaplanMeanMedian(tables.table.data(), m, 0.05, m, rows, &cut, mean, quartiles);
    tables.medians[j - 1] = quartiles[4];
    offset += m;
  }
}

struct TestRows {
  double values[12];
  double logRank() const { return values[0]; }
};

inline TestRows test(LifeTables& tables) {
  TestRows rows{};
  ComputeLifeTests(tables.grid.data(), tables.gridTimes, tables.gridTimes, kGroups, 0.05,
                   rows.values);
  return rows;
}

struct Life : Analysis {
  explicit Life(const Columns& raw) : data(lifeData(raw)) {}
  void run() override {
    LifeTables tables;
    prepare(data);
    loadGrid(data, tables);
    estimate(data, tables);
    logRank = test(tables).logRank();
    median = tables.medians[0];
  }
  Results results() const override { return {{"logRank", logRank}, {"median", median}}; }

  LifeData data;
  double logRank = 0.0, median = 0.0;
};

inline Columns lifeColumns(int rows, bool wholeDays) {
  const LifeData data = makeLifeData(rows, wholeDays);
  return {data.time, data.status, data.group};
}

}  // namespace survmeth::bench

#endif  // BENCH_LIFE_JOB_H_
