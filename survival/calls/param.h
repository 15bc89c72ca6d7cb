/* Parametric survival regression: exponential, Weibull and log-normal models.
 *
 * Arguments that several entry points share:
 *
 *   times[n]             on the scale of the fit: the logarithm of the time, unless a function says
 *                        that it takes logarithms itself
 *   n, p, k              rows (n >= 1), covariates (p >= 0), further parameters: 1 for the
 *                        exponential law (intercept), 2 for the others (intercept, sigma)
 *   status[n]            1 event at the time, 0 right-censored, 2 left-censored (event before the
 *                        time), 3 interval-censored; any other value has no term of its own
 *   bounds[n * 2]        lower and upper bound of the rows of status 3, on the scale of times; not
 *                        read in other rows
 *   covariates[n * max(p, 1)]
 *   weights[n]           case weights
 *   distribution         1 exponential, 2 Weibull, 3 log-normal. Any other code has
 *                        log-likelihood 0 and zero derivatives: its fits fail
 *   parameters[p + k]    coefficients in the order of the columns, intercept, sigma
 *   iterations           step limit; with 0 or less there is none, and a fit that never converges
 *                        ends where it stands still, at the latest after 100,000 steps
 *   tolerance            a fit ends when |change of the log-likelihood| < tolerance
 *   useInitialValues     flag: start at initialValues[p + k] instead of the least-squares fit
 *   fixIntercept         flag: hold the intercept at interceptValue. Not the constrained maximum:
 *                        each step is that of the free model, with the intercept left out
 *
 * Not the textbook's numbers, and required to be so: the log-likelihood of exponential rows adds
 * the last terms of other statuses again, Weibull rows of status 2 and 3 enter it without their
 * weight, log-normal rows of status 2 with the wrong sign. For right-censored data of one law (one
 * status only for the exponential) it is the textbook's. Weibull events count the Jacobian of the
 * logarithm, log-normal events do not: criteria are not comparable across laws.
 */
#ifndef SURVIVAL_CALLS_PARAM_H_
#define SURVIVAL_CALLS_PARAM_H_

#include "survival/export.h"

/* Log-likelihood, gradient and second derivatives at given parameters, sigma itself among the
 * variables. The derivatives are those of the textbook log-likelihood.
 *
 * Out    logLik                       one double
 *        gradient[p + k]
 *        hessian[(p + k) * (p + k)]   both triangles
 * Edge   sigma <= 0 is not refused; a probability that underflows gives infinities or NaN
 * Cost   O(n (p + 1)^2), one pass over the rows */
SURVIVAL_C void Cpp_ComputeLogLikeDerivativesParam(double* times, int n, int p, int k,
                                                   double* status, double* bounds,
                                                   double* covariates, double* parameters,
                                                   double* weights, int distribution,
                                                   double* logLik, double* gradient,
                                                   double* hessian);

/* Fits one model by Newton-Raphson steps with step halving.
 *
 * In/out iterations                   step limit, then the steps made (unchanged on failure)
 * Out    logLik, logLik0              at the start of the last step, and at the starting values
 *        gradient[p + k], hessian[(p + k) * (p + k)]
 *                                     at the estimates; the Hessian is only its diagonal when the
 *                                     last step was refused
 *        covariance[p + k]            first column of the inverse Hessian of the last step (the
 *                                     negative of the covariances with the first parameter)
 *        gradient0[p + k], hessian0[(p + k) * (p + k)]   at the starting values
 *        parameters[p + k]            the estimates
 * Returns 0; -2 when the last step met a singular matrix (the outputs then hold the last point)
 * Edge   the last parameter, sigma or the exponential intercept, is kept at 1e-12 or above */
SURVIVAL_C int Cpp_OptimizeParamModel(double* times, int n, int p, int k, double* status,
                                      double* bounds, double* covariates, double* weights,
                                      int* iterations, double tolerance, int distribution,
                                      short useInitialValues, double* initialValues,
                                      short fixIntercept, double interceptValue, double* logLik,
                                      double* logLik0, double* gradient, double* hessian,
                                      double* covariance, double* gradient0, double* hessian0,
                                      double* parameters);

/* Backward elimination of covariates by Wald p-values; the last one is never removed.
 *
 * In/out p                            covariates passed, then kept
 *        covariates                   the kept ones first, in their order
 *        iterations                   step limit of every fit, then the steps of the last fit
 * In     backwardOption               0: remove the covariate with the largest Wald p-value;
 *                                     otherwise the first one, whose p-value counts as 0
 *        removeThreshold              removal goes on while that p-value is at least this
 * Out    as Cpp_OptimizeParamModel, of the last fit, but covariance[(p + k) * (p + k)] whole; sizes
 *        are those of the p passed, the smaller model stands in the leading rows and columns; the
 *        gradient stays as passed past it
 *        selectionSteps[3 * max(p, 1)]  for each step: covariates before it, Wald chi-square,
 *                                     p-value
 *        selectionCount               steps made + 1
 *        selectionOrder[max(p, 1)]    for each covariate passed, the step that removed it, or 0
 * Returns 0, whether or not the fits succeeded */
SURVIVAL_C int Cpp_Param_BackSelection(
    double* times, int n, int* p, int k, double* status, double* bounds, double* covariates,
    double* weights, int* iterations, double tolerance, int distribution, short useInitialValues,
    double* initialValues, short fixIntercept, double interceptValue, int backwardOption,
    double removeThreshold, double* parameters, double* logLik, double* logLik0, double* gradient,
    double* hessian, double* covariance, double* gradient0, double* hessian0,
    double* selectionSteps, int* selectionCount, int* selectionOrder);

