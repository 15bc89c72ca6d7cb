#include "pictures/range.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace survmeth::pictures {
namespace {

using report::SeriesKind;

// On log axes a limit farther than this from every estimate does not widen the axis.
constexpr double kFarthestLimit = 100;

void append(std::vector<double>& to, const std::vector<double>& values) {
  to.insert(to.end(), values.begin(), values.end());
}

void appendLimits(std::vector<double>& to, const std::vector<double>& limits,
                  const std::vector<double>& values, report::Scale scale) {
  double least = std::numeric_limits<double>::infinity(), most = 0;
  for (const double value : values) {
    if (!knows(scale, value)) continue;
    least = std::min(least, value);
    most = std::max(most, value);
  }
  for (const double limit : limits) {
    if (scale == report::Scale::kLog && most > 0 &&
        (limit < least / kFarthestLimit || limit > most * kFarthestLimit)) {
      continue;
    }
    to.push_back(limit);
  }
}

// The highest sums of what is stacked, at each place in the series.
std::vector<double> stackedTops(const report::Panel& panel) {
  std::vector<double> tops;
  for (const report::Series& series : panel.series) {
    if (series.kind != SeriesKind::kArea) continue;
    tops.resize(std::max(tops.size(), series.y.size()), 0);
    for (std::size_t i = 0; i < series.y.size(); ++i) {
      if (std::isfinite(series.y[i])) tops[i] += series.y[i];
    }
  }
  return tops;
}

}  // namespace

Range rangeOf(const report::Panel& panel) {
  std::vector<double> xs, ys;
  const bool points = std::any_of(panel.series.begin(), panel.series.end(), [](const auto& each) {
    return each.kind == SeriesKind::kPoints && !each.x.empty();
  });
  bool bars = false;
  for (const report::Series& series : panel.series) {
    if (series.guide || (points && series.kind == SeriesKind::kLine)) continue;
    append(xs, series.x);
    if (series.kind == SeriesKind::kSegments) {
      append(xs, series.right);
    } else {
      appendLimits(xs, series.left, series.x, panel.x.scale);
      appendLimits(xs, series.right, series.x, panel.x.scale);
    }
    if (series.kind != SeriesKind::kArea) append(ys, series.y);
    appendLimits(ys, series.lower, series.y, panel.y.scale);
    appendLimits(ys, series.upper, series.y, panel.y.scale);
    bars = bars || series.kind == SeriesKind::kBars || series.kind == SeriesKind::kArea;
  }
  append(ys, stackedTops(panel));
  if (bars) ys.push_back(0);
  for (const report::Reference& reference : panel.references) {
    (reference.vertical ? xs : ys).push_back(reference.at);
  }
  const double xMargin = points ? 0.04 : bars ? 0.02 : 0;
  Limits x = limitsOf(panel.x, xs, xMargin), y = limitsOf(panel.y, ys, 0.04);
  if (panel.equalUnits) {
    // One range for both where neither is wanted: what is compared is in the same unit.
    const Limits both{std::min(x.least, y.least), std::max(x.most, y.most)};
    if (!panel.x.least && !panel.y.least) x.least = y.least = both.least;
    if (!panel.x.most && !panel.y.most) x.most = y.most = both.most;
  }
  return {Scale(panel.x.scale, x.least, x.most), Scale(panel.y.scale, y.least, y.most)};
}

}  // namespace survmeth::pictures
