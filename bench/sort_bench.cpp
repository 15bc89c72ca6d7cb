// SortQ of 1,000,000 rows with ten companion columns against std::stable_sort of an index array
// on the same keys, in the same run, by processor time. Afterwards the ratio for each kind of keys
// is printed; the program fails where it is not below 3.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "Klikro/Klikro"

namespace {

constexpr int kRows = 1'000'000;
constexpr int kCompanions = 10;
constexpr double kAllowedRatio = 3.0;
const char* const kKinds[] = {"random", "sorted", "reversed", "constant"};

std::vector<double> keysOf(int kind) {
  std::vector<double> keys(kRows);
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  for (int i = 0; i < kRows; ++i) {
    const double made[] = {uniform(random), static_cast<double>(i), static_cast<double>(-i), 1.0};
    keys[static_cast<std::size_t>(i)] = made[kind];
  }
  return keys;
}

void sortQ(benchmark::State& state) {
  std::vector<double> keys = keysOf(static_cast<int>(state.range(0)));
  matrix companions(kRows, kCompanions, 1.0);
  matrix none(1, 1, 0);
  for (auto _ : state) {
    state.PauseTiming();
    matrix key(kRows, 1, keys.data(), 0, 0);
    state.ResumeTiming();
    SortQ(&companions, kRows, kCompanions, 1, kRows, &key, &none, 0, 0, kTrue);
    benchmark::DoNotOptimize(key.data());
  }
}

void stableSort(benchmark::State& state) {
  const std::vector<double> keys = keysOf(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    std::vector<std::uint32_t> order(kRows);
    std::iota(order.begin(), order.end(), 0u);
    std::stable_sort(order.begin(), order.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return keys[a] < keys[b]; });
    benchmark::DoNotOptimize(order.data());
  }
}

// Keeps the shortest time of each benchmark, beside the usual table.
class ShortestTimes : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      const double time = run.GetAdjustedCPUTime();
      const auto [at, fresh] =
          times.emplace(run.run_name.function_name + "/" + run.run_name.args, time);
      if (!fresh) at->second = std::min(at->second, time);
    }
    ConsoleReporter::ReportRuns(runs);
  }

  std::map<std::string, double> times;
};

}  // namespace

int main(int argc, char** argv) {
  const auto repeat = [](const char* name, void (*body)(benchmark::State&), int kind) {
    benchmark::RegisterBenchmark(name, body)
        ->Arg(kind)
        ->Repetitions(5)
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
  };
  for (int kind = 0; kind < 4; ++kind) {
    repeat("SortQ", sortQ, kind);
    repeat("stable_sort", stableSort, kind);
  }
  benchmark::Initialize(&argc, argv);
  ShortestTimes reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);

  bool allowed = true;
  for (int kind = 0; kind < 4; ++kind) {
    const auto ours = reporter.times.find("SortQ/" + std::to_string(kind));
    const auto theirs = reporter.times.find("stable_sort/" + std::to_string(kind));
    if (ours == reporter.times.end() || theirs == reporter.times.end()) continue;
    const double ratio = ours->second / theirs->second;
    allowed = allowed && ratio < kAllowedRatio;
    std::printf("%-8s keys: SortQ with %d columns takes %.2f times std::stable_sort\n",
                kKinds[kind], kCompanions, ratio);
  }
  return allowed ? 0 : 1;
}
