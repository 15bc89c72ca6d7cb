// Concordance of a score with censored times, without a regression.
#ifndef ANALYSIS_CONCORDANCE_H_
#define ANALYSIS_CONCORDANCE_H_

#include <cstdint>
#include <span>

namespace survmeth::analysis {

// Of the pairs whose order is known, the share in which the higher score fails first; tied scores
// count half.
//
// In   time[n]    finite; times that differ by rounding alone are one
//      event[n]   1: fails, 0: censored
//      score[n]   finite
// Edge no comparable pair: NaN
// Throws engine::Refusal: a number that is not finite
// Cost O(n log n)
// Source Harrell et al., JAMA 247 (1982) 2543-2546
double concordanceOf(std::span<const double> time, std::span<const std::uint32_t> event,
                     std::span<const double> score);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_CONCORDANCE_H_
