/* Validation of regression models: bootstrap summary and validation table. survival.h states the
 * conventions.
 */
#ifndef SURVIVAL_CALLS_VALIDATION_H_
#define SURVIVAL_CALLS_VALIDATION_H_

#include "survival/export.h"

/* Summary of five statistics over B bootstrap samples.
 *
 * In   statistics[B * 5]  row b for sample b; missing values are passed over
 *      alpha              the percentile interval has level 1 - alpha
 * In/out summary[5 * 4]   row c for statistic c; columns: mean, variance, percentile alpha / 2,
 *                         percentile 1 - alpha / 2. Columns 1 and 2 are added to: pass zeros
 * Edge the mean divides by B and the variance by B - 1 whatever is missing, so that missing values
 *      pull the mean towards 0. B = 1 divides the variance by 0. The percentiles are those of the
 *      values present, interpolated at position 1 + (N - 1) p; the missing marker where there is
 *      none
 * Cost O(B), by selection
 * Source Efron & Tibshirani, An Introduction to the Bootstrap (1993), section 13.3
 */
SURVIVAL_C void Cpp_ComputeBootOut(int B, double alpha, double* statistics, double* summary);

/* One row of the validation table of a survival regression.
 *
 * In   time[n], status[n]  an event where the status is exactly 1
 *      X[n * max(p, 1)], beta[max(p, 1)]  covariates and coefficients; the risk score of a row is
 *                          their sum of products
 *      H[3 * 3], F[6 * 2]  fit statistics of the model; H(1, 1), H(1, 2), F(3, 1) and F(3, 2)
 *                          are read
 *      row                 1-based row to write
 * Out  table[nOut * 5]     columns, with nu = n - 1 - p:
 *                          1 R^2 = 1 - exp(-(2 / nu) (F(3, 1) - F(3, 2)))
 *                          2 column 1 / (1 - exp(-2 F(3, 1)) / nu)
 *                          3 max(0, (H(1, 2) - H(1, 1)) / H(1, 2)), 0 unless H(1, 2) > 0
 *                          4 the concordance index c: the part of the pairs whose earlier time
 *                            is an event in which the earlier row has the higher risk score
 *                          5 Somers' D = 2 (c - 1/2)
 *                          Other rows stay
 * Edge column 1 is exactly 1 where the exponential would overflow, although the model is the worse
 *      one there; column 2 is then decided likewise by 2 F(3, 1) / nu < -700. Ties in time make a
 *      pair unusable, ties in score count as discordant. No usable pair: column 4 is the missing
 *      marker and column 5 minus infinity. nu = 0 follows the arithmetic of infinities
 * Cost O(n p + n log n), memory O(n)
 * Source Harrell et al., Statistics in Medicine 15 (1996) 361-387; Nagelkerke, Biometrika 78
 *      (1991) 691-692
 */
SURVIVAL_C void Cpp_ComputeCVTable(int n, int p, double* time, double* status, double* X,
                                   double* beta, double* H, double* F, int row, int nOut,
                                   double* table);

#endif /* SURVIVAL_CALLS_VALIDATION_H_ */
