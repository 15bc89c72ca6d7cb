/* ROC analysis: the curve and the area under it, the statistics of a 2 x 2 table, the table of
 * labelled data, and the comparison of areas. */
#ifndef SURVIVAL_CALLS_ROC_H_
#define SURVIVAL_CALLS_ROC_H_

#include <wchar.h>

#include "survival/export.h"

/* ROC curve of one continuous test, with the area under it.
 *
 * In   status[n]             1 positive, 0 negative; any other value splits into that share of a
 *                            positive and the rest of a negative
 *      n                     observations
 *      nThresholds           the number of distinct non-missing values, which the caller counts; T
 *                            below is that, at least 1
 *      weights[n]            weight of each observation, not below 0
 *      positiveRule          called positive where the value is 0: below, 1: at or below, 2: at or
 *                            above, any other code (3): above the threshold
 *      alpha                 in (0, 1)
 *      alternative           to an area of 0.5; 0: different, -1: smaller, any other code (1):
 *                            larger
 *      ciMethod              of sensitivity and specificity; 0: Wald, 1: Wald with two successes
 *                            and two failures added, 2: Wilson, any other code (3): Clopper-Pearson
 *      continuityCorrection  flag: Wilson's interval with a correction of 0.5
 *      aucSeMethod           0: Hanley-McNeil, 1: exact variance of the weighted Mann-Whitney
 *                            statistic, any other code (2): DeLong
 *      prevalence            for the predictive values, in (0, 1]; at or below 0 that of the sample
 *      costTP ... costTN     cost of one case of each outcome
 * In/out values[n]           test results, back in ascending order; missing values come first and
 *                            carry no weight
 * Out  row k for the k-th smallest distinct non-missing value, its weighted counts and rates:
 *      thresholds[T]         the value
 *      rocPoints[(nThresholds + 1) * 2]  1 - specificity, sensitivity, at least one row; sorted by
 *                            both, so row k is not threshold k; the corner no threshold reaches is
 *                            added: (0, 0) for rules 1 and 2, else (1, 1)
 *      sensitivity[T * 3], specificity[T * 3]  value, lower bound, upper bound
 *      tp[T], tn[T], fp[T], fn[T]  sums of weights
 *      likelihoodRatios[T * 2]  positive, negative; without negatives the bare proportion of the
 *                            positives
 *      predictiveValues[T * 2]  positive, negative
 *      aucSummary[9]         1 area by the trapezoidal rule, 2 its standard error, 3-4 its bounds
 *                            within [0, 1], 5 Z = (A - 0.5) / error, 6-7 bounds of A - 0.5, 8
 *                            p-value, 9 critical value. A is the area of row 1, for DeLong the
 *                            weighted Mann-Whitney estimate. Rows 5-9 are missing where the error
 *                            is not above 1e-12. For alternative 1 row 9 is 1 minus the quantile
 *                            of alpha
 *      cost[T]               total cost
 * Result 0; -2: no positive or no negative (missing values counted), outputs and values untouched
 * Edge where T is too large the rows past the last distinct value stay as passed, those of
 *      rocPoints taking part in the sort and the area; where it is too small, rows past T are lost
 *      or fall into the next column
 * Cost O(n log n + T)
 * Source Hanley & McNeil, Radiology 143 (1982) 29-36; DeLong, DeLong & Clarke-Pearson, Biometrics
 *      44 (1988) 837-845 */
SURVIVAL_C int Cpp_ComputeROC(double* status, int n, int nThresholds, double* values,
                              double* weights, int positiveRule, double alpha, int alternative,
                              int ciMethod, short continuityCorrection, int aucSeMethod,
                              double prevalence, double costTP, double costFP, double costFN,
                              double costTN, double* thresholds, double* rocPoints,
                              double* sensitivity, double* specificity, double* tp, double* tn,
                              double* fp, double* fn, double* likelihoodRatios,
                              double* predictiveValues, double* aucSummary, double* cost);

