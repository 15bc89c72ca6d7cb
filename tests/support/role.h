// What a refusal is about, in the words of the facade's requests.
#ifndef TESTS_SUPPORT_ROLE_H_
#define TESTS_SUPPORT_ROLE_H_

#include <optional>
#include <string>

#include "engine/input.h"

inline std::string nameOf(survmeth::engine::Role role) {
  using survmeth::engine::Role;
  switch (role) {
    case Role::kTime:
      return "time";
    case Role::kEntry:
      return "entry";
    case Role::kEvent:
      return "event";
    case Role::kWeight:
      return "weight";
    case Role::kStrata:
      return "stratum";
    case Role::kSubject:
      return "subject";
    case Role::kGroup:
      return "group";
    case Role::kCluster:
      return "cluster";
    case Role::kCovariate:
      return "covariates";
    case Role::kFirst:
      return "first";
    case Role::kSecond:
      return "second";
    case Role::kClass:
      return "positive";
    case Role::kMarker:
      return "marker";
    case Role::kAlpha:
      return "alpha";
    case Role::kIntervals:
      return "intervals";
    case Role::kPrevalence:
      return "prevalence";
    case Role::kCost:
      return "cost";
    case Role::kRatio:
      return "ratio";
    case Role::kRho:
      return "rho";
    case Role::kRemoval:
      return "removeAt";
    default:
      return "another role";
  }
}

// The row that is at fault, or which of several columns, where there is one.
inline std::optional<std::size_t> indexOf(const survmeth::engine::Refusal& refused) {
  if (refused.row() != survmeth::engine::Refusal::kNone) return refused.row();
  if (refused.column() != survmeth::engine::Refusal::kNone) return refused.column();
  return std::nullopt;
}

#endif  // TESTS_SUPPORT_ROLE_H_