/* Forward entry of covariates by likelihood-ratio p-values, whose degrees of freedom are the number
 * of covariates of the candidate model. As Cpp_Param_BackSelection, but for
 *
 * In     enterThreshold               the best candidate enters when its p-value is at most this
 *                                     and not exactly 0
 * Out    selectionSteps[3 * max(p, 1)]  for each step: its number, the likelihood-ratio statistic,
 *                                     the p-value
 *        selectionOrder[max(p, 1)]    for each covariate passed, the step at which it entered, or
 *                                     0
 * Returns 0
 * Edge   at most p - 1 covariates enter (one where p is 1); when none does the full model is
 *        fitted */
SURVIVAL_C int Cpp_Param_ForSelection(
    double* times, int n, int* p, int k, double* status, double* bounds, double* covariates,
    double* weights, int* iterations, double tolerance, int distribution, short useInitialValues,
    double* initialValues, short fixIntercept, double interceptValue, double enterThreshold,
    double* parameters, double* logLik, double* logLik0, double* gradient, double* hessian,
    double* covariance, double* gradient0, double* hessian0, double* selectionSteps,
    int* selectionCount, int* selectionOrder);

/* Fit statistics, coefficient table and global tests of a fit.
 *
 * In     logLik, logLik0, iterations  of the fit
 *        alpha                        intervals have level 1 - alpha
 *        parameters, hessian, gradient0, hessian0   of the fit
 *        covariance[p + k]            one column: from the second row on standard errors come out
 *                                     as 1
 * Out    zOut                         the normal quantile at 1 - alpha / 2
 *        fitStatistics[7 * 2]         rows n, parameters, -2 logLik, AIC, SBC, AICc, iterations;
 *                                     columns: model at the starting values, fitted model
 *        coefficients[(p + k) * 9]    rows intercept, coefficients, sigma; columns estimate,
 *                                     standard error, Wald chi-square, p-value, lower and upper
 *                                     limit (sigma: on the log scale); columns 7 to 9 are untouched
 *        tests[3 * 3]                 rows likelihood-ratio, score, Wald; columns degrees of
 *                                     freedom, statistic, p-value; untouched for p < 1
 * Edge   all of them are relative to the starting values, not to a model without covariates; the
 *        score statistic uses the second derivatives, not their inverse, and depends on units */
SURVIVAL_C void Cpp_ComputeCritParam(int n, int p, int k, double logLik, double logLik0,
                                     int iterations, double alpha, double* parameters,
                                     double* hessian, double* covariance, double* zOut,
                                     double* gradient0, double* hessian0, double* fitStatistics,
                                     double* coefficients, double* tests);

/* Residuals, fitted probabilities and predicted percentiles, by the formulas of the extreme-value
 * law for every distribution; sigma is the fitted one for the Weibull law and 1 otherwise.
 *
 * In     logTimes                     flag: times are logarithms, percentiles are returned as times
 * Out    survivalOut[n]               S = exp(-e^r) with r = (time - predictor) / sigma
 *        probabilitiesOut[n * 2]      1 - S; e^r S / sigma
 *        residualsOut[n]              r
 *        quantilesOut[n * 9]          times survived with probability 0.99, 0.95, 0.9, 0.75, 0.5,
 *                                     0.25, 0.1, 0.05, 0.01; missing where the logarithm of one is
 *                                     700 or more */
SURVIVAL_C void Cpp_ResParam(double* times, int n, int p, int k, int distribution, short logTimes,
                             double* covariates, double* parameters, double* survivalOut,
                             double* probabilitiesOut, double* residualsOut, double* quantilesOut);

/* The whole regression: logarithms, fit or selection, criteria and tests, residuals. The arrays
 * that are only read stay as they are.
 *
 * In     logTimes                     flag: take the logarithm of every time and of the bounds of
 *                                     status 3 first
 *        noCovariates                 flag: the model has no covariates
 *        selectionMethod              -1 none, 0 forward, 1 backward; otherwise nothing is fitted
 *                                     and the tables describe the parameters passed in
 *        backwardOption, enterThreshold, removeThreshold
 *                                     of the selections
 *        alpha                        intervals have level 1 - alpha
 *        reserved                     ignored
 * Out    nCovariatesOut               covariates in the final model
 *        parameters[p + k]
 *        fitStatistics[7 * 2], tests[3 * 3], coefficients[(p + k) * 9]
 *                                     as Cpp_ComputeCritParam, with the whole covariance
 *        survivalOut[n], probabilitiesOut[n * 2], quantilesOut[n * 9]
 *                                     as Cpp_ResParam
 *        residualsOut[n * 2]          r; -ln S where S > 0
 *        selectionSteps[3 * max(p, 1)], selectionCount, selectionOrder[max(p, 1)]
 *                                     of the selections; untouched without one
 * Returns 0
 *        -5   no selection, and the fit failed
 *        -1   no selection, and the fit took all its steps: parameters hold the last point
 *        On both the tables and nCovariatesOut are untouched. */
SURVIVAL_C int Cpp_RunParamReg(double* times, int n, int p, int* nCovariatesOut, int k,
                               double* status, double* bounds, double* covariates, double* weights,
                               int iterations, double tolerance, short logTimes, int distribution,
                               short noCovariates, int selectionMethod, int backwardOption,
                               double enterThreshold, double removeThreshold, double alpha,
                               int reserved, short useInitialValues, double* initialValues,
                               short fixIntercept, double interceptValue, double* parameters,
                               double* fitStatistics, double* tests, double* coefficients,
                               double* survivalOut, double* residualsOut, double* probabilitiesOut,
                               double* quantilesOut, double* selectionSteps, int* selectionCount,
                               int* selectionOrder);

#endif /* SURVIVAL_CALLS_PARAM_H_ */
