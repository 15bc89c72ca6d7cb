// The Cox family on matrices: preparation, partial likelihood, fit, criteria, baseline survival,
// residuals, selection and the driver that runs them.
//
// Rows are sorted by stratum and by time within a stratum. Group tables hold stratum s in row s
// and its k-th distinct time (tie group) in column k: first row, number of rows, number of events.
// The risk set of a group is every row from its first one to the stratum's last one. Tables that
// point outside the data are followed as the containers read there (-1), up to 65,536 rows or
// groups past the data's end; nothing is read or written outside.
#ifndef SURVIVAL_COX_COX_H_
#define SURVIVAL_COX_COX_H_

#include "Klikro/matrix"
#include "Klikro/matrixInt"
#include "survival/export.h"

// Sorts the data by stratum and time and builds the group tables.
//
// In/out time[n], status[n], extraColumn[n], tieKey[n], covariates[n x p], stratum[n]
//        sorted together, except the tie key: it is the companion of two sorts by each key and so
//        is permuted twice
//        maxGroups      raised to the largest number of groups of a stratum, never lowered
// In     status         in [0, 1]; 0 is censored, anything else an event
//        tieKey         a row with 0 that ties with the row before it is not counted in the group
//        stratumSizes   1 x S, in ascending order of label, truncated
// Out    distinctTimes[S], censored[S], groupStart, groupSize, groupEvents (S x n); cells past a
//        stratum's last group stay
// Returns 0; -1 for a status outside [0, 1], -2 for fewer than two rows, -3 for no event. On a
//        refusal only the first group of each stratum (start, size), its count of groups (1) and
//        its censored count (0) were written.
// Edge   a stratum of no rows still gets one group of one row, at the row that follows
// Cost   O(n (log n + p))
SURVIVAL_C int cReorganizeDataCox(matrix* time, int n, int p, matrix* status, matrix* extraColumn,
                                  matrix* tieKey, matrix* covariates, matrix* stratum,
                                  matrix* stratumSizes, int S, matrixInt* distinctTimes,
                                  matrixInt* censored, matrixInt* groupStart, matrixInt* groupSize,
                                  matrixInt* groupEvents, int* maxGroups);

// Log partial likelihood of the stratified model at beta, with its derivatives.
//
// In   p               coefficients: the first p columns of X[n x p]
//      delta[n]        event indicator
//      ties            0 Breslow, 1 the same sums without guards (see Edge), anything else: zeros
//      beta[p]
// Out  logLik, gradient[p] (reshaped to p x 1), hessian (must be p x p): second derivatives of
//      logLik itself
// Edge for ties 0, rows whose linear predictor is 700 or more are left out of the risk sets, and
//      groups whose sum of exp is at or below 2^-52 add nothing but their covariate sums times
//      beta; for ties 1 nothing is guarded: ln 0 makes logLik +inf
// Cost O(D n p^2) for D groups: each group's sums are formed by their own pass in row order, so
//      the same exponentials give the same bits on every machine. Memory O(n p).
// Source Cox, J R Stat Soc B 34 (1972) 187-220; Breslow, Biometrics 30 (1974) 89-99
SURVIVAL_C void ComputeLogLikeDerivativesCox(int p, matrix* delta, matrix* X, int ties,
                                             matrix* beta, matrixInt* distinctTimes,
                                             matrixInt* groupSize, matrixInt* groupStart, int S,
                                             matrix* stratumSizes, matrixInt* groupEvents,
                                             double* logLik, matrix* gradient, matrix* hessian);

// Maximum of the log partial likelihood, from beta = 0, by Newton-Raphson with step halving.
//
// In/out iterations      limit; on return the iterations made. Without one (0 or less) a fit that
//                        never converges ends where it stands still or is not a number, or after
//                        100,000 iterations
// In     tolerance       the fit ends when the log-likelihood changes by less than this, or after
//                        more than ten iterations when every step is smaller
// Out    beta            p x 1, the last step taken: after ten refusals 2^-10 of the full step,
//                        while the other outputs are those of 2^-9
//        logLik, gradient, secondDerivatives   at the last evaluation (matrices p and p x p)
//        inverse         of secondDerivatives as it was before the last step; zeros when singular
//        logLik0, gradient0, inverse0          at beta = 0
// Returns 0, whatever happened: singular matrices and fits that do not converge end like others.
// Cost   one to ten likelihood evaluations an iteration
SURVIVAL_C int OptimizeCoxModel(int p, matrix* delta, matrix* X, matrix* stratumSizes, int S,
                                int* iterations, double tolerance, int ties,
                                matrixInt* distinctTimes, matrixInt* groupSize,
                                matrixInt* groupEvents, matrixInt* groupStart, double* logLik,
                                double* logLik0, matrix* gradient, matrix* secondDerivatives,
                                matrix* inverse, matrix* gradient0, matrix* inverse0, matrix* beta);

// Forward entry by the likelihood ratio.
//
// In     threshold       largest p-value that enters
// In/out q               covariates: all on entry, those of the final model on return
//        X               on return the final model's columns stand first
//        step            1, raised by each entry
// Out    order[q]        the step at which each covariate entered, 0 for the others
//        history         3 x q, column per step: step, likelihood ratio, p-value
//        the rest        as OptimizeCoxModel for the final model, matrices of its own order; beta
//                        keeps its shape, its first q entries are written
// Edge   a candidate is tested with as many degrees of freedom as its model has coefficients; a
//        p-value of exactly 0 or 1 does not enter; at most q - 1 covariates enter where q > 1;
//        when none enters the model of all covariates is returned
// Returns 0
SURVIVAL_C int Cox_ForSelection(int n, int* q, matrix* delta, matrix* X, matrix* stratumSizes,
                                int S, int* iterations, double tolerance, int ties,
                                matrixInt* distinctTimes, matrixInt* groupSize,
                                matrixInt* groupEvents, matrixInt* groupStart, double threshold,
                                matrix* beta, double* logLik, double* logLik0, matrix* gradient,
                                matrix* secondDerivatives, matrix* inverse, matrix* gradient0,
                                matrix* inverse0, matrix* history, int* step, matrixInt* order);

