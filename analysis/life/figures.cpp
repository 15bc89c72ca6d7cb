// Curves of the groups: survival, incidence, cumulative hazard, log(-log S), smoothed hazard.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "analysis/life/describe.h"
#include "analysis/limits.h"
#include "analysis/stepFigure.h"
#include "engine/curves/limits.h"
#include "numerics/elementary.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/lists.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;
using curves::Curve;

// What is drawn of one group, at its distinct times.
struct Drawn {
  std::vector<double> level, lower, upper;
};

std::string labelOf(const LifeAnswer& answer, std::size_t group) {
  return answer.rows.several() ? answer.labels()[group] : "";
}

std::string titled(const LifeAnswer& answer, const char* what) {
  const std::string group = text::joined(answer.request.group);
  return group.empty() ? what : std::string(what) + " by " + group;
}

std::string withTest(const LifeAnswer& answer, std::string title) {
  if (!answer.rows.several() || !answer.comparison.exists()) return title;
  const LifeTest& first = answer.comparison.tests.front();
  std::string name = first.name;
  if (name == "Log-rank") name = "log-rank";
  return std::move(title) + ", " + name + " " + report::pValueInWords(first.test.pValue);
}

// "95% limits (log-log)", or the band that is drawn in their place.
std::string limitsInWords(const LifeAnswer& answer) {
  const std::string level = report::confidence(answer.request.alpha);
  const std::string scale = " (" + limitsName(answer.request.limits) + ")";
  if (answer.bands.empty()) return level + " limits" + scale;
  return std::string(lifeBandName(answer)) + " " + level + " bands" + scale;
}

const std::vector<double>& lowerOf(const LifeAnswer& answer, std::size_t group) {
  return answer.bands.empty() ? answer.curves[group].lower : answer.bands[group].lower;
}
const std::vector<double>& upperOf(const LifeAnswer& answer, std::size_t group) {
  return answer.bands.empty() ? answer.curves[group].upper : answer.bands[group].upper;
}

std::vector<double> complements(const std::vector<double>& values) {
  std::vector<double> result;
  result.reserve(values.size());
  for (const double each : values) result.push_back(1 - each);
  return result;
}

report::RiskTable riskTable(const LifeAnswer& answer, std::vector<double> breaks) {
  const auto counts = curves::riskTable(answer.rows.response(), answer.rows.rows(),
                                        answer.rows.groupCodes(), breaks);
  using Count = curves::RiskCount;
  const auto of = [](const std::string& row) {
    if (row == "events") return std::pair("Events", &Count::events);
    if (row == "cumulative-events") {
      return std::pair("Cumulative events", &Count::cumulativeEvents);
    }
    if (row == "censored") return std::pair("Censored", &Count::cumulativeCensored);
    return std::pair("At risk", &Count::atRisk);
  };
  std::vector<std::string> rows = answer.request.riskRows;
  if (rows.empty()) rows = {"at-risk"};
  report::RiskTable table{of(rows.front()).first, std::move(breaks), {}, {}};
  for (const std::string& row : rows) {
    const auto [title, member] = of(row);
    if (!table.rows.empty()) {
      table.rows.emplace_back(title);
      table.counts.emplace_back();
    }
    for (std::size_t g = 0; g < counts.size(); ++g) {
      table.rows.push_back(answer.labels()[g]);
      std::vector<double>& cells = table.counts.emplace_back();
      for (const Count& each : counts[g]) cells.push_back(each.*member);
    }
  }
  return table;
}

// A figure of steps from `origin` on.
report::Figure stepFigure(const LifeAnswer& answer, const char* id, std::string title,
                          std::string caption, const char* level, double origin,
                          const std::vector<Drawn>& drawn) {
  std::vector<StepCurve> steps;
  for (std::size_t g = 0; g < drawn.size(); ++g) {
    const Curve& curve = answer.curves[g];
    steps.push_back({labelOf(answer, g), curve.time, drawn[g].level, drawn[g].lower, drawn[g].upper,
                     curve.censoredAt, curve.atRisk});
  }
  report::Panel panel = stepPanel(answer.request.time, level, origin, steps);
  std::vector<double> breaks =
      answer.request.riskAt.empty() ? panel.x.ticks : answer.request.riskAt;
  panel.x.ticks = breaks;
  report::Figure figure =
      report::figureOf(id, std::move(title), std::move(caption), std::move(panel));
  figure.riskTable = riskTable(answer, std::move(breaks));
  return figure;
}

}  // namespace

std::vector<double> lifeRiskTimes(const LifeAnswer& answer) {
  if (!answer.request.riskAt.empty()) return answer.request.riskAt;
  double end = 0;
  for (const Curve& curve : answer.curves) end = std::max(end, curve.time.back());
  return timeTicks(end);
}

