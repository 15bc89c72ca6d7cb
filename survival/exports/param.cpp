// Flat-array entry points of the parametric regression.
#include "survival/calls/param.h"

#include <type_traits>

#include "survival/exports/frame.h"
#include "survival/param/model.h"
#include "survival/param/param.h"

using survival::Apart;
using survival::Block;
using survival::cells;
using survival::IntBlock;
using survival::raised;
using survival::reads;
using survival::sets;
using survival::view;
using survival::writes;
using survival::param::parameterCount;

namespace {

// The observations of a model. Routines that take logarithms of the times or move the covariates
// work on copies of what they change, the others on views.
template <typename Column>
struct Observations {
  Observations(int n, int p, double* timesHome, double* statusHome, double* boundsHome,
               double* covariatesHome, double* weightsHome)
      : times(columns(n, 1, timesHome)),
        status(view(n, 1, statusHome)),
        bounds(columns(n, 2, boundsHome)),
        covariates(columns(n, raised(p), covariatesHome)),
        weights(view(n, 1, weightsHome)) {}
  Column times;
  matrix status;
  Column bounds;
  Column covariates;
  matrix weights;

 private:
  static Column columns(int rows, int cols, double* home) {
    if constexpr (std::is_same_v<Column, Block>) {
      return Block(rows, cols, home);
    } else {
      return view(rows, cols, home);
    }
  }
};
using Viewed = Observations<matrix>;
using Copied = Observations<Block>;

// What a fit leaves: the one column of a covariance is all that some entry points give back.
struct Fit {
  Fit(int m, int covarianceColumns, double* gradientHome, double* hessianHome,
      double* covarianceHome, double* gradient0Home, double* hessian0Home, double* parametersHome)
      : gradient(m, 1, gradientHome),
        hessian(m, m, hessianHome),
        covariance(m, covarianceColumns, covarianceHome),
        gradient0(m, 1, gradient0Home),
        hessian0(m, m, hessian0Home),
        parameters(m, 1, parametersHome) {}

  void copyBack() const {
    for (const Block* out :
         {&parameters, &gradient, &hessian, &covariance, &gradient0, &hessian0}) {
      out->copyBack();
    }
  }

  Block gradient;
  Block hessian;
  Block covariance;
  Block gradient0;
  Block hessian0;
  Block parameters;
};

// The history of a selection. The backward selection makes the order longer than the caller's.
struct History {
  History(int p, double* stepsHome, int* orderHome)
      : steps(3, raised(p), stepsHome), order(raised(p), 1, orderHome) {}

  void copyBack() const {
    steps.copyBack();
    order.copyBack();
  }

  Block steps;
  IntBlock order;
};

}  // namespace

void Cpp_ComputeLogLikeDerivativesParam(double* times, int n, int p, int k, double* status,
                                        double* bounds, double* covariates, double* parameters,
                                        double* weights, int distribution, double* logLik,
                                        double* gradient, double* hessian) {
  const int m = parameterCount(p, k);
  Apart apart{reads(times, n),
              reads(status, n),
              reads(bounds, 2LL * n),
              reads(covariates, cells(n, raised(p))),
              reads(weights, n),
              reads(parameters, m),
              sets(logLik),
              writes(gradient, m),
              writes(hessian, cells(m, m))};
  Viewed data(n, p, times, status, bounds, covariates, weights);
  Block parametersBlock(m, 1, parameters);
  Block gradientBlock(m, 1, gradient);
  Block hessianBlock(m, m, hessian);
  ComputeLogLikeDerivativesParam(&data.times, n, p, k, &data.status, &data.bounds, &data.covariates,
                                 &parametersBlock, &data.weights, distribution, logLik,
                                 &gradientBlock, &hessianBlock);
  gradientBlock.copyBack();
  hessianBlock.copyBack();
  apart.giveBack();
}

