// Options of survmeth cox that do not go together.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "analysis/cox/request.h"
#include "analysis/cox/residualKinds.h"
#include "analysis/option.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

using text::nearestFirst;
using text::quote;

bool has(const std::vector<std::string>& list, const std::string& item) {
  return std::find(list.begin(), list.end(), item) != list.end();
}

// A formula, or the options that say the same, and not both.
void checkModel(const CoxRequest& request) {
  const std::pair<const char*, bool> parts[] = {{"time", !request.time.empty()},
                                                {"event", !request.event.empty()},
                                                {"covariates", !request.covariates.empty()},
                                                {"entry", !request.entry.empty()},
                                                {"strata", !request.strata.empty()}};
  if (!request.formula.empty()) {
    for (const auto& [name, given] : parts) {
      if (given) {
        throw BadOption(name, "stands beside --formula, which says it; expected one of the two");
      }
    }
    return;
  }
  const bool any =
      std::any_of(std::begin(parts), std::end(parts), [](const auto& part) { return part.second; });
  if (!any) {
    throw BadOption("formula", request.cases
                                   ? "is missing; expected FORMULA"
                                   : "is missing; expected FORMULA, or --time, --event and "
                                     "--covariates");
  }
  for (std::size_t i = 0; i < 3; ++i) {
    if (parts[i].second) continue;
    throw BadOption(parts[i].first, i < 2 ? "is missing; expected COL, or --formula instead"
                                          : "is missing; expected COL,COL, or --formula instead");
  }
  requireAmong(request.factors, request.covariates, "factor", "covariate");
}

void checkResiduals(const CoxRequest& request) {
  if (!request.residuals) {
    if (!request.residualKinds.empty()) {
      throw BadOption("residual-kinds", "stands without --residuals; expected both or none");
    }
    if (request.byCluster) {
      throw BadOption("by-cluster", "stands without --residuals; expected both or none");
    }
  }
  for (const std::string& kind : request.residualKinds) {
    if (!has(coxResidualKinds(), kind)) {
      throw BadOption("residual-kinds", "there is no " + quote(kind) + "; expected some of " +
                                            nearestFirst(kind, coxResidualKinds()));
    }
    if (request.byCluster && isOfEvents(kind)) {
      throw BadOption("residual-kinds", quote(kind) +
                                            " is of events and has no sum over a cluster; "
                                            "expected others with --by-cluster");
    }
  }
}

}  // namespace

void checkCox(const CoxRequest& request) {
  checkModel(request);
  for (const std::string& reference : request.references) {
    const std::size_t sign = reference.find('=');
    if (sign == 0 || sign == std::string::npos || sign + 1 == reference.size()) {
      throw BadOption("reference",
                      quote(reference) + " names no level of a column; expected COL=LEVEL");
    }
  }
  if (request.remove && request.select == CoxSelection::kNone) {
    throw BadOption("remove", "stands without --select backward; expected both or none");
  }
  if (request.weightsAre == engine::WeightKind::kSampling && request.weights.empty()) {
    throw BadOption("weights-are", "stands without --weights; expected both or none");
  }
  if (request.origin == CoxOrigin::kZero && !request.baseline) {
    throw BadOption("baseline-at", "stands without --baseline; expected both or none");
  }
  checkResiduals(request);
}

}  // namespace survmeth::analysis
