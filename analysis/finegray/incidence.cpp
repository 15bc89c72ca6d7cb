#include "analysis/finegray/incidence.h"

#include "analysis/stepFigure.h"
#include "engine/curves/limits.h"
#include "engine/incidence/curve.h"
#include "numerics/elementary.h"
#include "report/build.h"
#include "report/keys.h"

namespace survmeth::analysis {

using engine::curves::Interval;
using engine::curves::Scale;

const std::vector<std::pair<std::string, IncidenceScale>>& incidenceScales() {
  static const std::vector<std::pair<std::string, IncidenceScale>> scales = {
      {"cloglog", IncidenceScale::kComplementary},
      {"log-log", IncidenceScale::kLogLog},
      {"log", IncidenceScale::kLog},
      {"plain", IncidenceScale::kPlain},
      {"arcsine", IncidenceScale::kArcsine}};
  return scales;
}

std::string nameOf(IncidenceScale scale) {
  for (const auto& [name, its] : incidenceScales()) {
    if (its == scale) return name;
  }
  return "";
}

namespace {

// The same scale of an incidence as curves have it.
Scale plainScaleOf(IncidenceScale scale) {
  switch (scale) {
    case IncidenceScale::kLogLog:
      return Scale::kLogLog;
    case IncidenceScale::kLog:
      return Scale::kLog;
    case IncidenceScale::kArcsine:
      return Scale::kArcsine;
    default:
      return Scale::kPlain;
  }
}

}  // namespace

IncidenceAtTime incidenceOf(double time, const engine::cox::HazardValue& hazard, double z,
                            IncidenceScale scale) {
  IncidenceAtTime at;
  at.time = time;
  at.incidence = -numerics::expm1(-hazard.hazard);
  at.standardError = numerics::exp(-hazard.hazard) * hazard.standardError;
  if (!(hazard.hazard > 0)) return at;
  Interval limits;
  if (scale == IncidenceScale::kComplementary) {
    // Of the hazard: 1 - F has few digits where F is small.
    limits = engine::curves::hazardLimits(hazard.hazard, hazard.standardError, z, Scale::kLog);
    limits = {-numerics::expm1(-limits.lower), -numerics::expm1(-limits.upper)};
  } else {
    limits = engine::incidence::limits(at.incidence, at.standardError, z, plainScaleOf(scale));
  }
  at.lower = limits.lower;
  at.upper = limits.upper;
  return at;
}

std::vector<IncidenceAtTime> incidencesOf(const engine::cox::CumulativeHazard& hazard, double z,
                                          IncidenceScale scale) {
  std::vector<IncidenceAtTime> result;
  result.reserve(hazard.time.size());
  for (std::size_t k = 0; k < hazard.time.size(); ++k) {
    result.push_back(
        incidenceOf(hazard.time[k], {hazard.hazard[k], hazard.standardError[k]}, z, scale));
  }
  return result;
}

void addIncidenceColumns(const std::vector<IncidenceAtTime>& points, double alpha,
                         report::Table& table) {
  const std::string level = report::confidence(alpha);
  const auto add = [&](const char* name, std::string heading, double IncidenceAtTime::*member) {
    table.columns.push_back(
        report::columnOf(name, std::move(heading), report::Kind::kProbability, points, member));
  };
  add(report::key::kCumulativeIncidence, "incidence", &IncidenceAtTime::incidence);
  add(report::key::kStandardError, "std error", &IncidenceAtTime::standardError);
  add(report::key::kLower, level + " lower", &IncidenceAtTime::lower);
  add(report::key::kUpper, level + " upper", &IncidenceAtTime::upper);
}

report::Method incidenceMethod(double alpha, IncidenceScale scale) {
  return {
      "incidence: 1 - exp(-H), H the cumulative subdistribution hazard; its standard error counts "
      "those of coefficients and increments together; limits: " +
          report::confidence(alpha) + " " + nameOf(scale),
      "Fine & Gray, JASA 94 (1999) 496-509, section 4"};
}

report::Panel incidencePanel(const std::vector<IncidenceCurve>& curves, double end) {
  struct Drawn {
    std::vector<double> time, level, lower, upper, none;
  };
  std::vector<Drawn> drawn(curves.size());
  std::vector<StepCurve> steps;
  for (std::size_t i = 0; i < curves.size(); ++i) {
    Drawn& each = drawn[i];
    const auto add = [&each](double time, const IncidenceAtTime& point) {
      each.time.push_back(time);
      each.level.push_back(point.incidence);
      each.lower.push_back(point.lower);
      each.upper.push_back(point.upper);
      each.none.push_back(0);
    };
    for (const IncidenceAtTime& point : curves[i].points) add(point.time, point);
    if (each.time.empty() || each.time.back() < end) {
      IncidenceAtTime last;
      last.incidence = 0;
      add(end, curves[i].points.empty() ? last : curves[i].points.back());
    }
    steps.push_back(
        {curves[i].name, each.time, each.level, each.lower, each.upper, each.none, each.none});
  }
  report::Panel panel = stepPanel("Time", "Cumulative incidence", 0, steps);
  panel.y.percent = true;
  return panel;
}

}  // namespace survmeth::analysis