int Cpp_OptimizeParamModel(double* times, int n, int p, int k, double* status, double* bounds,
                           double* covariates, double* weights, int* iterations, double tolerance,
                           int distribution, short useInitialValues, double* initialValues,
                           short fixIntercept, double interceptValue, double* logLik,
                           double* logLik0, double* gradient, double* hessian, double* covariance,
                           double* gradient0, double* hessian0, double* parameters) {
  const int m = parameterCount(p, k);
  Apart apart{reads(times, n),
              reads(status, n),
              reads(bounds, 2LL * n),
              reads(covariates, cells(n, raised(p))),
              reads(weights, n),
              sets(iterations),
              reads(initialValues, m),
              sets(logLik),
              sets(logLik0),
              writes(parameters, m),
              writes(gradient, m),
              writes(hessian, cells(m, m)),
              writes(covariance, m),
              writes(gradient0, m),
              writes(hessian0, cells(m, m))};
  Viewed data(n, p, times, status, bounds, covariates, weights);
  Block initialBlock(m, 1, initialValues);
  // Callers of this one provide a single column for the covariance.
  Fit fit(m, 1, gradient, hessian, covariance, gradient0, hessian0, parameters);
  const int code = OptimizeParamModel(
      &data.times, n, p, k, &data.status, &data.bounds, &data.covariates, &data.weights, iterations,
      tolerance, distribution, useInitialValues, &initialBlock, fixIntercept, interceptValue,
      logLik, logLik0, &fit.gradient, &fit.hessian, &fit.covariance, &fit.gradient0, &fit.hessian0,
      &fit.parameters);
  fit.copyBack();
  apart.giveBack();
  return code;
}

int Cpp_Param_BackSelection(double* times, int n, int* p, int k, double* status, double* bounds,
                            double* covariates, double* weights, int* iterations, double tolerance,
                            int distribution, short useInitialValues, double* initialValues,
                            short fixIntercept, double interceptValue, int backwardOption,
                            double removeThreshold, double* parameters, double* logLik,
                            double* logLik0, double* gradient, double* hessian, double* covariance,
                            double* gradient0, double* hessian0, double* selectionSteps,
                            int* selectionCount, int* selectionOrder) {
  const int m = parameterCount(*p, k);
  Apart apart{reads(times, n),
              reads(status, n),
              reads(bounds, 2LL * n),
              writes(covariates, cells(n, raised(*p))),
              reads(weights, n),
              sets(p),
              sets(iterations),
              reads(initialValues, m),
              sets(logLik),
              sets(logLik0),
              writes(parameters, m),
              writes(gradient, m),
              writes(hessian, cells(m, m)),
              writes(covariance, cells(m, m)),
              writes(gradient0, m),
              writes(hessian0, cells(m, m)),
              writes(selectionSteps, 3LL * raised(*p)),
              sets(selectionCount),
              writes(selectionOrder, raised(*p))};
  Copied data(n, *p, times, status, bounds, covariates, weights);
  Block initialBlock(m, 1, initialValues);
  Fit fit(m, m, gradient, hessian, covariance, gradient0, hessian0, parameters);
  History history(*p, selectionSteps, selectionOrder);
  const int code = Param_BackSelection(
      &data.times, n, p, k, &data.status, &data.bounds, &data.covariates, &data.weights, iterations,
      tolerance, distribution, useInitialValues, &initialBlock, fixIntercept, interceptValue,
      backwardOption, removeThreshold, &fit.parameters, logLik, logLik0, &fit.gradient,
      &fit.hessian, &fit.covariance, &fit.gradient0, &fit.hessian0, &history.steps, selectionCount,
      &history.order);
  data.covariates.copyBack();
  fit.copyBack();
  history.copyBack();
  apart.giveBack();
  return code;
}