report::Figure lifeSurvivalFigure(const LifeAnswer& answer) {
  std::vector<Drawn> drawn;
  for (std::size_t g = 0; g < answer.curves.size(); ++g) {
    drawn.push_back({answer.curves[g].survival, lowerOf(answer, g), upperOf(answer, g)});
  }
  report::Figure figure =
      stepFigure(answer, "survival", withTest(answer, titled(answer, "Survival")),
                 lifeEstimateName(answer) + " curves with " + limitsInWords(answer) +
                     "; a tick is a censoring.",
                 "Survival", 1, drawn);
  figure.panels.front().y.most = 1;
  return figure;
}

report::Figure lifeIncidenceFigure(const LifeAnswer& answer) {
  std::vector<Drawn> drawn;
  for (std::size_t g = 0; g < answer.curves.size(); ++g) {
    drawn.push_back({complements(answer.curves[g].survival), complements(upperOf(answer, g)),
                     complements(lowerOf(answer, g))});
  }
  return stepFigure(answer, "incidence", withTest(answer, titled(answer, "Incidence")),
                    "1 - survival (" + lifeEstimateName(answer) + ") with " +
                        limitsInWords(answer) + "; a tick is a censoring.",
                    "Incidence", 0, drawn);
}

report::Figure lifeCumulativeHazardFigure(const LifeAnswer& answer) {
  const double z = curves::normalQuantile(1 - answer.request.alpha);
  std::vector<Drawn> drawn;
  for (const Curve& curve : answer.curves) {
    Drawn& made = drawn.emplace_back(Drawn{curve.hazard, {}, {}});
    for (std::size_t i = 0; i < curve.time.size(); ++i) {
      const curves::Interval limits =
          curves::hazardLimits(curve.hazard[i], curve.hazardError(i), z, curves::Scale::kLog);
      made.lower.push_back(limits.lower);
      made.upper.push_back(limits.upper);
    }
  }
  report::Figure figure =
      stepFigure(answer, "cumulativeHazard", titled(answer, "Cumulative hazard"),
                 "Cumulative hazard (" +
                     std::string(answer.request.estimate == LifeEstimate::kFlemingHarrington
                                     ? "Fleming-Harrington"
                                     : "Nelson-Aalen") +
                     ") with " + report::confidence(answer.request.alpha) +
                     " limits (log); a tick is a "
                     "censoring.",
                 "Cumulative hazard", 0, drawn);
  figure.panels.front().y.percent = false;
  return figure;
}

std::optional<report::Figure> lifeLogLogFigure(const LifeAnswer& answer) {
  report::Panel panel = report::panelOf(answer.request.time, "log(-log survival)");
  panel.x.scale = report::Scale::kLog;
  for (std::size_t g = 0; g < answer.curves.size(); ++g) {
    const Curve& curve = answer.curves[g];
    report::Series step;
    step.kind = report::SeriesKind::kStep;
    step.name = labelOf(answer, g);
    double drawn = 1;
    for (std::size_t i = 0; i < curve.time.size(); ++i) {
      const double s = curve.survival[i];
      const bool last = i + 1 == curve.time.size();
      if (!(curve.time[i] > 0 && s > 0 && s < 1)) continue;
      // Steps of less than 1/2000 are one in print.
      const double level = numerics::log(-numerics::log(s));
      if (!last && !step.y.empty() && std::fabs(level - drawn) < 1.0 / 2000) continue;
      step.x.push_back(curve.time[i]);
      step.y.push_back(drawn = level);
    }
    if (!step.x.empty()) panel.series.push_back(std::move(step));
  }
  if (panel.series.empty()) return {};
  return report::figureOf("logLog", titled(answer, "log(-log survival)"),
                          "log(-log S) against the logarithm of time (" + lifeEstimateName(answer) +
                              "); parallel where hazards are proportional.",
                          std::move(panel));
}

std::optional<report::Figure> lifeHazardFigure(const LifeAnswer& answer) {
  if (answer.readings.hazards.empty()) return {};
  report::Panel panel = report::panelOf(answer.request.time, "Hazard");
  panel.x.least = panel.y.least = 0;
  // Where few are left the limits are many times the rate: they leave the frame.
  double top = 0;
  for (const auto& group : answer.readings.hazards) {
    for (const curves::HazardRate& each : group) top = std::max(top, 2 * each.rate);
  }
  if (top > 0) panel.y.most = top;
  for (std::size_t g = 0; g < answer.readings.hazards.size(); ++g) {
    report::Series line, band;
    line.name = band.name = labelOf(answer, g);
    line.kind = report::SeriesKind::kLine;
    band.kind = report::SeriesKind::kBand;
    for (const curves::HazardRate& each : answer.readings.hazards[g]) {
      line.x.push_back(each.time);
      line.y.push_back(std::max(each.rate, 0.0));
      band.lower.push_back(each.lower);
      band.upper.push_back(std::isnan(each.upper) ? each.upper : std::min(each.upper, top));
    }
    if (line.x.empty()) continue;
    band.x = line.x;
    panel.series.push_back(std::move(band));
    panel.series.push_back(std::move(line));
  }
  return report::figureOf(
      "hazard", titled(answer, "Smoothed hazard"),
      "Smoothed hazard with " + report::confidence(answer.request.alpha) + " limits (log).",
      std::move(panel));
}

}  // namespace survmeth::analysis
