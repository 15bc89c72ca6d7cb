// Wrappers of the method-comparison family.
#include "survival/calls/methcomp.h"

#include "survival/exports/frame.h"
#include "survival/methcomp/methcomp.h"

using survival::Apart;
using survival::Block;
using survival::reads;
using survival::sets;
using survival::view;
using survival::writes;

int Cpp_BlandAltman(double* first, double* second, int n, int differenceType, double alpha,
                    double* differences, double* means, double* bias, double* sdDiff,
                    double* biasLower, double* biasUpper, double* loaLower, double* loaUpper) {
  Apart apart{reads(first, n), reads(second, n), writes(means, n), writes(differences, n),
              sets(bias),      sets(sdDiff),     sets(biasLower),  sets(biasUpper),
              sets(loaLower),  sets(loaUpper)};
  matrix firsts = view(n, 1, first);
  matrix seconds = view(n, 1, second);
  Block differenceBlock(n, 1, differences);
  Block meanBlock(n, 1, means);
  BlandAltman(&firsts, &seconds, n, differenceType, alpha, &differenceBlock, &meanBlock, bias,
              sdDiff, biasLower, biasUpper, loaLower, loaUpper);
  meanBlock.copyBack();
  differenceBlock.copyBack();
  apart.giveBack();
  return 0;
}

void Cpp_GetRepeatability(double* values, int n, double* subjects, double alpha, double* withinSd,
                          double* withinSdLower, double* withinSdUpper) {
  Apart apart{reads(values, n), reads(subjects, n), sets(withinSd), sets(withinSdLower),
              sets(withinSdUpper)};
  matrix valueBlock = view(n, 1, values);
  matrix subjectBlock = view(n, 1, subjects);
  GetRepeatability(&valueBlock, n, &subjectBlock, alpha, withinSd, withinSdLower, withinSdUpper);
  apart.giveBack();
}

int VB_PassingBablok(double* x, int n, double* y, double alpha, double* intercept,
                     double* interceptLower, double* interceptUpper, double* slope,
                     double* slopeLower, double* slopeUpper, double* residuals, double* yMinusX,
                     double* perpDistances, double* fitted, double* cusumMax, double* cusumCritical,
                     double* cusumPValue) {
  Apart apart{
      reads(x, n),          reads(y, n),         sets(intercept),          sets(interceptLower),
      sets(interceptUpper), sets(slope),         sets(slopeLower),         sets(slopeUpper),
      writes(residuals, n), writes(yMinusX, n),  writes(perpDistances, n), writes(fitted, n),
      sets(cusumMax),       sets(cusumCritical), sets(cusumPValue)};
  matrix xView(n, 1, x, true);
  matrix yView(n, 1, y, true);
  matrix residualView(n, 1, residuals, true);
  matrix differenceView(n, 1, yMinusX, true);
  matrix distanceView(n, 1, perpDistances, true);
  matrix fittedView(n, 1, fitted, true);
  PassingBablok(&xView, n, &yView, alpha, intercept, interceptLower, interceptUpper, slope,
                slopeLower, slopeUpper, &residualView, &differenceView, &distanceView, &fittedView,
                cusumMax, cusumCritical, cusumPValue);
  apart.giveBack();
  return 0;
}

int VB_DemingRegression(double* x, int n, double* y, double* subjectIds, short hasReplicates, int m,
                        int* replicateCounts, int replicateMode, short weighted, double alpha,
                        double varianceRatio, double tolerance, int maxIterations, double xPred1,
                        double xPred2, double* intercept, double* interceptLower,
                        double* interceptUpper, double* slope, double* slopeLower,
                        double* slopeUpper, double* yMinusX, double* biasAndSe, double* residuals,
                        double* fitted, double* band, double* cusumMax, double* cusumCritical,
                        double* cusumPValue, double* pearsonR, double* xMin, double* xMax,
                        double* xMean, double* xSd, double* yMin, double* yMax, double* yMean,
                        double* ySd, double* maxAbsDiff, double* yPred1, double* yPred1Lower,
                        double* yPred1Upper, double* yPred2, double* yPred2Lower,
                        double* yPred2Upper, double* varA, double* varB, double* covAB) {
  Apart apart{writes(x, n),
              writes(y, n),
              writes(subjectIds, n),
              reads(replicateCounts, m),
              sets(intercept),
              sets(interceptLower),
              sets(interceptUpper),
              sets(slope),
              sets(slopeLower),
              sets(slopeUpper),
              writes(yMinusX, n),
              writes(biasAndSe, 2LL * n),
              writes(residuals, n),
              writes(fitted, n),
              writes(band, 2LL * n),
              sets(cusumMax),
              sets(cusumCritical),
              sets(cusumPValue),
              sets(pearsonR),
              sets(xMin),
              sets(xMax),
              sets(xMean),
              sets(xSd),
              sets(yMin),
              sets(yMax),
              sets(yMean),
              sets(ySd),
              sets(maxAbsDiff),
              sets(yPred1),
              sets(yPred1Lower),
              sets(yPred1Upper),
              sets(yPred2),
              sets(yPred2Lower),
              sets(yPred2Upper),
              sets(varA),
              sets(varB),
              sets(covAB)};
  matrix xView(n, 1, x, true);
  matrix yView(n, 1, y, true);
  matrix idView(n, 1, subjectIds, true);
  matrixInt countView(m, 1, replicateCounts, true);
  matrix differenceView(n, 1, yMinusX, true);
  matrix biasView(n, 2, biasAndSe, true);
  matrix residualView(n, 1, residuals, true);
  matrix fittedView(n, 1, fitted, true);
  matrix bandView(n, 2, band, true);
  DemingRegression(&xView, n, &yView, &idView, hasReplicates, m, &countView, replicateMode,
                   weighted, alpha, varianceRatio, tolerance, maxIterations, xPred1, xPred2,
                   intercept, interceptLower, interceptUpper, slope, slopeLower, slopeUpper,
                   &differenceView, &biasView, &residualView, &fittedView, &bandView, cusumMax,
                   cusumCritical, cusumPValue, pearsonR, xMin, xMax, xMean, xSd, yMin, yMax, yMean,
                   ySd, maxAbsDiff, yPred1, yPred1Lower, yPred1Upper, yPred2, yPred2Lower,
                   yPred2Upper, varA, varB, covAB);
  apart.giveBack();
  return 0;
}
