/* Cox proportional-hazards regression: prepare the data, then run the regression on them. */
#ifndef SURVIVAL_CALLS_COX_H_
#define SURVIVAL_CALLS_COX_H_

#include "survival/export.h"

/* Sorts the rows by stratum and time and indexes the distinct times (tie groups) of each stratum.
 *
 * In/out time[n], status[n], extraColumn[n], tieKey[n], covariates[n * max(p, 1)], stratum[n]
 *                      come back sorted by stratum, then time; equal times keep their order. The
 *                      stratum column itself moves for S > 1 only
 *        status        in [0, 1]: 0 is censored, any other value an event
 *        extraColumn   any numbers; they only move with their rows
 *        tieKey        1 for a row that counts, 0 for one that is left out of its tie group when
 *                      its time equals the row's before it. The column is re-ordered twice by the
 *                      same permutation: once the data were out of order, its values no longer
 *                      stand with their rows.
 *        maxGroups     raised to the largest number of groups of a stratum; set it to 0
 * In     stratum       any labels; not looked at for S < 2
 *        stratumSizes[max(S, 1)]  rows of each stratum in ascending order of label, truncated
 * Out    distinctTimes[max(S, 1)], censored[max(S, 1)]  groups and censored rows of each stratum
 *        groupStart, groupSize, groupEvents [max(S, 1) * n]  element (s, k) for group k of
 *                      stratum s: its first row (from 1), its rows, its events
 * Returns 0
 *        -1  a status is below 0 or above 1
 *        -2  n < 2
 *        -3  the statuses sum to 0
 *        After a refusal nothing was sorted; distinctTimes is 1, censored 0, and the first group
 *        of each stratum has its start and size 1.
 * Edge   a stratum of no rows still gets one group, of the row that follows; rows past the last
 *        stratum are in no group; S <= 0 checks the data and does nothing else
 * Cost   O(n (log n + p)) */
SURVIVAL_C int Cpp_ReorganizeDataCox(double* time, int n, int p, double* status,
                                     double* extraColumn, double* tieKey, double* covariates,
                                     double* stratum, double* stratumSizes, int S,
                                     int* distinctTimes, int* censored, int* groupStart,
                                     int* groupSize, int* groupEvents, int* maxGroups);

/* Fits the model, with forward or backward selection on request, and describes it. The arrays are
 * those that Cpp_ReorganizeDataCox left; the group tables are cut to G columns, G its maxGroups.
 *
 * In     time[n], status[n], covariates[n * max(p, 1)], stratumSizes[max(S, 1)]
 *        tolerance      the fit ends when the log-likelihood changes by less than this, or, past
 *                       ten iterations, when every coefficient does
 *        ties           0 Breslow's likelihood; 1 the same without guards against overflow and
 *                       empty risk sums; anything else: a likelihood of 0
 *        distinctTimes[max(S, 1)], censored[max(S, 1)]
 *        groupSize, groupEvents, groupStart [max(S, 1) * max(G, 1)]
 *        method         -1 every covariate; 0 forward, 1 backward selection; anything else fits
 *                       nothing and reports the caller's beta
 *        removalTest    of backward selection: 0 Wald; anything else removes nothing
 *        entryThreshold, removalThreshold  largest p-value that enters, smallest that leaves
 *        alpha          of the hazard ratios' limits
 *        survival       -1 also fills baselineSurvival, meanSurvival and residuals
 *        unused1..5     anything
 * In/out iterations     limit on entry; iterations of the last fit on return. Without a limit (0 or
 *                       less) a fit that never converges ends where it stands still, at the latest
 *                       after 100,000 iterations
 * Out    finalCovariates  how many covariates the model has, q; they keep their order
 *        beta[max(p, 1)]  coefficients, first q elements
 *        criteria[6 * 2]  model without covariates | fitted model: events (all rows less the
 *                       first stratum's censored ones) in both columns; 0 | q; -2 log-likelihood;
 *                       AIC; SBC; 1 | iterations
 *        tests[3 * 3]   likelihood ratio, score, Wald by row: degrees of freedom, chi-square,
 *                       p-value
 *        coefficients[max(p, 1) * 9]  rows 1..q: coefficient, standard error, Wald chi-square,
 *                       p-value, hazard ratio, lower and upper limit; columns 8 and 9 stay
 *        baselineSurvival, meanSurvival [max(S, 1) * max(G, 1)]  at covariates 0, and at the means
 *                       over all rows (not written where their linear predictor is 700 or more);
 *                       cells past a stratum's last group stay
 *        residuals[n * (2 p + 4)]  time, status, martingale, deviance, q Schoenfeld residuals, q
 *                       second residuals
 *        history[3 * max(p, 1)]  column per selection step: step number (backward: covariates
 *                       before it), chi-square, p-value
 *        steps          selections only: 1 + the number of entries or removals
 *        order[max(p, 1)]  selections only: step at which each covariate entered or left, else 0
 * Returns 0, whatever happened: a fit that does not converge or whose matrix is singular shows in
 *        iterations, in markers in `coefficients` and in the tests only.
 * Edge   forward selection returns every covariate when none enters, and for p > 1 enters p - 1 at
 *        most; a coefficient without a variance has markers in columns 2 to 7; so has the p-value
 *        of a likelihood ratio below 0. Residuals of a row that is in no tie group: martingale
 *        the status, deviance missing, Schoenfeld and second ones not numbers; past the last
 *        stratum all of them are 0
 * Cost   each likelihood evaluation O(groups * n * p^2) */
SURVIVAL_C int RunCoxReg(double* time, int n, int p, int* finalCovariates, double* status,
                         int unused1, double* covariates, int unused2, double* stratumSizes, int S,
                         int* iterations, double tolerance, int ties, int* distinctTimes,
                         int* groupSize, int* groupEvents, int* censored, int* groupStart,
                         int method, int removalTest, double entryThreshold,
                         double removalThreshold, double alpha, int G, short survival, int unused3,
                         int unused4, int unused5, double* beta, double* criteria, double* tests,
                         double* coefficients, double* baselineSurvival, double* meanSurvival,
                         double* residuals, double* history, int* steps, int* order);

#endif /* SURVIVAL_CALLS_COX_H_ */
