// Parametric survival regression: exponential, Weibull and log-normal models of right-, left- and
// interval-censored times, with stepwise selection, criteria and predictions.
//
// Every routine shares the data and the model:
//   times[n]            on the scale of the fit, in use the logarithm of the time
//   status[n]           1 event at the time, 0 right-censored, 2 left-censored, 3
//   interval-censored;
//                       any other value has no term of its own
//   bounds (n x 2)      lower and upper bound of the rows of status 3, on the scale of times
//   covariates (n x p)  no column of ones; p may be 0
//   weights[n]          case weights
//   distribution        1 exponential, 2 Weibull, 3 log-normal
//   parameters[p + k]   p coefficients, the intercept and, where k = 2, the scale sigma itself
// The predictor is eta = covariates * coefficients + intercept; z = (time - eta) / sigma follows
// the standard minimum extreme-value law (1, with sigma = 1, and 2) or the normal law (3).
#ifndef SURVIVAL_PARAM_PARAM_H_
#define SURVIVAL_PARAM_PARAM_H_

#include "Klikro/matrix"
#include "Klikro/matrixInt"
#include "survival/export.h"

// Log-likelihood of a parameter vector.
//
// In   k is not read
// Out  logLik   0 for n < 1 and for another distribution code
// Edge sigma is not checked; a probability that underflows gives -inf. Not the textbook's value:
//      exponential rows add the last terms of the other codes again, Weibull rows of status 2 and 3
//      are not weighted, the log-normal term of status 2 is subtracted. Only the Weibull law counts
//      the Jacobian of the logarithm (events only)
// Cost O(n p)
// Source Kalbfleisch & Prentice, The Statistical Analysis of Failure Time Data (2002), ch. 3
SURVIVAL_C void ComputeLogLikeParam(matrix* times, int n, int p, int k, matrix* status,
                                    matrix* bounds, matrix* covariates, matrix* parameters,
                                    matrix* weights, int distribution, double* logLik);

// Gradient and second derivatives of the textbook log-likelihood, every row weighted, with respect
// to the coefficients, the intercept and sigma.
//
// Out  gradient   reshaped to (p + k) x 1
//      hessian    every element zeroed, then both triangles of its first p + k rows and columns
// Edge on rows that ComputeLogLikeParam treats in its own way this is not its gradient; zero
//      probabilities give infinities or NaN; zero throughout for another distribution code
// Cost O(n (p + 1)^2), one pass over the rows
SURVIVAL_C void ComputeDerivativesParam(matrix* times, int n, int p, int k, matrix* status,
                                        matrix* bounds, matrix* covariates, matrix* parameters,
                                        matrix* weights, int distribution, matrix* gradient,
                                        matrix* hessian);

// Both of the above, the same bits, in one pass over the rows.
SURVIVAL_C void ComputeLogLikeDerivativesParam(matrix* times, int n, int p, int k, matrix* status,
                                               matrix* bounds, matrix* covariates,
                                               matrix* parameters, matrix* weights,
                                               int distribution, double* logLik, matrix* gradient,
                                               matrix* hessian);

// Clears everything off the diagonal of the first m rows and columns. Returns m.
SURVIVAL_API int modifyDerivatives(matrix* hessian, int m);

// Maximum likelihood by Newton-Raphson steps with step halving.
//
// In/out iterations   step limit, then the steps made. Without one (0 or less) a fit that never
//                     converges ends where it stands still, or after 100,000 steps
// In     tolerance    the fit ends when |change of the log-likelihood| < tolerance
//        useInitialValues, initialValues[p + k]
//                     -1: start there; otherwise at the weighted least-squares fit of the times
//                     (p = 0: their weighted mean, + 0.572 for the Weibull law) and at their
//                     weighted deviation s; Weibull: ln(4 s / 1.64) / 2 where that is positive
//        fixIntercept, interceptValue
//                     -1: the intercept is held there, each step leaving it out
// Out    logLik       at the point the last step was taken from, not at the estimates
//        logLik0, gradient0[p + k], hessian0 ((p + k) x (p + k))
//                     at the starting values
//        gradient[p + k], hessian
//                     at the estimates; hessian is only its diagonal after a refused step
//        covariance   the inverse Hessian that the last step used; its sign is negative
//        parameters[p + k]  the estimates
// Returns 0, or -2 when the last step met a singular matrix: iterations is then as passed, the rest
// holds the last accepted point
// Edge   the last parameter is kept at 1e-12 or above, whatever the law
// Cost   O(n (p + 1)^2) a step, and O(n p) for each of up to ten trials
SURVIVAL_C int OptimizeParamModel(matrix* times, int n, int p, int k, matrix* status,
                                  matrix* bounds, matrix* covariates, matrix* weights,
                                  int* iterations, double tolerance, int distribution,
                                  short useInitialValues, matrix* initialValues, short fixIntercept,
                                  double interceptValue, double* logLik, double* logLik0,
                                  matrix* gradient, matrix* hessian, matrix* covariance,
                                  matrix* gradient0, matrix* hessian0, matrix* parameters);

