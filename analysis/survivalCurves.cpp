// The curves: counts by time go through RunLife in its counts format, whose number at risk starts
// at the sum of the counts (in the plain format it would start at the number of rows, whatever the
// weights). Limits and median are the facade's own.
#include "analysis/survivalCurves.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "Dist/Dist"
#include "analysis/checks.h"
#include "numerics/elementary.h"
#include "survival/survival.h"

namespace survmeth {
namespace {

constexpr short kTrue = -1, kFalse = 0;
constexpr std::size_t kColumns = 12;  // of the Kaplan-Meier table
enum TableColumn { kTime = 0, kAtRisk = 2, kEvents = 3, kCensored = 4, kSurvival = 7, kSum = 10 };

SurvivalCurve estimate(std::vector<TimeCounts> counts) {
  const std::size_t m = counts.size();
  std::vector<double> time(m), status(m), weight(m);
  for (std::size_t i = 0; i < m; ++i) {
    time[i] = counts[i].time;
    status[i] = counts[i].events;
    weight[i] = counts[i].censored;
  }
  counts = {};
  std::vector<double> intervals(2 * (m + 1)), table(kColumns * (m + 2));
  double bounds = 0, grid = 0, total = 0;
  int offset = 0, nRows = 0;
  const int rows = static_cast<int>(m);
  RunLife(rows, 1, &offset, 0, 0.0, 0, 1, rows, 1, 0, 0, time.data(), status.data(), weight.data(),
          kTrue, kFalse, kFalse, kFalse, &bounds, intervals.data(), &total, table.data(), &nRows,
          &grid);
  if (nRows != rows) throw std::logic_error("the estimator ended before the data did");

  SurvivalCurve curve;
  curve.n = total;
  const auto column = [&](TableColumn which) {
    const auto first = table.begin() + static_cast<std::ptrdiff_t>(which * (m + 2) + 1);
    return std::vector<double>(first, first + static_cast<std::ptrdiff_t>(m));
  };
  curve.time = column(kTime);
  curve.atRisk = column(kAtRisk);
  curve.eventsAt = column(kEvents);
  curve.censoredAt = column(kCensored);
  curve.survival = column(kSurvival);
  curve.greenwoodSum = column(kSum);
  for (std::size_t i = 0; i < m; ++i) {
    curve.events += curve.eventsAt[i];
    curve.censored += curve.censoredAt[i];
    // The entry point carries the sum of the row before; the term that belongs here is infinite.
    if (curve.survival[i] == 0) curve.greenwoodSum[i] = kNone;
  }
  return curve;
}

void addLimits(SurvivalCurve& curve, double alpha, CurveLimits kind) {
  const double z = std::fabs(InvCDFNormalStd(1 - alpha / 2));
  curve.lower.reserve(curve.time.size());
  curve.upper.reserve(curve.time.size());
  for (std::size_t i = 0; i < curve.time.size(); ++i) {
    const SurvivalLimits limits = survivalLimits(curve.survival[i], curve.greenwoodSum[i], z, kind);
    curve.lower.push_back(limits.lower);
    curve.upper.push_back(limits.upper);
  }
}

// Where `level`, which never rises, crosses 1/2; stretches where it does not exist are passed over.
double crossing(const std::vector<double>& time, const std::vector<double>& level) {
  const double tolerance = std::sqrt(std::numeric_limits<double>::epsilon());
  std::size_t at = 0;
  while (at < level.size() && !(level[at] <= 0.5 + tolerance)) ++at;
  if (at == level.size()) return kNone;
  if (level[at] < 0.5 - tolerance) return time[at];
  std::size_t end = at, last = at;
  while (end < level.size() && !(level[end] < 0.5 - tolerance)) {
    if (!std::isnan(level[end])) last = end;
    ++end;
  }
  return 0.5 * (time[at] + time[end < level.size() ? end : last]);
}

}  // namespace

SurvivalLimits survivalLimits(double survival, double greenwoodSum, double z, CurveLimits kind) {
  if (!(survival > 0)) return {};
  const double spread = z * std::sqrt(greenwoodSum);
  switch (kind) {
    case CurveLimits::kPlain:
      return {std::max(survival - spread * survival, 0.0),
              std::min(survival + spread * survival, 1.0)};
    case CurveLimits::kLog:
      return {survival * numerics::exp(-spread), std::min(survival * numerics::exp(spread), 1.0)};
    case CurveLimits::kLogLog:
      break;
  }
  if (!(survival < 1)) return {};
  const double logSurvival = numerics::log(survival);
  const double centre = numerics::log(-logSurvival);
  return {numerics::exp(-numerics::exp(centre - spread / logSurvival)),
          numerics::exp(-numerics::exp(centre + spread / logSurvival))};
}

double SurvivalCurve::standardError(std::size_t i) const {
  return survival[i] * std::sqrt(greenwoodSum[i]);
}

std::vector<double> SurvivalCurve::standardErrors() const {
  std::vector<double> errors(time.size());
  for (std::size_t i = 0; i < errors.size(); ++i) errors[i] = standardError(i);
  return errors;
}

std::string limitsName(CurveLimits limits) {
  if (limits == CurveLimits::kPlain) return "plain";
  return limits == CurveLimits::kLog ? "log" : "log-log";
}

Estimate medianOf(const SurvivalCurve& curve) {
  return {crossing(curve.time, curve.survival), crossing(curve.time, curve.lower),
          crossing(curve.time, curve.upper)};
}

CurveResult survivalCurves(const CurveRequest& request) {
  requireAlpha(request.alpha);
  const Tally tally(request.data);
  CurveResult result;
  result.curves.reserve(tally.groups());
  for (std::size_t g = 0; g < tally.groups(); ++g) {
    result.curves.push_back(estimate(tally.counts(g)));
    SurvivalCurve& curve = result.curves.back();
    curve.rows = tally.rows(g);
    addLimits(curve, request.alpha, request.limits);
    curve.median = medianOf(curve);
    result.n += curve.n;
    result.events += curve.events;
    result.censored += curve.censored;
  }
  result.comparison = compareCurves(result.curves);
  return result;
}

}  // namespace survmeth
