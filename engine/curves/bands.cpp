#include "engine/curves/bands.h"

#include <cmath>
#include <span>
#include <vector>

#include "engine/curves/bridge.h"
#include "numerics/elementary.h"

namespace survmeth::engine::curves {

Band band(const Curve& curve, const Rows& rows, const Options& options, BandKind kind, double from,
          double to) {
  normalQuantile(options.level);  // refuses
  if (robust(rows, options)) {
    throw Refusal(Role::kRequest, Refusal::kNone,
                  "simultaneous bands are not for robust variances");
  }
  const std::size_t m = curve.time.size();
  Band band;
  band.lower.assign(m, kAbsent);
  band.upper.assign(m, kAbsent);
  // Drawn in: the first and the last index within.
  std::size_t begin = 0;
  while (begin < m &&
         (!(curve.logVariance[begin] > 0.0) || (begin + 1 < m && curve.time[begin + 1] <= from))) {
    ++begin;
  }
  std::size_t end = m;
  while (end > begin && (!(curve.survival[end - 1] > 0.0) || curve.time[end - 1] > to)) --end;
  std::size_t last = end;  // the last event within
  while (last > begin && !(curve.eventsAt[last - 1] > 0.0)) --last;
  if (begin == end) return band;
  band.from = std::isnan(from) ? curve.time[begin] : std::max(from, curve.time[begin]);
  band.to = std::isnan(to) ? curve.time[last > begin ? last - 1 : begin] : to;
  if (band.to < band.from) return band;
  const double n = curve.n;
  const double least = curve.logVariance[begin];
  const double most = curve.logVariance[end - 1];
  band.lowerShare = n * least / (1.0 + n * least);
  band.upperShare = n * most / (1.0 + n * most);
  const double length = 0.5 * numerics::log(most / least);
  if (kind == BandKind::kEqualPrecision && least == most) {
    band.critical = normalQuantile(options.level);
  } else if (length < kShortestBand) {
    return band;
  } else {
    band.critical = kind == BandKind::kEqualPrecision
                        ? standardizedBridgeQuantile(options.level, length)
                        : bridgeQuantile(options.level, band.lowerShare, band.upperShare);
  }
  std::vector<double> spread;
  for (std::size_t i = begin; i < end; ++i) {
    const double v = curve.logVariance[i];
    spread.push_back(kind == BandKind::kEqualPrecision
                         ? band.critical * std::sqrt(v)
                         : band.critical * (1.0 + n * v) / std::sqrt(n));
  }
  survivalLimits(std::span(curve.survival).subspan(begin, spread.size()), spread, options.scale,
                 std::span(band.lower).subspan(begin, spread.size()),
                 std::span(band.upper).subspan(begin, spread.size()));
  return band;
}

}  // namespace survmeth::engine::curves
