// ROC analysis: the curve and its area, the statistics of a 2 x 2 table, the table of labelled
// data, and the comparison of areas.
//
// The flat-array entry points that wrap these routines, with the meaning of every argument and
// option code, are in survival/calls/roc.h; here stands what the matrix forms add.
#ifndef SURVIVAL_ROC_ROC_H_
#define SURVIVAL_ROC_ROC_H_

#include <string>

#include "Klikro/Klikro"
#include "survival/export.h"

// ROC curve of one test: thresholds, counts, rates, ratios, costs and the area under the curve.
//
// In   as Cpp_ComputeROC
// Out  values        ascending; status and weights come back sorted too: status by (status, value),
//                    weights by status only
//      the others    as Cpp_ComputeROC; a row past an output's shape follows the linear position
//                    rule of the containers
// Edge -2 (a class is empty): every argument is as it was. n past the end of a column counts the
//      rows that are there
// Cost O(n log n + nThresholds)
SURVIVAL_C int ComputeROC(matrix* status, int n, int nThresholds, matrix* values, matrix* weights,
                          int positiveRule, double alpha, int alternative, int ciMethod,
                          short continuityCorrection, int aucSeMethod, double prevalence,
                          double costTP, double costFP, double costFN, double costTN,
                          matrix* thresholds, matrix* rocPoints, matrix* sensitivity,
                          matrix* specificity, matrix* tp, matrix* tn, matrix* fp, matrix* fn,
                          matrix* likelihoodRatios, matrix* predictiveValues, matrix* aucSummary,
                          matrix* cost);

// Statistics of a 2 x 2 table: as Cpp_GetROCStats. Returns 0.
SURVIVAL_C int GetROCStats(matrix* table, double alpha, int ciMethod, short continuityCorrection,
                           double prevalence, matrix* stats, matrix* proportions);

// Adds the weights of labelled observations to a 2 x 2 table: as Cpp_CreateROCContingencyTable.
// Returns 0. Cost O(n).
SURVIVAL_C int CreateROCContingencyTable(Smatrix* labels, int n, const std::wstring& positiveLabel,
                                         matrix* values, short exactMatch, double threshold,
                                         int thresholdRule, matrix* weights, matrix* table);

// Pairwise comparison of k areas: as Cpp_ComputeROCComparisonsDep2. Returns 0.
//
// Out  weights(1)    1, in either design
//      status, testValues, weights   sorted by status in the paired design
// Cost paired O(k n log n + k^2 n), one more log n where products of weights lie on both sides of
//      1e-12; independent O(k^2)
SURVIVAL_C int ComputeROCComparisonsDep(matrix* status, int n, matrix* testValues, matrix* weights,
                                        matrix* sampleSizes, int k, double alpha, short paired,
                                        matrix* aucs, matrix* aucVariances, matrixInt* selected,
                                        matrix* aucDiff, matrix* zStat, matrix* halfWidth,
                                        matrix* covariance, matrix* pValue, matrixInt* significant);

#endif  // SURVIVAL_ROC_ROC_H_
