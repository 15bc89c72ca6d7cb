// DeLong's variances and covariances of areas under ROC curves, for whole weights.
#ifndef ENGINE_ROC_DELONG_H_
#define ENGINE_ROC_DELONG_H_

#include <vector>

#include "engine/roc/sample.h"

namespace survmeth::engine::roc {

// The structural components of a marker, less the area: of each row of the sample, for a negative
// the share of the positives above it, for a positive the share of the negatives below it, ties
// counting one half.
//
// Source DeLong, DeLong & Clarke-Pearson, Biometrics 44 (1988) 837-845
std::vector<double> componentsOf(const Sample& sample, const Ranks& ranks);

// Sums over the rows of a class, each as often as its weight says, of products of components.
struct Products {
  double ofNegatives = 0.0, ofPositives = 0.0;
};
Products productsOf(const Sample& sample, const std::vector<double>& first,
                    const std::vector<double>& second);

// The covariance of two areas on the same rows, the variance of one.
//
// Edge not a number where a class has one case
double covarianceOf(const Sample& sample, const std::vector<double>& first,
                    const std::vector<double>& second);

}  // namespace survmeth::engine::roc

#endif  // ENGINE_ROC_DELONG_H_
