// Bootstrapped survival as a table.
#include <string>
#include <utility>
#include <vector>

#include "analysis/cox/predict.h"
#include "report/build.h"
#include "report/keys.h"
#include "text/numbers.h"

namespace survmeth::analysis {

namespace key = report::key;
using report::Kind;

report::Column coxWhoColumn(const CoxPredictRequest& request,
                            const std::vector<std::string>& names) {
  if (!request.subject.empty()) return report::labelColumn(key::kSubject, request.subject, names);
  std::vector<double> lines;
  lines.reserve(names.size());
  for (const std::string& name : names) lines.push_back(text::parseNumber(name).value());
  return report::numberColumn(key::kLine, "line", Kind::kCount, lines);
}

report::Table coxSurvivalBootstrapTable(const CoxPredictions& made,
                                        const CoxPredictRequest& request) {
  std::vector<std::string> who;
  std::vector<double> time, survival, bias, error, lower, upper, replicates;
  for (std::size_t i = 0; i < made.at.size(); ++i) {
    for (const CoxSurvival& each : made.at[i]) {
      const auto summary = procedures::summarise(*made.bootstrap, time.size(), 1 - request.alpha,
                                                 request.bootstrapLimits);
      who.push_back(made.who[i]);
      time.push_back(each.time);
      survival.push_back(each.survival);
      bias.push_back(summary.bias);
      error.push_back(summary.standardError);
      lower.push_back(summary.lower);
      upper.push_back(summary.upper);
      replicates.push_back(static_cast<double>(summary.replicates));
    }
  }
  const std::string level = report::confidence(request.alpha);
  return report::tableOf(
      "survivalBootstrap", "Survival by the bootstrap",
      {coxWhoColumn(request, who), report::numberColumn(key::kTime, "time", Kind::kTime, time),
       report::numberColumn(key::kSurvival, "survival", Kind::kProbability, survival),
       report::numberColumn(key::kBias, "bias", Kind::kProbability, bias),
       report::numberColumn(key::kStandardError, "std error", Kind::kProbability, error),
       report::numberColumn(key::kLower, level + " lower", Kind::kProbability, lower),
       report::numberColumn(key::kUpper, level + " upper", Kind::kProbability, upper),
       report::numberColumn(key::kReplicates, "replicates", Kind::kCount, replicates)});
}

}  // namespace survmeth::analysis
