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

void requireOne(const char* option, const std::string& given,
                const std::vector<std::string>& choices) {
  if (given.empty() || has(choices, given)) return;
  throw BadOption(
      option, "there is no " + quote(given) + "; expected one of " + nearestFirst(given, choices));
}

void checkSelection(const CoxRequest& request) {
  const bool selects = request.select != CoxSelection::kNone;
  const std::pair<const char*, bool> parts[] = {{"remove", request.remove.has_value()},
                                                {"enter", request.enter.has_value()},
                                                {"criterion", !request.criterion.empty()},
                                                {"force", !request.force.empty()}};
  for (const auto& [option, given] : parts) {
    if (given && !selects) {
      throw BadOption(option, "stands without --select; expected both or none");
    }
  }
  requireOne("criterion", request.criterion, {"p", "aic", "bic"});
  const bool byPValue = request.criterion.empty() || request.criterion == "p";
  if (!byPValue && (request.remove || request.enter)) {
    throw BadOption(
        request.remove ? "remove" : "enter",
        "stands beside --criterion " + request.criterion + "; expected p-values or a criterion");
  }
  if (request.enter && request.select == CoxSelection::kBackward) {
    throw BadOption("enter",
                    "stands beside --select backward, where no term comes in; expected "
                    "forward or both");
  }
  if (request.remove && request.select == CoxSelection::kForward) {
    throw BadOption("remove",
                    "stands beside --select forward, where no term goes; expected "
                    "backward or both");
  }
  if (request.select == CoxSelection::kBoth &&
      request.enter.value_or(0.05) > request.remove.value_or(0.1)) {
    throw BadOption("enter",
                    "is above --remove: a term would come and go; expected one that is not");
  }
}

void checkBootstrap(const CoxRequest& request) {
  const std::pair<const char*, bool> parts[] = {
      {"seed", request.seed.has_value()}, {"bootstrap-limits", !request.bootstrapLimits.empty()}};
  for (const auto& [option, given] : parts) {
    if (given && !request.bootstrap) {
      throw BadOption(option, "stands without --bootstrap; expected both or none");
    }
  }
  requireOne("bootstrap-limits", request.bootstrapLimits, {"percentile", "basic", "bca"});
  if (request.bootstrap && request.isPenalised()) {
    throw BadOption("bootstrap", "has no definition under a penalty; expected one of the two");
  }
}

// Penalties that exclude each other, and what has no definition under one.
void checkPenalties(const CoxRequest& request) {
  if (request.ridgeRaw && !request.ridge) {
    throw BadOption("ridge-raw", "stands without --ridge; expected both or none");
  }
  if (!request.isPenalised()) return;
  if (request.firth && request.ridge) {
    throw BadOption("ridge", "stands beside --firth; expected one of the two");
  }
  const std::string penalty = request.firth ? "--firth" : "--ridge";
  const std::pair<const char*, bool> asked[] = {
      {"limits", !request.firth && request.limits == CoxLimits::kProfile},
      {"drop-one", request.dropOne},
      {"versus", !request.versus.empty()},
      {"zph", request.zph.has_value()},
      {"residuals", request.residuals},
      {"select", request.select != CoxSelection::kNone}};
  for (const auto& [option, given] : asked) {
    if (given) {
      throw BadOption(option, "has no definition under " + penalty + "; expected one of the two");
    }
  }
}

// Nothing is predicted without new data. Of the subjects in these only the fit knows enough.
void checkNewData(const CoxRequest& request) {
  if (!request.newData.empty()) return;
  const std::pair<const char*, bool> wishes[] = {
      {"at", !request.at.empty()},
      {"quantiles", !request.quantiles.empty()},
      {"conf", request.survivalLimits != CoxWishes().survivalLimits},
      {"newdata-reference", request.centre != CoxWishes().centre},
      {"terms", request.parts},
      {"expected", request.expected},
      {"newdata-id", !request.subject.empty()},
      {"curves", request.curves}};
  for (const auto& [option, given] : wishes) {
    if (given) throw BadOption(option, "stands without --newdata; expected both or none");
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
  checkSelection(request);
  checkBootstrap(request);
  if (request.weightsAre == engine::WeightKind::kSampling && request.weights.empty()) {
    throw BadOption("weights-are", "stands without --weights; expected both or none");
  }
  if (request.origin == CoxOrigin::kZero && !request.baseline) {
    throw BadOption("baseline-at", "stands without --baseline; expected both or none");
  }
  checkResiduals(request);
  checkPenalties(request);
  checkNewData(request);
}

}  // namespace survmeth::analysis
