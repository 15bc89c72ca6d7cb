// Concordance of a score with the order of events.
#ifndef ENGINE_COX_CONCORDANCE_H_
#define ENGINE_COX_CONCORDANCE_H_

#include <cstdint>
#include <span>

#include "engine/cox/fit.h"
#include "engine/risk/arrangement.h"

namespace survmeth::engine::cox {

// Pairs of one stratum of which the one fails while the other is at risk and does not fail,
// weighted with both weights.
struct Concordance {
  double concordant = 0.0;  // the higher score fails first
  double discordant = 0.0;
  double tiedScore = 0.0;
  double tiedTime = 0.0;           // both fail at one time: not comparable
  double tiedBoth = 0.0;           // and have one score
  double estimate = kAbsent;       // (concordant + tiedScore / 2) / the first three
  double standardError = kAbsent;  // infinitesimal jackknife
};

// In   score[rows of the arrangement]   higher means earlier
//      cluster[caller's rows]           or empty: the rows whose influences are added up first
//      clusters                         their number
// Edge no comparable pair: no estimate
// Cost O(n log n)
// Source Harrell et al., JAMA 247 (1982) 2543-2546; Therneau & Watson, Mayo Clinic technical
//      report 85 (2015)
Concordance concordance(const risk::Arrangement& arrangement, std::span<const double> score,
                        std::span<const std::uint32_t> cluster, std::size_t clusters);

// Of the fit's linear predictor, offset included.
Concordance concordance(const Fit& fit);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_CONCORDANCE_H_