// Backward removal by Wald's test: as Cox_ForSelection, but
//
// In   removalTest   0; any other value removes nothing
//      threshold     smallest p-value that leaves
// Out  order[q]      the step at which each covariate left
//      history       covariates before the step, Wald chi-square, p-value; the first also on the
//                    pass that stops, unless one covariate is left after a removal
//      beta          reshaped to the final model
SURVIVAL_C int Cox_BackSelection(int n, int* q, matrix* delta, matrix* X, matrix* stratumSizes,
                                 int S, int* iterations, double tolerance, int ties,
                                 matrixInt* distinctTimes, matrixInt* groupSize,
                                 matrixInt* groupEvents, int removalTest, double threshold,
                                 matrixInt* groupStart, matrix* beta, double* logLik,
                                 double* logLik0, matrix* gradient, matrix* secondDerivatives,
                                 matrix* inverse, matrix* gradient0, matrix* inverse0,
                                 matrix* history, int* step, matrixInt* order);

// Fit criteria, global tests and the table of coefficients.
//
// In   n, q            rows, covariates of the model
//      censored[S]     only the first stratum's count is used
//      the rest        as OptimizeCoxModel left them
// Out  z               normal quantile of the intervals
//      criteria        6 x 2, the model without covariates and the fitted one: events, degrees of
//                      freedom, -2 logLik, AIC, SBC, 1 and the iterations
//      tests           3 x 3, likelihood ratio, score, Wald: degrees of freedom, chi-square,
//                      p-value
//      coefficients    rows 1..q, columns 1..7: coefficient, standard error, Wald chi-square,
//                      p-value, hazard ratio, lower limit, upper limit
// Edge a coefficient whose entry on the inverse's diagonal is above -2^-52 has the missing marker
//      in columns 2 to 7; a likelihood ratio below 0 has it as p-value; an upper limit past
//      exp(709) is the infinite marker
SURVIVAL_C void ComputeCritCox(int n, int q, matrixInt* censored, double logLik, double logLik0,
                               int iterations, double alpha, matrix* beta,
                               matrix* secondDerivatives, matrix* inverse, double* z,
                               matrix* gradient0, matrix* inverse0, matrix* criteria,
                               matrix* coefficients, matrix* tests);

// Baseline survival by stratum and distinct time: exp of minus the sum of events over risk sums.
//
// Out  baselineSurvival[S x G]   at covariates 0
//      meanSurvival[S x G]       at the covariates' means over all n rows; not written where their
//                                linear predictor is not below 700
// Edge rows whose linear predictor is not below 700 are left out of the risk sums; a sum whose
//      magnitude is at or below 2^-52 adds nothing. G is not used: the tables bound the writes.
// Cost O(D n) for D groups
// Source Breslow, Biometrics 30 (1974) 89-99
SURVIVAL_C void SurvFoncCox(int n, int q, matrix* X, matrix* stratumSizes, int S, matrix* beta,
                            matrixInt* distinctTimes, matrixInt* groupStart, matrixInt* groupEvents,
                            int G, matrix* baselineSurvival, matrix* meanSurvival);

// Residuals of every row.
//
// In   baselineSurvival   the first table of SurvFoncCox
// Out  residuals          n x (2q + 4): time, delta, martingale, deviance, q Schoenfeld residuals,
//                         q second residuals. The second one is the Schoenfeld residual less the
//                         sum, over the stratum's rows up to this one, of Schoenfeld x deviance x
//                         this row's linear predictor / risk sum: no residual of the literature.
// Edge a row whose martingale residual is delta has no deviance residual (the missing marker), and
//      its second residual is the Schoenfeld residual; a row in no group has no hazard and no risk
//      sum (Schoenfeld residual not a number); a row in no stratum has zeros
// Cost O(D n q) for D groups, and O(n^2 q) for the second residuals of a stratum of up to 2048
//      rows
SURVIVAL_C void ResCox(matrix* time, int n, int q, matrix* delta, matrix* X, matrix* stratumSizes,
                       int S, matrix* beta, matrixInt* distinctTimes, matrixInt* groupSize,
                       matrixInt* groupStart, matrix* baselineSurvival, matrix* residuals);

// A whole regression: fit or selection, criteria, and for survival = -1 baseline and residuals.
//
// In     method          -1 none, 0 forward, 1 backward; anything else fits nothing and reports
//                        the caller's beta over zeros
// In/out iterations      limit; iterations of the last fit
//        X               a selection puts the final model's columns first
// Out    finalCovariates covariates of the final model; the others as the routines above
// Returns 0
SURVIVAL_C int cRunCoxReg(matrix* time, int n, int p, int* finalCovariates, matrix* delta,
                          matrix* X, matrix* stratumSizes, int S, int* iterations, double tolerance,
                          int ties, matrixInt* distinctTimes, matrixInt* groupSize,
                          matrixInt* groupEvents, matrixInt* censored, matrixInt* groupStart,
                          int method, int removalTest, double entryThreshold,
                          double removalThreshold, double alpha, int G, short survival,
                          matrix* beta, matrix* criteria, matrix* tests, matrix* coefficients,
                          matrix* baselineSurvival, matrix* meanSurvival, matrix* residuals,
                          matrix* history, int* steps, matrixInt* order);

#endif  // SURVIVAL_COX_COX_H_
