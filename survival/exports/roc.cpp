// Flat-array entry points of ROC analysis.
#include "survival/calls/roc.h"

#include <string>

#include "survival/exports/frame.h"
#include "survival/roc/roc.h"

using survival::Block;
using survival::IntBlock;
using survival::shape;

int Cpp_ComputeROC(double* status, int n, int nThresholds, double* values, double* weights,
                   int positiveRule, double alpha, int alternative, int ciMethod,
                   short continuityCorrection, int aucSeMethod, double prevalence, double costTP,
                   double costFP, double costFN, double costTN, double* thresholds,
                   double* rocPoints, double* sensitivity, double* specificity, double* tp,
                   double* tn, double* fp, double* fn, double* likelihoodRatios,
                   double* predictiveValues, double* aucSummary, double* cost) {
  Block statusIn(n, 1, status);
  Block valuesInOut(n, 1, values);
  Block weightsIn(n, 1, weights);
  Block thresholdsOut(nThresholds, 1, thresholds);
  Block rocPointsOut(shape(nThresholds + 1LL), 2, rocPoints);
  Block sensitivityOut(nThresholds, 3, sensitivity);
  Block specificityOut(nThresholds, 3, specificity);
  Block tpOut(nThresholds, 1, tp);
  Block tnOut(nThresholds, 1, tn);
  Block fpOut(nThresholds, 1, fp);
  Block fnOut(nThresholds, 1, fn);
  Block likelihoodRatiosOut(nThresholds, 2, likelihoodRatios);
  Block predictiveValuesOut(nThresholds, 2, predictiveValues);
  Block aucSummaryOut(9, 1, aucSummary);
  Block costOut(nThresholds, 1, cost);
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
  return code;
}

int Cpp_GetROCStats(double* table, double alpha, int ciMethod, short continuityCorrection,
                    double prevalence, double* stats, double* proportions) {
  Block tableIn(2, 2, table);
  Block statsOut(13, 3, stats);
  Block proportionsOut(3, 3, proportions);
  GetROCStats(&tableIn, alpha, ciMethod, continuityCorrection, prevalence, &statsOut,
              &proportionsOut);
  tableIn.copyBack();
  proportionsOut.copyBack();
  statsOut.copyBack();
  return 0;
}

void Cpp_CreateROCContingencyTable(wchar_t** labels, int n, wchar_t* positiveLabel, double* values,
                                   short exactMatch, double threshold, int thresholdRule,
                                   double* weights, double* table) {
  Smatrix labelsIn(n, 1, labels, 0, 0);
  Block valuesIn(n, 1, values);
  Block weightsIn(n, 1, weights);
  Block tableInOut(2, 2, table);
  const std::wstring positive(positiveLabel);
  CreateROCContingencyTable(&labelsIn, n, positive, &valuesIn, exactMatch, threshold, thresholdRule,
                            &weightsIn, &tableInOut);
  tableInOut.copyBack();
}

void Cpp_ComputeROCComparisonsDep2(double* status, int n, double* testValues, double* weights,
                                   double* sampleSizes, int k, double alpha, short paired,
                                   double* aucs, double* aucVariances, int* selected,
                                   double* aucDiff, double* zStat, double* halfWidth,
                                   double* covariance, double* pValue, int* significant) {
  Block statusIn(n, 1, status);
  Block testValuesIn(n, k, testValues);
  Block weightsIn(n, 1, weights);
  Block sampleSizesIn(1, k, sampleSizes);
  Block aucsIn(k, 1, aucs);
  Block aucVariancesInOut(k, 1, aucVariances);
  IntBlock selectedIn(k, 1, selected);
  Block aucDiffOut(k, k, aucDiff);
  Block zStatOut(k, k, zStat);
  Block halfWidthOut(k, k, halfWidth);
  Block covarianceOut(k, k, covariance);
  Block pValueOut(k, k, pValue);
  IntBlock significantOut(k, k, significant);
  ComputeROCComparisonsDep(&statusIn, n, &testValuesIn, &weightsIn, &sampleSizesIn, k, alpha,
                           paired, &aucsIn, &aucVariancesInOut, &selectedIn, &aucDiffOut, &zStatOut,
                           &halfWidthOut, &covarianceOut, &pValueOut, &significantOut);
  significantOut.copyBack();
  for (const Block* block :
       {&pValueOut, &covarianceOut, &halfWidthOut, &aucDiffOut, &zStatOut, &aucVariancesInOut}) {
    block->copyBack();
  }
}
