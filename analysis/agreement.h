// Agreement of two measurement methods on the same subjects, and repeatability of one.
#ifndef ANALYSIS_AGREEMENT_H_
#define ANALYSIS_AGREEMENT_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "analysis/estimate.h"

namespace survmeth {

enum class DifferenceKind {
  kAbsolute,  // second - first
  // That over the size of the mean of the two, so that its sign tells which is larger whatever the
  // mean's; a pair with mean 0 has none.
  kRelative,
  kRatio,  // second / first; a pair with first = 0 has none
};

// "b - a", "(b - a) / |mean|" or "b / a", of methods a and b.
std::string differenceName(DifferenceKind kind, const std::string& first,
                           const std::string& second);

struct AgreementRequest {
  std::span<const double> first, second;  // the same length; finite
  DifferenceKind kind = DifferenceKind::kAbsolute;
  double alpha = 0.05;  // in (0, 1); intervals have level 1 - alpha
};

struct AgreementResult {
  std::size_t pairs = 0;     // with a difference
  std::size_t excluded = 0;  // without one: a denominator of 0
  Estimate bias;             // mean difference, interval by Student's t with pairs - 1 degrees
  double sd = 0;             // of the differences, divisor pairs - 1
  double z = 0;              // normal quantile at 1 - alpha / 2
  // bias -+ z sd, each with an interval by Student's t and the variance
  // sd^2 (1 / pairs + z^2 / (2 (pairs - 1))).
  Estimate lowerLimit, upperLimit;
  std::vector<double> means, differences;  // of every pair; NaN where there is no difference
};

// Bland-Altman agreement, in any unit. A column of one value, such as an assigned one, is a method
// like any other. Throws engine::Refusal for columns of different length, fewer than three pairs,
// more than kMostRows, a value that is not finite, an alpha out of its range, differences or limits
// beyond the largest double. Cost O(n).
// Source Bland & Altman, Lancet 1 (1986) 307-310; Stat Methods Med Res 8 (1999) 135-160
AgreementResult agreement(const AgreementRequest& request);

struct RepeatabilityRequest {
  std::span<const double> values;          // finite
  std::span<const std::uint32_t> subject;  // code of each value, 0 .. subjects - 1
  std::size_t subjects = 0;
  double alpha = 0.05;
};

struct RepeatabilityResult {
  std::size_t subjects = 0;  // with values
  std::size_t values = 0;
  double degreesOfFreedom = 0;  // values - subjects
  double z = 0;                 // normal quantile at 1 - alpha / 2
  // Square root of the within-subject mean square of the one-way analysis of variance, interval by
  // the chi-square law; the limits are NaN where it is 0.
  Estimate withinSd;
  // Two values of one subject differ by less than this with probability 1 - alpha:
  // sqrt(2) z withinSd.
  double repeatability = 0;
};

// In any unit. Throws engine::Refusal for columns of different length, no values or more than
// kMostRows, a value that is not finite, a subject or alpha out of its range, and unless some
// subject has two values. Cost O(n + subjects).
// Source Bland & Altman, Stat Methods Med Res 8 (1999) 135-160
RepeatabilityResult repeatability(const RepeatabilityRequest& request);

}  // namespace survmeth

#endif  // ANALYSIS_AGREEMENT_H_
