// Incidences as figures.
#include <cmath>
#include <string>
#include <vector>

#include "analysis/incidence/describe.h"
#include "analysis/stepFigure.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/lists.h"

namespace survmeth::analysis {
namespace {

namespace incidence = engine::incidence;

// The numbers that a curve of the figure looks at.
struct Levels {
  std::vector<double> level, lower, upper;
};

Levels levelsOf(const incidence::Curve& curve, std::size_t cause, const IncidenceRequest& request) {
  const double z = engine::curves::normalQuantile(1 - request.alpha);
  Levels levels;
  for (std::size_t i = 0; i < curve.time.size(); ++i) {
    const incidence::CauseCurve& of = curve.causes[cause];
    const auto limits = incidence::limits(of.incidence[i], of.standardError(i), z, request.scale);
    levels.lower.push_back(limits.lower);
    levels.upper.push_back(limits.upper);
  }
  return levels;
}

StepCurve stepOf(std::string name, const incidence::Curve& curve, std::span<const double> level) {
  return {std::move(name), curve.time, level, {}, {}, curve.censoredAt, curve.atRisk};
}

std::string panelTitle(const IncidenceOfType& type, const IncidenceRequest& request) {
  std::string title = request.status + " " + type.label;
  if (type.test && type.test->reason.empty()) {
    title += ", Gray's test " + report::pValueInWords(type.test->pValue);
  }
  return title;
}

std::optional<report::Figure> figureOf(const IncidenceAnswer& answer,
                                       const IncidenceRequest& request, bool limits) {
  if (answer.types.empty()) return {};
  report::Figure figure;
  figure.id = "incidence";
  figure.title = "Cumulative incidence";
  if (!request.group.empty()) figure.title += " by " + text::joined(request.group);
  for (const IncidenceOfType& type : answer.types) {
    std::vector<StepCurve> curves;
    std::vector<Levels> levels(answer.curves.size());
    for (std::size_t g = 0; g < answer.curves.size(); ++g) {
      const incidence::Curve& curve = answer.curves[g];
      StepCurve& step = curves.emplace_back(stepOf(answer.several() ? answer.group.labels[g] : "",
                                                   curve, curve.causes[type.cause].incidence));
      if (!limits) continue;
      levels[g] = levelsOf(curve, type.cause, request);
      step.lower = levels[g].lower;
      step.upper = levels[g].upper;
    }
    const std::vector<StepCurve> counted = curves;
    if (request.kaplanMeier) {
      for (std::size_t g = 0; g < answer.curves.size(); ++g) {
        const incidence::Curve& curve = answer.curves[g];
        levels[g].level = incidence::kaplanMeierComplement(curve, type.cause);
        curves.push_back(stepOf((answer.several() ? answer.group.labels[g] + ", " : "") +
                                    "1 - Kaplan-Meier (overstates)",
                                curve, levels[g].level));
      }
    }
    report::Panel& panel =
        figure.panels.emplace_back(stepPanel(request.time, "Cumulative incidence", 0, curves));
    panel.title = panelTitle(type, request);
    if (!figure.riskTable) figure.riskTable = riskTableOf(panel, answer.group.labels, counted);
  }
  shareHeight(figure);
  return figure;
}

// Places at which the picture of stacked curves has a corner: steps closer than this part of the
// axes are one in print.
std::vector<std::size_t> corners(const incidence::Curve& curve) {
  constexpr double kStep = 1.0 / 2000;
  std::vector<std::size_t> at;
  for (std::size_t i = 0; i < curve.time.size(); ++i) {
    bool differs = at.empty() || i + 1 == curve.time.size();
    for (const incidence::CauseCurve& of : curve.causes) {
      differs = differs || std::fabs(of.incidence[i] - of.incidence[at.back()]) > kStep;
    }
    if (differs) at.push_back(i);
  }
  return at;
}

}  // namespace

std::optional<report::Figure> incidenceFigure(const IncidenceAnswer& answer,
                                              const IncidenceRequest& request) {
  std::optional<report::Figure> figure = figureOf(answer, request, true);
  if (!figure) return figure;
  figure->caption = "Aalen-Johansen curves with " + report::confidence(request.alpha) +
                    " limits, other events competing; a tick is a censoring.";
  if (request.kaplanMeier) {
    figure->caption +=
        " 1 - Kaplan-Meier takes other events for censorings and overstates the incidence.";
  }
  return figure;
}

std::optional<report::Figure> grayFigure(const IncidenceAnswer& answer,
                                         const IncidenceRequest& request) {
  std::optional<report::Figure> figure = figureOf(answer, request, false);
  if (figure) {
    figure->caption = "Aalen-Johansen curves, other events competing; a tick is a censoring.";
  }
  return figure;
}

std::optional<report::Figure> stackedFigure(const IncidenceAnswer& answer,
                                            const IncidenceRequest& request) {
  if (answer.causes.empty()) return {};
  report::Figure figure;
  figure.id = "stacked";
  figure.title = "Cumulative incidence, stacked";
  figure.caption =
      "Aalen-Johansen curves one above the other: what is left up to 1 is free of "
      "any event.";
  std::vector<StepCurve> curves;
  std::vector<std::string> groups = answer.group.labels;
  for (std::size_t g = 0; g < answer.curves.size(); ++g) {
    const incidence::Curve& curve = answer.curves[g];
    if (answer.several()) groups[g] = text::joined(request.group) + " " + groups[g];
    curves.push_back(stepOf(groups[g], curve, curve.survival));
  }
  for (std::size_t g = 0; g < answer.curves.size(); ++g) {
    // The axis of all groups, without their curves.
    report::Panel panel = stepPanel(request.time, "Cumulative incidence", 0, curves);
    panel.series.clear();
    panel.x.most = curves[0].time.back();
    for (const StepCurve& each : curves) panel.x.most = std::fmax(*panel.x.most, each.time.back());
    panel.y.most = 1;
    if (answer.several()) panel.title = groups[g];
    const incidence::Curve& curve = answer.curves[g];
    const std::vector<std::size_t> at = corners(curve);
    for (std::size_t c = 0; c < answer.causes.size(); ++c) {
      report::Series& area = panel.series.emplace_back();
      area.name = request.status + " " + answer.causeLabel(c);
      area.kind = report::SeriesKind::kArea;
      area.stepped = true;
      area.x = {0};
      area.y = {0};
      for (const std::size_t i : at) {
        area.x.push_back(curve.time[i]);
        area.y.push_back(curve.causes[c].incidence[i]);
      }
    }
    if (!figure.riskTable) {
      figure.riskTable = riskTableOf(panel, groups, curves);
      figure.riskTable->eachPanel = answer.several();
    }
    figure.panels.push_back(std::move(panel));
  }
  return figure;
}

}  // namespace survmeth::analysis