int Cpp_Param_ForSelection(double* times, int n, int* p, int k, double* status, double* bounds,
                           double* covariates, double* weights, int* iterations, double tolerance,
                           int distribution, short useInitialValues, double* initialValues,
                           short fixIntercept, double interceptValue, double enterThreshold,
                           double* parameters, double* logLik, double* logLik0, double* gradient,
                           double* hessian, double* covariance, double* gradient0, double* hessian0,
                           double* selectionSteps, int* selectionCount, int* selectionOrder) {
  const int m = parameterCount(*p, k);
  Apart apart{reads(times, n),
              reads(status, n),
              reads(bounds, 2LL * n),
              writes(covariates, cells(n, raised(*p))),
              reads(weights, n),
              sets(p),
              sets(iterations),
              reads(initialValues, m),
              sets(logLik),
              sets(logLik0),
              writes(parameters, m),
              writes(gradient, m),
              writes(hessian, cells(m, m)),
              writes(covariance, cells(m, m)),
              writes(gradient0, m),
              writes(hessian0, cells(m, m)),
              writes(selectionSteps, 3LL * raised(*p)),
              sets(selectionCount),
              writes(selectionOrder, raised(*p))};
  Copied data(n, *p, times, status, bounds, covariates, weights);
  Block initialBlock(m, 1, initialValues);
  Fit fit(m, m, gradient, hessian, covariance, gradient0, hessian0, parameters);
  History history(*p, selectionSteps, selectionOrder);
  const int code = Param_ForSelection(
      &data.times, n, p, k, &data.status, &data.bounds, &data.covariates, &data.weights, iterations,
      tolerance, distribution, useInitialValues, &initialBlock, fixIntercept, interceptValue,
      enterThreshold, &fit.parameters, logLik, logLik0, &fit.gradient, &fit.hessian,
      &fit.covariance, &fit.gradient0, &fit.hessian0, &history.steps, selectionCount,
      &history.order);
  data.covariates.copyBack();
  fit.copyBack();
  history.copyBack();
  apart.giveBack();
  return code;
}

void Cpp_ComputeCritParam(int n, int p, int k, double logLik, double logLik0, int iterations,
                          double alpha, double* parameters, double* hessian, double* covariance,
                          double* zOut, double* gradient0, double* hessian0, double* fitStatistics,
                          double* coefficients, double* tests) {
  const int m = parameterCount(p, k);
  Apart apart{reads(parameters, m),      reads(hessian, cells(m, m)),
              reads(covariance, m),      sets(zOut),
              reads(gradient0, m),       reads(hessian0, cells(m, m)),
              writes(fitStatistics, 14), writes(coefficients, 9LL * m),
              writes(tests, 9)};
  Block parametersBlock(m, 1, parameters);
  Block hessianBlock(m, m, hessian);
  // Callers of this one provide a single column: further variances read as -1.
  Block covarianceBlock(m, 1, covariance);
  Block gradient0Block(m, 1, gradient0);
  Block hessian0Block(m, m, hessian0);
  Block statisticsBlock(7, 2, fitStatistics);
  Block coefficientsBlock(m, 9, coefficients);
  Block testsBlock(3, 3, tests);
  ComputeCritParam(n, p, k, logLik, logLik0, iterations, alpha, &parametersBlock, &hessianBlock,
                   &covarianceBlock, zOut, &gradient0Block, &hessian0Block, &statisticsBlock,
                   &coefficientsBlock, &testsBlock);
  for (const Block* out : {&statisticsBlock, &coefficientsBlock, &testsBlock}) out->copyBack();
  apart.giveBack();
}