// Backward elimination by Wald p-values. The arguments of OptimizeParamModel, and
//
// In/out p, covariates    afterwards the kept covariates, first columns, in their order
//        iterations       limit of every fit, then the steps of the last one
// In     backwardOption   0: the covariate of the largest Wald p-value is the one to remove;
//                         otherwise the first one, with p-value 0
//        removeThreshold  removed while its p-value is at least this; the last one always stays
// Out    parameters, logLik, logLik0, gradient ... hessian0
//                         of the last fit, in the leading elements of matrices that keep their
//                         shape, but for the gradient, which takes that of the model
//        selectionSteps   3 x max(p, 1): covariates before the step, Wald statistic, p-value
//        selectionCount   steps made + 1
//        selectionOrder   reshaped to (p + k) x 1: the step that removed each covariate, or 0
// Returns 0, whatever the fits returned
SURVIVAL_C int Param_BackSelection(
    matrix* times, int n, int* p, int k, matrix* status, matrix* bounds, matrix* covariates,
    matrix* weights, int* iterations, double tolerance, int distribution, short useInitialValues,
    matrix* initialValues, short fixIntercept, double interceptValue, int backwardOption,
    double removeThreshold, matrix* parameters, double* logLik, double* logLik0, matrix* gradient,
    matrix* hessian, matrix* covariance, matrix* gradient0, matrix* hessian0,
    matrix* selectionSteps, int* selectionCount, matrixInt* selectionOrder);

// Forward entry by likelihood-ratio p-values, with as many degrees of freedom as the candidate
// model has covariates. As Param_BackSelection but for
//
// In     enterThreshold   the best candidate enters when its p-value is at most this; a p-value of
//                         exactly 0 never does. At most p - 1 enter where p > 1
// Out    selectionSteps   3 x max(p, 1): number of the step, likelihood-ratio statistic, p-value
//        selectionOrder   zeroed, then the step at which each covariate entered
// Edge   when none enters the model of all p covariates is fitted
SURVIVAL_C int Param_ForSelection(matrix* times, int n, int* p, int k, matrix* status,
                                  matrix* bounds, matrix* covariates, matrix* weights,
                                  int* iterations, double tolerance, int distribution,
                                  short useInitialValues, matrix* initialValues, short fixIntercept,
                                  double interceptValue, double enterThreshold, matrix* parameters,
                                  double* logLik, double* logLik0, matrix* gradient,
                                  matrix* hessian, matrix* covariance, matrix* gradient0,
                                  matrix* hessian0, matrix* selectionSteps, int* selectionCount,
                                  matrixInt* selectionOrder);

// Fit statistics, coefficient table and global tests of a fit.
//
// In   logLik, logLik0, iterations, parameters ... hessian0   as OptimizeParamModel leaves them
//      alpha           the intervals have level 1 - alpha
// Out  zOut            the normal quantile at 1 - alpha / 2
//      fitStatistics   7 x 2, model at the starting values and fitted model: n, parameters,
//                      -2 logLik, AIC, SBC, AICc, iterations
//      coefficients    (p + k) x 9, rows intercept, coefficients, sigma; columns 1 to 6: estimate,
//                      standard error, Wald chi-square, p-value, lower, upper limit (sigma: on the
//                      log scale); columns 7 to 9 are left alone
//      tests           3 x 3, likelihood-ratio, score, Wald; degrees of freedom, statistic,
//                      p-value; left alone for p < 1
// Edge what cannot be formed is missing. The reference of the first column and of the
//      likelihood-ratio test is the starting point, the score test uses the second derivatives
//      themselves and the Wald test ignores the covariance with intercept and scale
SURVIVAL_C void ComputeCritParam(int n, int p, int k, double logLik, double logLik0, int iterations,
                                 double alpha, matrix* parameters, matrix* hessian,
                                 matrix* covariance, double* zOut, matrix* gradient0,
                                 matrix* hessian0, matrix* fitStatistics, matrix* coefficients,
                                 matrix* tests);

// Residuals and predicted percentiles, by the extreme-value formulas whatever the distribution;
// sigma is the fitted scale for the Weibull law (1 where it is 0) and 1 for every other code.
//
// In   logTimes           -1: times are logarithms and the percentiles go back to the time scale
// Out  survivalOut[n]     S = exp(-e^r)
//      probabilitiesOut   n x 2: 1 - S, e^r / sigma S
//      residualsOut       n x 2: r = (time - eta) / sigma; -ln S where S > 0, else left alone
//      quantilesOut       n x 9: times survived with probability .99 .95 .9 .75 .5 .25 .1 .05 .01;
//                         missing where the logarithm of one is 700 or more
SURVIVAL_C void ResParam(matrix* times, int n, int p, int distribution, short logTimes,
                         matrix* covariates, matrix* parameters, matrix* survivalOut,
                         matrix* probabilitiesOut, matrix* residualsOut, matrix* quantilesOut);

// The whole regression: transform, fit or selection, criteria, residuals.
//
// In     k                1 for the exponential law, 2 for the others
//        iterations       step limit of every fit
//        logTimes         -1: times, and the bounds of status 3, are replaced by their logarithms
//        noCovariates     -1: the model has no covariates
//        selectionMethod  -1 none, 0 forward, 1 backward; otherwise nothing is fitted and the
//        tables
//                         describe the parameters passed in, with log-likelihoods of 0
// Out    as listed for the routines above; nCovariatesOut the covariates in the model
// Returns 0; -5 when the single fit failed; -1 when it took all its steps. On both the tables and
// nCovariatesOut stay as passed
SURVIVAL_C int RunParamReg(matrix* times, int n, int p, int* nCovariatesOut, int k, matrix* status,
                           matrix* bounds, matrix* covariates, matrix* weights, int iterations,
                           double tolerance, short logTimes, int distribution, short noCovariates,
                           int selectionMethod, int backwardOption, double enterThreshold,
                           double removeThreshold, double alpha, short useInitialValues,
                           matrix* initialValues, short fixIntercept, double interceptValue,
                           matrix* parameters, matrix* fitStatistics, matrix* tests,
                           matrix* coefficients, matrix* survivalOut, matrix* residualsOut,
                           matrix* probabilitiesOut, matrix* quantilesOut, matrix* selectionSteps,
                           int* selectionCount, matrixInt* selectionOrder);

#endif  // SURVIVAL_PARAM_PARAM_H_
