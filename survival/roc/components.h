// Structural components of the area under the ROC curve.
#ifndef SURVIVAL_ROC_COMPONENTS_H_
#define SURVIVAL_ROC_COMPONENTS_H_

#include <vector>

#include "survival/roc/classes.h"

namespace survival::roc {

// Which pairs of a negative and a positive enter the sums.
enum class Pairs {
  all,
  weighty,  // only those whose product of weights is above 1e-12
};

struct Components {
  std::vector<double> negative;  // V01, one for each negative
  std::vector<double> positive;  // V10, one for each positive
  double area;                   // weighted Mann-Whitney estimate of the area
};

// With psi(x, y) = 1 where y - x > 1e-12, 1/2 where |y - x| < 1e-12, else 0:
// V01(a) = sum over the positives b of w(a) w(b) psi / P, V10(b) = the sum over the negatives / N,
// area = the sum over all pairs / (N P). N and P are the weighted class sizes.
//
// Edge infinite and NaN values take part as the comparisons see them. A weight that is not finite
//      makes everything NaN, as it does the sums over pairs. Equal to the sums over pairs to the
//      bit where weights are integers, else to rounding.
// Cost O(n), n log n where products of weights lie on both sides of 1e-12, pair by pair only
//      where a product of weights overflows or underflows.
// Source DeLong, DeLong & Clarke-Pearson, Biometrics 44 (1988) 837-845
Components componentsOf(const ClassView& negatives, const ClassView& positives, double N, double P,
                        Pairs pairs);

// Standard error of the weighted Mann-Whitney estimate by its exact variance: ties count for the
// product term within 1e-12, "above" and "below" are strict, and a positive counts its negatives
// with its own weight. 0 where a class has no more than one case or the variance is not above
// 1e-12. Cost O(n).
double mannWhitneyError(const ClassView& negatives, const ClassView& positives, double N, double P,
                        double area);

}  // namespace survival::roc

#endif  // SURVIVAL_ROC_COMPONENTS_H_
