#include "analysis/curveFigure.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "report/build.h"
#include "report/numbers.h"

namespace survmeth::analysis {
namespace {

// Steps closer than this part of the axes are one in print.
constexpr double kStep = 1.0 / 2000;
constexpr double kMostIntervals = 8;  // between the ticks of the time axis

double endOf(const std::vector<SurvivalCurve>& curves) {
  double end = 0;
  for (const SurvivalCurve& curve : curves) end = std::max(end, curve.time.back());
  return end > 0 ? end : 1;
}

// From 0, 1, 2 or 5 times a power of ten apart.
std::vector<double> breaksTo(double end) {
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

// The elements at which the drawn curve has a corner.
std::vector<std::size_t> corners(const SurvivalCurve& curve, double end) {
  std::vector<std::size_t> at;
  double time = -end, survival = 2;
  for (std::size_t i = 0; i < curve.time.size(); ++i) {
    const bool last = i + 1 == curve.time.size();
    if (curve.eventsAt[i] == 0 && !last) continue;
    if (last || curve.time[i] - time > kStep * end || survival - curve.survival[i] > kStep) {
      at.push_back(i);
      time = curve.time[i];
      survival = curve.survival[i];
    }
  }
  return at;
}

std::vector<double> censorings(const SurvivalCurve& curve, double end) {
  std::vector<double> ticks;
  for (std::size_t i = 0; i < curve.time.size(); ++i) {
    if (curve.censoredAt[i] == 0) continue;
    if (ticks.empty() || curve.time[i] - ticks.back() > kStep * end) ticks.push_back(curve.time[i]);
  }
  return ticks;
}

void addCurve(const SurvivalCurve& curve, const std::string& name, double end,
              report::Panel& panel) {
  constexpr double kNoLimit = std::numeric_limits<double>::quiet_NaN();
  report::Series step, band;
  step.name = band.name = name;
  step.kind = report::SeriesKind::kStep;
  band.kind = report::SeriesKind::kBand;
  band.stepped = true;
  step.x = band.x = {0};
  step.y = {1};
  band.lower = band.upper = {kNoLimit};  // nothing is uncertain before the first event
  bool limits = false;
  for (const std::size_t i : corners(curve, end)) {
    step.x.push_back(curve.time[i]);
    step.y.push_back(curve.survival[i]);
    band.lower.push_back(curve.lower[i]);
    band.upper.push_back(curve.upper[i]);
    limits = limits || !std::isnan(curve.lower[i]);
  }
  band.x = step.x;
  step.ticks = censorings(curve, end);
  if (limits) panel.series.push_back(std::move(band));
  panel.series.push_back(std::move(step));
}

double atRiskAt(const SurvivalCurve& curve, double time) {
  const auto at = std::lower_bound(curve.time.begin(), curve.time.end(), time);
  return at == curve.time.end() ? 0
                                : curve.atRisk[static_cast<std::size_t>(at - curve.time.begin())];
}

}  // namespace

report::Figure survivalFigure(const CurveResult& result, CurveLimits limits,
                              const CurveNames& names) {
  const std::vector<SurvivalCurve>& curves = result.curves;
  const double end = endOf(curves);
  report::Figure figure;
  figure.id = "survival";
  figure.title = names.group.empty() ? "Survival" : "Survival by " + names.group;
  if (curves.size() > 1 && result.comparison.reason.empty()) {
    figure.title +=
        ", log-rank " + report::pValueInWords(result.comparison[CurveTest::kLogRank].pValue);
  }
  figure.caption = "Kaplan-Meier curves with " + report::confidence(names.alpha) + " limits (" +
                   limitsName(limits) + "); a tick is a censoring.";
  report::Panel panel;
  panel.x.label = names.time;
  panel.x.least = 0;
  panel.x.ticks = breaksTo(end);
  panel.y.label = "Survival";
  panel.y.least = 0;
  panel.y.most = 1;
  panel.y.percent = true;
  report::RiskTable atRisk{"At risk", panel.x.ticks, names.labels, {}};
  for (std::size_t g = 0; g < curves.size(); ++g) {
    addCurve(curves[g], curves.size() > 1 ? names.labels[g] : "", end, panel);
    std::vector<double>& counts = atRisk.counts.emplace_back();
    for (const double each : atRisk.breaks) counts.push_back(atRiskAt(curves[g], each));
  }
  figure.panels.push_back(std::move(panel));
  figure.riskTable = std::move(atRisk);
  return figure;
}

}  // namespace survmeth::analysis
