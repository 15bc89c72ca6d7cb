// Agreement of two measurement methods: the matrix-level routines behind survival/calls/methcomp.h,
// which gives units and codes.
#ifndef SURVIVAL_METHCOMP_METHCOMP_H_
#define SURVIVAL_METHCOMP_METHCOMP_H_

#include "Klikro/matrix"
#include "Klikro/matrixInt"
#include "survival/export.h"

// Bias and limits of agreement; every vector n x 1. Returns 0. Cost O(n).
SURVIVAL_C int BlandAltman(matrix* first, matrix* second, int n, int differenceType, double alpha,
                           matrix* differences, matrix* means, double* bias, double* sdDiff,
                           double* biasLower, double* biasUpper, double* loaLower,
                           double* loaUpper);

// Within-subject standard deviation; values and subjects n x 1. Returns 0. Cost O(n log n).
SURVIVAL_C int GetRepeatability(matrix* values, int n, matrix* subjects, double alpha,
                                double* withinSd, double* withinSdLower, double* withinSdUpper);

// Passing-Bablok line; every vector n x 1. Returns 0. Cost O(n log n + min(n^2, 4e6) / 2).
SURVIVAL_C int PassingBablok(matrix* x, int n, matrix* y, double alpha, double* intercept,
                             double* interceptLower, double* interceptUpper, double* slope,
                             double* slopeLower, double* slopeUpper, matrix* residuals,
                             matrix* yMinusX, matrix* perpDistances, matrix* fitted,
                             double* cusumMax, double* cusumCritical, double* cusumPValue);

// Deming line of x[m], y[m] with weights w[m]: y = a + b x, lambda the ratio of the y-error
// variance to the x-error variance. Not a number where the weighted covariance is 0. Returns 0.
// Cost O(m).
// Source Deming, Statistical Adjustment of Data (1943)
SURVIVAL_C int Deming(matrix* x, matrix* y, matrix* w, int m, double lambda, double* a, double* b);

// Line weighted by each subject's replicate variances, by iteration.
//
// In   xs, ys       subject values, m
//      counts       rows of each subject in xRep and yRep, m, in order; rows past the end do not
//                   count
//      tolerance    the iteration ends once |change of b| < tolerance, or after maxIterations
// Out  a, b         0 for maxIterations < 1
// Returns 0. Cost O(rows + m iterations).
// Source York, Can J Phys 44 (1966) 1079-1086
SURVIVAL_C int WeightedDeming(matrix* xs, matrix* ys, int m, matrixInt* counts, matrix* xRep,
                              matrix* yRep, int maxIterations, double tolerance, double* a,
                              double* b);

// Deming regression with jackknife intervals; arguments as VB_DemingRegression, arrays as
// matrices. Returns 0. Cost O(n log n + m^2).
SURVIVAL_C int DemingRegression(
    matrix* x, int n, matrix* y, matrix* subjectIds, short hasReplicates, int m,
    matrixInt* replicateCounts, int replicateMode, short weighted, double alpha,
    double varianceRatio, double tolerance, int maxIterations, double xPred1, double xPred2,
    double* intercept, double* interceptLower, double* interceptUpper, double* slope,
    double* slopeLower, double* slopeUpper, matrix* yMinusX, matrix* biasAndSe, matrix* residuals,
    matrix* fitted, matrix* band, double* cusumMax, double* cusumCritical, double* cusumPValue,
    double* pearsonR, double* xMin, double* xMax, double* xMean, double* xSd, double* yMin,
    double* yMax, double* yMean, double* ySd, double* maxAbsDiff, double* yPred1,
    double* yPred1Lower, double* yPred1Upper, double* yPred2, double* yPred2Lower,
    double* yPred2Upper, double* varA, double* varB, double* covAB);

#endif  // SURVIVAL_METHCOMP_METHCOMP_H_