void Cpp_ResParam(double* times, int n, int p, int k, int distribution, short logTimes,
                  double* covariates, double* parameters, double* survivalOut,
                  double* probabilitiesOut, double* residualsOut, double* quantilesOut) {
  const int m = parameterCount(p, k);
  Apart apart{reads(times, n),
              reads(covariates, cells(n, raised(p))),
              reads(parameters, m),
              writes(survivalOut, n),
              writes(probabilitiesOut, 2LL * n),
              writes(residualsOut, n),
              writes(quantilesOut, 9LL * n)};
  matrix timesBlock = view(n, 1, times);
  matrix covariatesBlock = view(n, raised(p), covariates);
  Block parametersBlock(m, 1, parameters);
  Block survivalBlock(n, 1, survivalOut);
  Block probabilitiesBlock(n, 2, probabilitiesOut);
  // Callers of this one provide room for the first column only.
  Block residualsBlock(n, 1, residualsOut);
  Block quantilesBlock(n, 9, quantilesOut);
  ResParam(&timesBlock, n, p, distribution, logTimes, &covariatesBlock, &parametersBlock,
           &survivalBlock, &probabilitiesBlock, &residualsBlock, &quantilesBlock);
  for (const Block* out : {&survivalBlock, &probabilitiesBlock, &residualsBlock, &quantilesBlock}) {
    out->copyBack();
  }
  apart.giveBack();
}

int Cpp_RunParamReg(double* times, int n, int p, int* nCovariatesOut, int k, double* status,
                    double* bounds, double* covariates, double* weights, int iterations,
                    double tolerance, short logTimes, int distribution, short noCovariates,
                    int selectionMethod, int backwardOption, double enterThreshold,
                    double removeThreshold, double alpha, int, short useInitialValues,
                    double* initialValues, short fixIntercept, double interceptValue,
                    double* parameters, double* fitStatistics, double* tests, double* coefficients,
                    double* survivalOut, double* residualsOut, double* probabilitiesOut,
                    double* quantilesOut, double* selectionSteps, int* selectionCount,
                    int* selectionOrder) {
  const int m = parameterCount(p, k);
  Apart apart{reads(times, n),
              reads(status, n),
              reads(bounds, 2LL * n),
              reads(covariates, cells(n, raised(p))),
              reads(weights, n),
              sets(nCovariatesOut),
              reads(initialValues, m),
              writes(parameters, m),
              writes(fitStatistics, 14),
              writes(tests, 9),
              writes(coefficients, 9LL * m),
              writes(survivalOut, n),
              writes(residualsOut, 2LL * n),
              writes(probabilitiesOut, 2LL * n),
              writes(quantilesOut, 9LL * n),
              writes(selectionSteps, 3LL * raised(p)),
              sets(selectionCount),
              writes(selectionOrder, raised(p))};
  Copied data(n, p, times, status, bounds, covariates, weights);
  Block initialBlock(m, 1, initialValues);
  Block parametersBlock(m, 1, parameters);
  Block statisticsBlock(7, 2, fitStatistics);
  Block testsBlock(3, 3, tests);
  Block coefficientsBlock(m, 9, coefficients);
  Block survivalBlock(n, 1, survivalOut);
  Block residualsBlock(n, 2, residualsOut);
  Block probabilitiesBlock(n, 2, probabilitiesOut);
  Block quantilesBlock(n, 9, quantilesOut);
  History history(p, selectionSteps, selectionOrder);
  const int code = RunParamReg(
      &data.times, n, p, nCovariatesOut, k, &data.status, &data.bounds, &data.covariates,
      &data.weights, iterations, tolerance, logTimes, distribution, noCovariates, selectionMethod,
      backwardOption, enterThreshold, removeThreshold, alpha, useInitialValues, &initialBlock,
      fixIntercept, interceptValue, &parametersBlock, &statisticsBlock, &testsBlock,
      &coefficientsBlock, &survivalBlock, &residualsBlock, &probabilitiesBlock, &quantilesBlock,
      &history.steps, selectionCount, &history.order);
  for (const Block* out : {&parametersBlock, &statisticsBlock, &testsBlock, &coefficientsBlock,
                           &survivalBlock, &residualsBlock, &probabilitiesBlock, &quantilesBlock}) {
    out->copyBack();
  }
  history.copyBack();
  apart.giveBack();
  return code;
}
