// Passing-Bablok at its cap of pairs, the Deming jackknife, Bland-Altman and repeatability.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "survival/survival.h"

namespace {

// Two methods that measure the same n values with error.
struct Methods {
  explicit Methods(std::int64_t n) : x(n), y(n), subject(n), out(9, std::vector<double>(2 * n)) {
    std::mt19937_64 random(1);
    std::normal_distribution<double> normal;
    for (std::int64_t i = 0; i < n; ++i) {
      const double value = 50 + 10 * normal(random);
      x[i] = value + normal(random);
      y[i] = 1.05 * value - 2 + normal(random);
      const std::int64_t pair = i / 2 + 1;
      subject[i] = static_cast<double>(pair);
    }
  }
  std::vector<double> x, y, subject;
  std::vector<std::vector<double>> out;
  double s[40] = {};
};

void PassingBablok(benchmark::State& state) {
  Methods m(state.range(0));
  for (auto _ : state) {
    VB_PassingBablok(m.x.data(), static_cast<int>(state.range(0)), m.y.data(), 0.05, m.s, m.s + 1,
                     m.s + 2, m.s + 3, m.s + 4, m.s + 5, m.out[0].data(), m.out[1].data(),
                     m.out[2].data(), m.out[3].data(), m.s + 6, m.s + 7, m.s + 8);
    benchmark::DoNotOptimize(m.s[0]);
  }
}
BENCHMARK(PassingBablok)->Arg(100)->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond);

void Deming(benchmark::State& state) {
  Methods m(state.range(0));
  int one = 1;
  for (auto _ : state) {
    VB_DemingRegression(m.x.data(), static_cast<int>(state.range(0)), m.y.data(), m.subject.data(),
                        0, 1, &one, 1, 0, 0.05, 1, 1e-8, 20, 40, 60, m.s, m.s + 1, m.s + 2, m.s + 3,
                        m.s + 4, m.s + 5, m.out[0].data(), m.out[1].data(), m.out[2].data(),
                        m.out[3].data(), m.out[4].data(), m.s + 6, m.s + 7, m.s + 8, m.s + 9,
                        m.s + 10, m.s + 11, m.s + 12, m.s + 13, m.s + 14, m.s + 15, m.s + 16,
                        m.s + 17, m.s + 18, m.s + 19, m.s + 20, m.s + 21, m.s + 22, m.s + 23,
                        m.s + 24, m.s + 25, m.s + 26, m.s + 27);
    benchmark::DoNotOptimize(m.s[0]);
  }
}
BENCHMARK(Deming)->Arg(100)->Arg(1000)->Arg(5000)->Unit(benchmark::kMillisecond);

void BlandAltman(benchmark::State& state) {
  Methods m(state.range(0));
  for (auto _ : state) {
    Cpp_BlandAltman(m.x.data(), m.y.data(), static_cast<int>(state.range(0)), 0, 0.05,
                    m.out[0].data(), m.out[1].data(), m.s, m.s + 1, m.s + 2, m.s + 3, m.s + 4,
                    m.s + 5);
    benchmark::DoNotOptimize(m.s[0]);
  }
}
BENCHMARK(BlandAltman)->Arg(100)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

void Repeatability(benchmark::State& state) {
  Methods m(state.range(0));
  for (auto _ : state) {
    Cpp_GetRepeatability(m.x.data(), static_cast<int>(state.range(0)), m.subject.data(), 0.05, m.s,
                         m.s + 1, m.s + 2);
    benchmark::DoNotOptimize(m.s[0]);
  }
}
BENCHMARK(Repeatability)->Arg(100)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
