// The residuals that a person can ask for, by name.
#ifndef ANALYSIS_COX_RESIDUAL_KINDS_H_
#define ANALYSIS_COX_RESIDUAL_KINDS_H_

#include <string>
#include <vector>

namespace survmeth::analysis {

inline const std::vector<std::string>& coxResidualKinds() {
  static const std::vector<std::string> kKinds = {
      "martingale", "deviance", "score", "schoenfeld", "scaledSchoenfeld", "dfbeta", "dfbetas"};
  return kKinds;
}

// Those of events, which have no sum over a cluster.
inline bool isOfEvents(const std::string& kind) {
  return kind == "schoenfeld" || kind == "scaledSchoenfeld";
}

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_RESIDUAL_KINDS_H_
