/* Flat-array entry points for the agreement of two measurement methods.
 * Conventions: survival/survival.h. Measurements are in any one unit, the same for both methods.
 */
#ifndef SURVIVAL_CALLS_METHCOMP_H_
#define SURVIVAL_CALLS_METHCOMP_H_

#include "survival/export.h"

/* Bland-Altman agreement of two methods on n subjects.
 *
 * In   first[n], second[n]   measurements; missing values allowed
 *      differenceType        0 second - first; 1 that relative to the subject's mean; any other
 *                            code the ratio second / first
 * Out  differences[n]        of the chosen type; the missing marker where its denominator is
 *                            within 2^-52 of 0
 *      means[n]              (first + second) / 2
 *      bias, sdDiff          mean and standard deviation (divisor m - 1) of the differences
 *      biasLower, biasUpper  interval of the bias, Student's t with m - 1 degrees of freedom
 *      loaLower, loaUpper    limits of agreement, normal quantile whatever m is
 * Edge a pair with a missing measurement is left out and its rows of differences and means are
 *      not written; with one usable pair the intervals are not a number
 * Returns 0. Cost O(n).
 * Source Bland & Altman, Lancet 1 (1986) 307-310
 */
SURVIVAL_C int Cpp_BlandAltman(double* first, double* second, int n, int differenceType,
                               double alpha, double* differences, double* means, double* bias,
                               double* sdDiff, double* biasLower, double* biasUpper,
                               double* loaLower, double* loaUpper);

/* Repeatability of one method: within-subject standard deviation by analysis of variance.
 *
 * In   values[n]     replicate measurements; missing values allowed
 *      subjects[n]   subject of each, whole numbers from 1 without gaps
 * Out  withinSd, withinSdLower, withinSdUpper   with its chi-square interval
 * Edge all three are missing when the within-subject sum of squares is at most 2^-52, an absolute
 *      threshold: measurements in very small units count as identical
 * The arrays are not written. Cost O(n log n).
 */
SURVIVAL_C void Cpp_GetRepeatability(double* values, int n, double* subjects, double alpha,
                                     double* withinSd, double* withinSdLower,
                                     double* withinSdUpper);

/* Passing-Bablok regression y = a + b x.
 *
 * In   x[n], y[n]      the two methods; every row is used
 * Out  intercept, slope with their limits
 *      residuals[n]    y - fitted
 *      yMinusX[n]      y - x
 *      perpDistances[n]  signed distance from the line, 0 for a residual within 1e-12
 *      fitted[n]       a + b x
 *      cusumMax, cusumCritical, cusumPValue   linearity test; the critical value is missing for
 *                      an alpha below 0 or above 1
 * Edge pairs tied in x or y and slopes of -1 are dropped; only the first 2,000,000 pairs in row
 *      order are looked at; a position past the list of slopes gives -1 (falling lines, and the
 *      upper limit of four rows or fewer at the usual levels). A perpendicular distance is the root
 *      of a difference of squares: one below some 1e-8 of the coordinates has hardly a right digit,
 *      or is not a number
 * Results land in the arrays directly. Returns 0. Cost O(n log n) and at most 2,000,000 slopes.
 * Source Passing & Bablok, J Clin Chem Clin Biochem 21 (1983) 709-720
 */
SURVIVAL_C int VB_PassingBablok(double* x, int n, double* y, double alpha, double* intercept,
                                double* interceptLower, double* interceptUpper, double* slope,
                                double* slopeLower, double* slopeUpper, double* residuals,
                                double* yMinusX, double* perpDistances, double* fitted,
                                double* cusumMax, double* cusumCritical, double* cusumPValue);

/* Deming regression y = a + b x with jackknife intervals.
 *
 * In/out x[n], y[n], subjectIds[n]  with replicates they come back sorted by subject
 * In   hasReplicates   -1: rows are replicates of m subjects; else each row is a subject and m,
 *                      replicateCounts and replicateMode do not matter
 *      replicateCounts[m]  rows of each subject, in ascending order of its id
 *      replicateMode   subject values: 1 means; 2 first replicates; 3 first x and mean y; any
 *                      other code mean x and first y
 *      weighted        -1: weighted by replicate variances (without replicates this gives a line
 *                      of zeros); else closed form
 *      varianceRatio   x-error variance over y-error variance
 *      tolerance, maxIterations   of the weighted fit: it ends once |change of slope| < tolerance
 *      xPred1, xPred2  where to predict
 * Out  intercept, slope with jackknife limits (missing without spread)
 *      yMinusX[n]      in the caller's row order; every other array in sorted order
 *      biasAndSe[n * 2]  a + (b - 1) x; rows 1..m: standard error of the line (unweighted only)
 *      residuals[n], fitted[n]
 *      band[n * 2]     rows 1..m: limits of the line (unweighted only)
 *      cusumMax, cusumCritical, cusumPValue   as VB_PassingBablok
 *      pearsonR        of the rows (weighted) or the subjects
 *      xMin .. ySd     of the rows, standard deviations with divisor n
 *      maxAbsDiff      largest |y - x|
 *      yPred1, yPred2  with limits from varA, varB, covAB
 *      varA, varB, covAB   variance components; in the weighted case they stay as passed, and the
 *                      predictions' limits use what they held
 * Results land in the arrays directly. Returns 0. Cost O(n log n + m^2).
 * Source Deming, Statistical Adjustment of Data (1943); Linnet, Clin Chem 39 (1993) 424-432
 */
SURVIVAL_C int VB_DemingRegression(
    double* x, int n, double* y, double* subjectIds, short hasReplicates, int m,
    int* replicateCounts, int replicateMode, short weighted, double alpha, double varianceRatio,
    double tolerance, int maxIterations, double xPred1, double xPred2, double* intercept,
    double* interceptLower, double* interceptUpper, double* slope, double* slopeLower,
    double* slopeUpper, double* yMinusX, double* biasAndSe, double* residuals, double* fitted,
    double* band, double* cusumMax, double* cusumCritical, double* cusumPValue, double* pearsonR,
    double* xMin, double* xMax, double* xMean, double* xSd, double* yMin, double* yMax,
    double* yMean, double* ySd, double* maxAbsDiff, double* yPred1, double* yPred1Lower,
    double* yPred1Upper, double* yPred2, double* yPred2Lower, double* yPred2Upper, double* varA,
    double* varB, double* covAB);

#endif /* SURVIVAL_CALLS_METHCOMP_H_ */
