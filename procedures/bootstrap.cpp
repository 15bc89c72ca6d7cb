#include "procedures/bootstrap.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "Dist/Dist"
#include "numerics/random.h"
#include "numerics/threads.h"

namespace survmeth::procedures {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kBatch = 64;  // calls between two looks at the progress

// All calls of work(i), i below `count`, in batches on several threads; `from` .. `to` of the
// progress.
void inBatches(std::size_t count, const std::function<void(std::size_t)>& work, double from,
               double to, numerics::Progress& progress) {
  for (std::size_t begin = 0; begin < count; begin += kBatch) {
    progress.at(from + (to - from) * static_cast<double>(begin) / static_cast<double>(count));
    numerics::inParallel(std::min(kBatch, count - begin), [&](std::size_t i) { work(begin + i); });
  }
}

// Sum of cubes over the sums of squares to 3/2, of the jackknife's deviations.
std::vector<double> accelerations(std::size_t units, std::size_t size, const Statistic& statistic,
                                  double from, numerics::Progress& progress) {
  std::vector<std::vector<double>> without(units);
  inBatches(
      units,
      [&](std::size_t left) {
        std::vector<std::uint32_t> rest;
        for (std::size_t i = 0; i < units; ++i) {
          if (i != left) rest.push_back(static_cast<std::uint32_t>(i));
        }
        without[left] = statistic(rest);
      },
      from, 1.0, progress);
  std::vector<double> acceleration(size, kNone);
  if (std::any_of(without.begin(), without.end(), [](const auto& each) { return each.empty(); })) {
    return acceleration;
  }
  for (std::size_t j = 0; j < size; ++j) {
    double mean = 0.0, squares = 0.0, cubes = 0.0;
    for (const auto& each : without) mean += each[j];
    mean /= static_cast<double>(units);
    for (const auto& each : without) {
      const double away = mean - each[j];
      squares += away * away;
      cubes += away * away * away;
    }
    acceleration[j] = cubes / (6.0 * squares * std::sqrt(squares));
  }
  return acceleration;
}

// The quantile of ascending values, interpolated on the normal scale.
double quantile(const std::vector<double>& ascending, double share) {
  const auto more = static_cast<double>(ascending.size() + 1);
  const auto below = static_cast<std::size_t>(std::floor(share * more));
  if (below == 0) return ascending.front();
  if (below >= ascending.size()) return ascending.back();
  const double low = ascending[below - 1];
  const double at = static_cast<double>(below);
  if (at == share * more) return low;
  const double z = InvCDFNormalStd(at / more);
  const double part = (InvCDFNormalStd(share) - z) / (InvCDFNormalStd((at + 1.0) / more) - z);
  return low + part * (ascending[below] - low);
}

}  // namespace

std::vector<std::uint32_t> drawnUnits(std::size_t units, std::uint64_t seed,
                                      std::size_t replicate) {
  numerics::Random random(seed, replicate);
  std::vector<std::uint32_t> drawn(units);
  for (std::uint32_t& each : drawn) each = random.below(static_cast<std::uint32_t>(units));
  return drawn;
}

Bootstrap bootstrap(std::size_t units, const Statistic& statistic, const BootstrapOptions& options,
                    numerics::Progress& progress) {
  Bootstrap made;
  std::vector<std::uint32_t> all(units);
  std::iota(all.begin(), all.end(), 0U);
  made.estimate = statistic(all);
  if (made.estimate.empty()) return made;
  std::vector<std::vector<double>> replicates(options.replicates);
  const auto calls = static_cast<double>(options.replicates + (options.accelerated ? units : 0));
  const double share = static_cast<double>(options.replicates) / calls;
  inBatches(
      options.replicates,
      [&](std::size_t replicate) {
        replicates[replicate] = statistic(drawnUnits(units, options.seed, replicate));
      },
      0.0, share, progress);
  for (std::vector<double>& each : replicates) {
    if (each.empty()) {
      ++made.failed;
    } else {
      made.replicates.push_back(std::move(each));
    }
  }
  if (options.accelerated) {
    made.acceleration = accelerations(units, made.estimate.size(), statistic, share, progress);
  }
  return made;
}

BootstrapSummary summarise(const Bootstrap& made, std::size_t j, double level,
                           BootstrapLimits limits) {
  std::vector<double> values;
  for (const auto& each : made.replicates) {
    if (!std::isnan(each[j])) values.push_back(each[j]);
  }
  const std::size_t count = values.size();
  BootstrapSummary summary{kNone, kNone, kNone, kNone, count};
  const double estimate = made.estimate.empty() ? kNone : made.estimate[j];
  if (count < 2 || std::isnan(estimate)) return summary;
  const double mean =
      std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(count);
  double squares = 0.0;
  for (const double each : values) squares += (each - mean) * (each - mean);
  summary.bias = mean - estimate;
  summary.standardError = std::sqrt(squares / static_cast<double>(count - 1));
  std::sort(values.begin(), values.end());
  double low = 0.5 * (1.0 - level), high = 0.5 * (1.0 + level);
  if (limits == BootstrapLimits::kBca) {
    const auto below = std::lower_bound(values.begin(), values.end(), estimate) - values.begin();
    const double a = made.acceleration.empty() ? kNone : made.acceleration[j];
    if (below == 0 || below == static_cast<std::ptrdiff_t>(count) || std::isnan(a)) {
      summary.lower = summary.upper = kNone;
      return summary;
    }
    const double centre = InvCDFNormalStd(static_cast<double>(below) / static_cast<double>(count));
    for (double* share : {&low, &high}) {
      const double z = centre + InvCDFNormalStd(*share);
      *share = CDFNormalStd(centre + z / (1.0 - a * z));
    }
  }
  summary.lower = quantile(values, low);
  summary.upper = quantile(values, high);
  if (limits == BootstrapLimits::kBasic) {
    std::swap(summary.lower, summary.upper);
    summary.lower = 2.0 * estimate - summary.lower;
    summary.upper = 2.0 * estimate - summary.upper;
  }
  return summary;
}

}  // namespace survmeth::procedures