/* Statistics of one 2 x 2 table, each with its interval.
 *
 * In   table[2 * 2]          counts or sums of weights; rows test positive, test negative; columns
 *                            truly positive, truly negative
 *      alpha                 in (0, 1)
 *      ciMethod              rows 3-4: as in Cpp_ComputeROC; rows 1-2 and 5-9: 0 Wilson, any other
 *                            code Wald; s of rows 12-13: 0 from the proportions, any other code
 *                            from the counts with 0.5 added
 *      continuityCorrection  flag: Wilson's interval with a correction of 0.5
 *      prevalence            for rows 8-9, in (0, 1]; at or below 0 that of the sample
 * Out  stats[13 * 3]         value, lower bound, upper bound of 1 accuracy, 2 misclassification
 *                            rate, 3 sensitivity, 4 specificity, 5 false-positive rate, 6
 *                            false-negative rate, 7 prevalence of the sample, 8 and 9 positive and
 *                            negative predictive value, 10 and 11 positive and negative likelihood
 *                            ratio, 12 relative risk, 13 odds ratio. Missing where a denominator
 *                            in proportions is not above 1e-12; the interval of a ratio also
 *                            where the ratio is 0
 *      proportions[3 * 3]    the table over its total, with its margins
 * Result 0
 * Edge a table of zeros gives values that are not numbers in rows 1-7 and missing ones after. At a
 *      given prevalence of 1 the positive predictive value of a test without true positives is not
 *      a number, nor the negative one of a test without false negatives */
SURVIVAL_C int Cpp_GetROCStats(double* table, double alpha, int ciMethod,
                               short continuityCorrection, double prevalence, double* stats,
                               double* proportions);

/* Adds labelled observations to the 2 x 2 table that Cpp_GetROCStats reads.
 *
 * In   labels[n]       zero-terminated strings: truly positive where equal to positiveLabel, to
 *                      the character; any other label is negative
 *      values[n]       test results; a missing one is compared as it stands
 *      exactMatch      flag: test positive where the value equals the threshold exactly
 *      thresholdRule   otherwise: 1 below, 2 at or below, 3 at or above, 4 above the threshold,
 *                      any other code never. One more than the codes of Cpp_ComputeROC
 *      weights[n]      added to the cell of the observation
 * In/out table[2 * 2]  zeroed by the caller */
SURVIVAL_C void Cpp_CreateROCContingencyTable(wchar_t** labels, int n, wchar_t* positiveLabel,
                                              double* values, short exactMatch, double threshold,
                                              int thresholdRule, double* weights, double* table);

/* Areas of k tests compared two by two: by DeLong's covariance where every test was made on the
 * same subjects, else by a Student test with Welch's degrees of freedom. In the shapes k counts as
 * at least 1.
 *
 * In   status[n]          paired design: 1 positive, 0 negative
 *      testValues[n * k]  paired design: one column for each test
 *      weights[n]         paired design; the first is taken as 1 whatever it is
 *      sampleSizes[k]     independent design: observations behind each area, truncated
 *      alpha              in (0, 1)
 *      paired             flag
 *      aucs[k]            the areas that are compared
 *      selected[k]        1: the test takes part
 * In/out aucVariances[k]  paired design, out: DeLong's standard error of each area, missing for a
 *                         test that is not selected. Independent design, in: sampleSizes times
 *                         the variance of the area; a pair needs both above 0
 * Out  k x k, for a pair of selected tests i < j:
 *      aucDiff[k * k]     area i less area j, its negative at (j, i)
 *      zStat[k * k]       the difference over its standard error s, its negative at (j, i)
 *      halfWidth[k * k]   critical value times s, at (i, j) only
 *      covariance[k * k]  of the two areas, at both places and, paired, on the diagonal;
 *                         independent 0
 *      pValue[k * k]      two-sided, at both places; 1 on the diagonal
 *      significant[k * k] 1 where the p-value is below alpha / 2 (half of alpha, although it is
 *                         two-sided), else 0, at both places
 * Edge cells for which nothing is said are missing, in significant -2147483648; where s is not
 *      above 0 the pair gets aucDiff and covariance, independent halfWidth too. A row where either
 *      test of a pair is missing counts for nothing in that pair
 * Cost paired O(k n log n + k^2 n), independent O(k^2)
 * Source DeLong, DeLong & Clarke-Pearson, Biometrics 44 (1988) 837-845 */
SURVIVAL_C void Cpp_ComputeROCComparisonsDep2(double* status, int n, double* testValues,
                                              double* weights, double* sampleSizes, int k,
                                              double alpha, short paired, double* aucs,
                                              double* aucVariances, int* selected, double* aucDiff,
                                              double* zStat, double* halfWidth, double* covariance,
                                              double* pValue, int* significant);

#endif /* SURVIVAL_CALLS_ROC_H_ */
