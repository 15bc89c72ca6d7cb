#include "analysis/stepFigure.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "report/build.h"

namespace survmeth::analysis {
namespace {

// Steps closer than this part of the axes are one in print.
constexpr double kStep = 1.0 / 2000;
constexpr double kMostIntervals = 8;  // between the ticks of the time axis

double endOf(const std::vector<StepCurve>& curves) {
  double end = 0;
  for (const StepCurve& curve : curves) end = std::max(end, curve.time.back());
  return end > 0 ? end : 1;
}

// The elements at which the drawn curve has a corner.
std::vector<std::size_t> corners(const StepCurve& curve, double origin, double end) {
  std::vector<std::size_t> at;
  double time = -end, drawn = INFINITY, level = origin;
  for (std::size_t i = 0; i < curve.time.size(); ++i) {
    const bool last = i + 1 == curve.time.size();
    if (curve.level[i] == std::exchange(level, curve.level[i]) && !last) continue;
    if (last || curve.time[i] - time > kStep * end || std::fabs(drawn - level) > kStep) {
      at.push_back(i);
      time = curve.time[i];
      drawn = level;
    }
  }
  return at;
}

std::vector<double> censorings(const StepCurve& curve, double end) {
  std::vector<double> ticks;
  for (std::size_t i = 0; i < curve.time.size(); ++i) {
    if (curve.censored[i] == 0) continue;
    if (ticks.empty() || curve.time[i] - ticks.back() > kStep * end) ticks.push_back(curve.time[i]);
  }
  return ticks;
}

void addCurve(const StepCurve& curve, double origin, double end, report::Panel& panel) {
  constexpr double kNoLimit = std::numeric_limits<double>::quiet_NaN();
  report::Series step, band;
  step.name = band.name = curve.name;
  step.kind = report::SeriesKind::kStep;
  band.kind = report::SeriesKind::kBand;
  band.stepped = true;
  step.x = {0};
  step.y = {origin};
  band.lower = band.upper = {kNoLimit};  // nothing is uncertain before the first event
  bool limits = false;
  for (const std::size_t i : corners(curve, origin, end)) {
    step.x.push_back(curve.time[i]);
    step.y.push_back(curve.level[i]);
    if (curve.lower.empty()) continue;
    band.lower.push_back(curve.lower[i]);
    band.upper.push_back(curve.upper[i]);
    limits = limits || !std::isnan(curve.lower[i]);
  }
  band.x = step.x;
  step.ticks = censorings(curve, end);
  if (limits) panel.series.push_back(std::move(band));
  panel.series.push_back(std::move(step));
}

double atRiskAt(const StepCurve& curve, double time) {
  const auto at = std::lower_bound(curve.time.begin(), curve.time.end(), time);
  return at == curve.time.end() ? 0
                                : curve.atRisk[static_cast<std::size_t>(at - curve.time.begin())];
}

}  // namespace

std::vector<double> timeTicks(double end) {
  if (!(end > 0)) end = 1;
  const double rough = end / kMostIntervals;
  double power = 1;  // of ten, the largest that is not above
  while (power * 10 <= rough) power *= 10;
  while (power > rough && power > 0) power /= 10;
  double step = 10 * power;
  for (const double factor : {5.0, 2.0, 1.0}) {
    if (factor * power >= rough) step = factor * power;
  }
  if (!(step > 0)) return {0};
  std::vector<double> breaks;
  for (int k = 0; k * step <= end; ++k) breaks.push_back(k * step);
  return breaks;
}

report::Panel stepPanel(const std::string& time, const std::string& level, double origin,
                        const std::vector<StepCurve>& curves) {
  const double end = endOf(curves);
  report::Panel panel = report::panelOf(time, level);
  panel.x.least = panel.y.least = 0;
  panel.x.ticks = timeTicks(end);
  panel.y.percent = true;
  for (const StepCurve& curve : curves) addCurve(curve, origin, end, panel);
  return panel;
}

void shareHeight(report::Figure& figure) {
  double top = 0;
  for (const report::Panel& panel : figure.panels) {
    for (const report::Series& each : panel.series) {
      for (const double y : each.y) top = std::fmax(top, y);
      for (const double upper : each.upper) top = std::fmax(top, upper);
    }
  }
  if (!(top > 0) || figure.panels.size() < 2) return;
  const double steps = top > 0.5 ? 10 : top > 0.1 ? 20 : 100;  // of 1
  for (report::Panel& panel : figure.panels) {
    panel.y.most = std::fmin(std::ceil(top * steps) / steps, 1.0);
  }
}

void shareAxes(report::Figure& figure) {
  if (figure.panels.size() < 2) return;
  double end = 0;
  for (const report::Panel& panel : figure.panels) {
    for (const report::Series& each : panel.series) {
      for (const double x : each.x) end = std::fmax(end, x);
    }
  }
  for (report::Panel& panel : figure.panels) {
    if (end > 0) panel.x.most = end;
    panel.x.ticks = timeTicks(end);
  }
  shareHeight(figure);
}

report::RiskTable riskTableOf(const report::Panel& panel, const std::vector<std::string>& labels,
                              const std::vector<StepCurve>& curves) {
  report::RiskTable table{"At risk", panel.x.ticks, labels, {}};
  for (const StepCurve& curve : curves) {
    std::vector<double>& counts = table.counts.emplace_back();
    for (const double each : table.breaks) counts.push_back(atRiskAt(curve, each));
  }
  return table;
}

}  // namespace survmeth::analysis
