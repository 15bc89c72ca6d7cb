#include "engine/curves/hazardRate.h"

#include <algorithm>
#include <cmath>

#include "engine/curves/influence.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::curves {
namespace {

struct Kernel {
  double reach;  // of the side that is cut off
  double constant = 1.0, slope = 0.0;

  explicit Kernel(double q) : reach(q) {
    if (!(q < 1.0)) return;
    const double p = 1.0 + q;
    const double scale = p * p * p * p * (19.0 + q * (3.0 * q - 18.0));
    constant = 64.0 * (2.0 + q * (-4.0 + q * (6.0 - 3.0 * q))) / scale;
    slope = 240.0 * (1.0 - q) * (1.0 - q) / scale;
  }
  double operator()(double x) const {
    if (x < -1.0 || x > std::min(reach, 1.0)) return 0.0;
    return 0.75 * (1.0 - x) * (1.0 + x) * (constant + slope * x);
  }
};

}  // namespace

std::vector<HazardRate> hazardRates(const Sample& sample, std::size_t group, const Rows& rows,
                                    const Options& options, std::span<const double> time,
                                    double bandwidth) {
  const double z = normalQuantile(options.level);
  const std::size_t first = sample.first[group];
  std::size_t stop = sample.first[group + 1];
  while (stop > first && !(sample.events[stop - 1] > 0.0)) --stop;
  const double last = stop > first ? sample.time[stop - 1] : kAbsent;
  if (!(bandwidth > 0.0 && 2.0 * bandwidth <= last)) {
    throw Refusal(Role::kValue, Refusal::kNone,
                  "the bandwidth is not between 0 and half of the last event time");
  }
  std::vector<HazardTerm> term(stop - first);
  for (std::size_t k = first; k < stop; ++k) term[k - first] = hazardTerm(sample, k, options);
  const bool sandwich = robust(rows, options);
  Influence influence(sample, rows);
  Increments increments;
  if (sandwich) increments = hazardIncrements(sample, group, options.ties);
  std::vector<double> share(sample.first[group + 1] - first);

  std::vector<HazardRate> result;
  result.reserve(time.size());
  for (const double t : time) {
    HazardRate& at = result.emplace_back();
    at.time = t;
    if (!(t >= 0.0 && t <= last)) continue;
    const bool late = last - t < bandwidth;
    const Kernel kernel((late ? last - t : t) / bandwidth);
    const auto end = sample.time.begin() + static_cast<std::ptrdiff_t>(stop);
    const auto from = std::lower_bound(sample.time.begin() + static_cast<std::ptrdiff_t>(first),
                                       end, t - bandwidth);
    const auto to = std::upper_bound(from, end, t + bandwidth);
    const auto begin = static_cast<std::size_t>(from - sample.time.begin()) - first;
    const auto behind = static_cast<std::size_t>(to - sample.time.begin()) - first;
    numerics::RunningSum rate;
    numerics::RunningSum variance;
    for (std::size_t i = begin; i < behind; ++i) {
      const double x = (t - sample.time[first + i]) / bandwidth;
      share[i] = kernel(late ? -x : x) / bandwidth;
      rate.add(share[i] * term[i].hazard);
      variance.add(share[i] * share[i] * term[i].variance);
    }
    at.rate = rate.value();
    at.standardError =
        std::sqrt(sandwich ? influence.variance(group, increments, share) : variance.value());
    std::fill(share.begin() + static_cast<std::ptrdiff_t>(begin),
              share.begin() + static_cast<std::ptrdiff_t>(behind), 0.0);
    const Interval limits = hazardLimits(at.rate, at.standardError, z, Scale::kLog);
    at.lower = limits.lower;
    at.upper = limits.upper;
  }
  return result;
}

}  // namespace survmeth::engine::curves
