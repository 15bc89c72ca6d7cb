// Cusum test of linearity, shared by the regressions of two methods.
#ifndef SURVIVAL_METHCOMP_CUSUM_H_
#define SURVIVAL_METHCOMP_CUSUM_H_

#include "Klikro/matrix"

namespace survival {

// A residual within this of 0 lies on the line.
inline constexpr double kOnLine = 1e-12;

// In   residuals[n]   signed distances from the line
//      positions[n]   along the line
//      alpha          level of the critical value; kMissing outside (0, 1]
// Out  cusumMax       largest |running sum| of the scores in the order of the positions
// Source Passing & Bablok, J Clin Chem Clin Biochem 21 (1983) 709-720. Cost O(n log n).
void cusumTest(matrix* residuals, matrix* positions, int n, double alpha, double* cusumMax,
               double* cusumCritical, double* cusumPValue);

}  // namespace survival

#endif  // SURVIVAL_METHCOMP_CUSUM_H_
