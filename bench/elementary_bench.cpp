// Our elementary functions beside the system's, in one run: nanoseconds an argument of the system's
// scalar function, of ours and of our array form, in turn over the same arguments, and the ratios
// to the system's.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstddef>
#include <random>
#include <span>
#include <vector>

#include "numerics/elementary.h"

namespace {

namespace numerics = survmeth::numerics;

using Scalar = double (*)(double);
using Array = void (*)(std::span<const double>, std::span<double>);

constexpr std::size_t kCount = 4096;

std::vector<double> arguments(double low, double high) {
  std::mt19937_64 random(1);
  std::vector<double> x(kCount);
  for (double& each : x) {
    each = low + (high - low) * (static_cast<double>(random() >> 11) * 0x1p-53);
  }
  return x;
}

// Seconds of one call.
template <class F>
double timeOf(F f) {
  const auto start = std::chrono::steady_clock::now();
  f();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

template <Scalar kSystem, Scalar kOurs>
void run(benchmark::State& state, Array array, double low, double high) {
  const std::vector<double> x = arguments(low, high);
  std::vector<double> y(kCount);
  double system = 0.0;
  double ours = 0.0;
  double arrays = 0.0;
  for (auto _ : state) {
    system += timeOf([&] {
      for (std::size_t i = 0; i < kCount; ++i) y[i] = kSystem(x[i]);
      benchmark::DoNotOptimize(y.data());
    });
    ours += timeOf([&] {
      for (std::size_t i = 0; i < kCount; ++i) y[i] = kOurs(x[i]);
      benchmark::DoNotOptimize(y.data());
    });
    arrays += timeOf([&] {
      array(x, y);
      benchmark::DoNotOptimize(y.data());
    });
  }
  const double calls = static_cast<double>(state.iterations()) * kCount * 1e-9;
  state.counters["1_system_ns"] = system / calls;
  state.counters["2_ours_ns"] = ours / calls;
  state.counters["3_array_ns"] = arrays / calls;
  state.counters["4_ours/system"] = ours / system;
  state.counters["5_array/system"] = arrays / system;
}

void Exp(benchmark::State& state) {
  run<std::exp, numerics::exp>(state, numerics::expArray, -5.0, 5.0);
}
void Expm1(benchmark::State& state) {
  run<std::expm1, numerics::expm1>(state, numerics::expm1Array, -5.0, 5.0);
}
void Log(benchmark::State& state) {
  run<std::log, numerics::log>(state, numerics::logArray, 0.01, 50.0);
}
void Log1p(benchmark::State& state) {
  run<std::log1p, numerics::log1p>(state, numerics::log1pArray, -0.9, 50.0);
}

BENCHMARK(Exp);
BENCHMARK(Expm1);
BENCHMARK(Log);
BENCHMARK(Log1p);

}  // namespace

BENCHMARK_MAIN();
