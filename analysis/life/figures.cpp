// Curves of the groups.
#include <string>
#include <utility>
#include <vector>

#include "analysis/life/describe.h"
#include "analysis/limits.h"
#include "analysis/stepFigure.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/lists.h"

namespace survmeth::analysis {

report::Figure lifeSurvivalFigure(const LifeAnswer& answer, const LifeRequest& request) {
  const std::vector<std::string>& labels = answer.rows.groups.labels;
  const bool several = answer.rows.several();
  std::vector<StepCurve> curves;
  for (const engine::curves::Curve& each : answer.curves) {
    curves.push_back({several ? labels[curves.size()] : "", each.time, each.survival, each.lower,
                      each.upper, each.censoredAt, each.atRisk});
  }
  const std::string group = text::joined(request.group);
  std::string title = group.empty() ? "Survival" : "Survival by " + group;
  if (several && answer.comparison.exists()) {
    title += ", log-rank " + report::pValueInWords(answer.comparison.tests.front().test.pValue);
  }
  report::Panel panel = stepPanel(request.time, "Survival", 1, curves);
  panel.y.most = 1;
  report::RiskTable atRisk = riskTableOf(panel, labels, curves);
  report::Figure figure =
      report::figureOf("survival", std::move(title),
                       "Kaplan-Meier curves with " + report::confidence(request.alpha) +
                           " limits (" + limitsName(request.limits) + "); a tick is a censoring.",
                       std::move(panel));
  figure.riskTable = std::move(atRisk);
  return figure;
}

}  // namespace survmeth::analysis
