// Flat-array entry points of ROC analysis.
#include "survival/calls/roc.h"

#include <string>

#include "survival/exports/frame.h"
#include "survival/roc/roc.h"

using survival::Apart;
using survival::Block;
using survival::cells;
using survival::IntBlock;
using survival::raised;
using survival::reads;
using survival::shape;
using survival::writes;

int Cpp_ComputeROC(double* status, int n, int nThresholds, double* values, double* weights,
                   int positiveRule, double alpha, int alternative, int ciMethod,
                   short continuityCorrection, int aucSeMethod, double prevalence, double costTP,
                   double costFP, double costFN, double costTN, double* thresholds,
                   double* rocPoints, double* sensitivity, double* specificity, double* tp,
                   double* tn, double* fp, double* fn, double* likelihoodRatios,
                   double* predictiveValues, double* aucSummary, double* cost) {
  const int rows = raised(nThresholds);
  const int points = raised(shape(nThresholds + 1LL));
  Apart apart{reads(status, n),
              reads(weights, n),
              writes(values, n),
              writes(thresholds, rows),
              writes(rocPoints, 2LL * points),
              writes(sensitivity, 3LL * rows),
              writes(specificity, 3LL * rows),
              writes(tp, rows),
              writes(tn, rows),
              writes(fp, rows),
              writes(fn, rows),
              writes(likelihoodRatios, 2LL * rows),
              writes(predictiveValues, 2LL * rows),
              writes(aucSummary, 9),
              writes(cost, rows)};
  Block statusIn(n, 1, status);
  Block valuesInOut(n, 1, values);
  Block weightsIn(n, 1, weights);
  Block thresholdsOut(rows, 1, thresholds);
  Block rocPointsOut(points, 2, rocPoints);
  Block sensitivityOut(rows, 3, sensitivity);
  Block specificityOut(rows, 3, specificity);
  Block tpOut(rows, 1, tp);
  Block tnOut(rows, 1, tn);
  Block fpOut(rows, 1, fp);
  Block fnOut(rows, 1, fn);
  Block likelihoodRatiosOut(rows, 2, likelihoodRatios);
  Block predictiveValuesOut(rows, 2, predictiveValues);
  Block aucSummaryOut(9, 1, aucSummary);
  Block costOut(rows, 1, cost);
  const int code = ComputeROC(
      &statusIn, n, nThresholds, &valuesInOut, &weightsIn, positiveRule, alpha, alternative,
      ciMethod, continuityCorrection, aucSeMethod, prevalence, costTP, costFP, costFN, costTN,
      &thresholdsOut, &rocPointsOut, &sensitivityOut, &specificityOut, &tpOut, &tnOut, &fpOut,
      &fnOut, &likelihoodRatiosOut, &predictiveValuesOut, &aucSummaryOut, &costOut);
  for (const Block* block : {&valuesInOut, &thresholdsOut, &rocPointsOut, &sensitivityOut,
                             &specificityOut, &tpOut, &tnOut, &fpOut, &fnOut, &likelihoodRatiosOut,
                             &predictiveValuesOut, &aucSummaryOut, &costOut}) {
    block->copyBack();
  }
  apart.giveBack();
  return code;
}

int Cpp_GetROCStats(double* table, double alpha, int ciMethod, short continuityCorrection,
                    double prevalence, double* stats, double* proportions) {
  Apart apart{writes(table, 4), writes(proportions, 9), writes(stats, 39)};
  Block tableIn(2, 2, table);
  Block statsOut(13, 3, stats);
  Block proportionsOut(3, 3, proportions);
  GetROCStats(&tableIn, alpha, ciMethod, continuityCorrection, prevalence, &statsOut,
              &proportionsOut);
  tableIn.copyBack();
  proportionsOut.copyBack();
  statsOut.copyBack();
  apart.giveBack();
  return 0;
}

void Cpp_CreateROCContingencyTable(wchar_t** labels, int n, wchar_t* positiveLabel, double* values,
                                   short exactMatch, double threshold, int thresholdRule,
                                   double* weights, double* table) {
  Apart apart{reads(values, n), reads(weights, n), writes(table, 4)};
  Smatrix labelsIn(n, 1, labels, 0, 0);
  Block valuesIn(n, 1, values);
  Block weightsIn(n, 1, weights);
  Block tableInOut(2, 2, table);
  const std::wstring positive(positiveLabel);
  CreateROCContingencyTable(&labelsIn, n, positive, &valuesIn, exactMatch, threshold, thresholdRule,
                            &weightsIn, &tableInOut);
  tableInOut.copyBack();
  apart.giveBack();
}

void Cpp_ComputeROCComparisonsDep2(double* status, int n, double* testValues, double* weights,
                                   double* sampleSizes, int k, double alpha, short paired,
                                   double* aucs, double* aucVariances, int* selected,
                                   double* aucDiff, double* zStat, double* halfWidth,
                                   double* covariance, double* pValue, int* significant) {
  const int tests = raised(k);
  const long long pairs = cells(tests, tests);
  Apart apart{reads(status, n),           reads(testValues, cells(n, tests)),
              reads(weights, n),          reads(sampleSizes, tests),
              reads(aucs, tests),         reads(selected, tests),
              writes(significant, pairs), writes(pValue, pairs),
              writes(covariance, pairs),  writes(halfWidth, pairs),
              writes(aucDiff, pairs),     writes(zStat, pairs),
              writes(aucVariances, tests)};
  Block statusIn(n, 1, status);
  Block testValuesIn(n, tests, testValues);
  Block weightsIn(n, 1, weights);
  Block sampleSizesIn(1, tests, sampleSizes);
  Block aucsIn(tests, 1, aucs);
  Block aucVariancesInOut(tests, 1, aucVariances);
  IntBlock selectedIn(tests, 1, selected);
  Block aucDiffOut(tests, tests, aucDiff);
  Block zStatOut(tests, tests, zStat);
  Block halfWidthOut(tests, tests, halfWidth);
  Block covarianceOut(tests, tests, covariance);
  Block pValueOut(tests, tests, pValue);
  IntBlock significantOut(tests, tests, significant);
  ComputeROCComparisonsDep(&statusIn, n, &testValuesIn, &weightsIn, &sampleSizesIn, k, alpha,
                           paired, &aucsIn, &aucVariancesInOut, &selectedIn, &aucDiffOut, &zStatOut,
                           &halfWidthOut, &covarianceOut, &pValueOut, &significantOut);
  significantOut.copyBack();
  for (const Block* block :
       {&pValueOut, &covarianceOut, &halfWidthOut, &aucDiffOut, &zStatOut, &aucVariancesInOut}) {
    block->copyBack();
  }
  apart.giveBack();
}
