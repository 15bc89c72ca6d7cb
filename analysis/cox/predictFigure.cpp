// Predicted curves with their limits as a figure.
#include <string>
#include <utility>
#include <vector>

#include "analysis/cox/predict.h"
#include "analysis/limits.h"
#include "analysis/stepFigure.h"
#include "report/build.h"
#include "text/words.h"

namespace survmeth::analysis {

std::optional<report::Figure> coxCurveFigure(const CoxPredictions& made,
                                             const CoxPredictRequest& request) {
  struct Drawn {
    std::vector<double> time, level, lower, upper, none;
  };
  std::vector<Drawn> drawn;
  std::vector<std::string> names;
  for (const CoxPredictedCurve& curve : made.curves) {
    if (curve.points.empty() || drawn.size() == kDrawnCurves) continue;
    Drawn& each = drawn.emplace_back();
    for (const CoxSurvival& point : curve.points) {
      each.time.push_back(point.time);
      each.level.push_back(point.survival);
      each.lower.push_back(point.lower);
      each.upper.push_back(point.upper);
      each.none.push_back(0);
    }
    names.push_back(request.subject.empty() ? "line " + curve.name : curve.name);
    if (!curve.stratum.empty()) names.back() += ", " + curve.stratum;
  }
  if (drawn.empty()) return std::nullopt;
  std::vector<StepCurve> curves;
  for (const Drawn& each : drawn) {
    curves.push_back({made.who.size() > 1 ? names[curves.size()] : "", each.time, each.level,
                      each.lower, each.upper, each.none, each.none});
  }
  report::Panel panel = stepPanel("Time", "Survival", 1, curves);
  panel.y.most = 1;
  std::string caption = "Survival at the covariates of each " +
                        std::string(request.subject.empty() ? "row" : "subject") + " with " +
                        report::confidence(request.alpha) + " limits (" +
                        limitsName(request.survivalLimits) + ")";
  if (made.who.size() > drawn.size()) {
    caption += "; the first " + std::to_string(drawn.size()) + " of " +
               text::grouped(made.who.size()) + " are drawn";
  }
  return report::figureOf("predictedSurvival", "Predicted survival", caption + ".",
                          std::move(panel));
}

}  // namespace survmeth::analysis
