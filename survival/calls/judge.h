/* Interval and judge data: answers at inspections, and judges' ratings, as censored rows. */
#ifndef SURVIVAL_CALLS_JUDGE_H_
#define SURVIVAL_CALLS_JUDGE_H_

#include "survival/export.h"

/* Turns yes/no answers at inspection times into right-, left- and interval-censored rows, sorted by
 * time, and drops the subjects whose first answer is no.
 *
 * In     answers[n * k]      subject i at inspection j: 1 yes, 0 no, compared exactly
 *        n, k, p             subjects, inspections, covariates
 *        times[k]            inspection times, any one unit, in column order
 *        covariates[n * p]
 * In/out removeFlags[n]      0 on entry; 1 for a dropped subject, in sorted order
 *        bounds[n * 2]       the inspections around the change, in sorted order; the rows of
 *                            dropped subjects are not taken out, so rows do not line up with
 *                            those of type
 *        type[n]             0 right-, 2 left-, 3 interval-censored, kept subjects first
 *        sortKey[n]          the time by which the rows are ordered, kept subjects first. What type
 *                            and sortKey hold past the kept subjects is the sorted column's end
 * Out    covariatesOut[n * p]  covariates of the kept subjects, in sorted order
 *        summary[k * 2]      sum of the first nKept rows of the answers as passed, and that sum in
 *                            percent of n
 *        nRemoved, nKept     one int each
 * Returns 0
 *        -2   every subject was dropped
 *        -1   one of the n values of type is outside 0 .. 3: a dropped subject whose place in the
 *             sorted order is past the number of kept ones (there always is one when more are
 *             dropped than kept), or a value passed in for a subject that was not classified
 *        Every output is written whatever the result.
 * Edge   a subject that says yes throughout is right-censored at the last inspection; yes, no, yes
 *        is left-censored; a no after that makes it an interval again, up to that no. An interval
 *        that would begin at exactly 0 moves one inspection on (its end is -1 past the last one).
 *        With k = 1 a subject that said yes gets nothing written
 * Cost   O(n k + n log n) */
SURVIVAL_C int Cpp_PrepareIntervalData(double* answers, int n, int k, double* times,
                                       double* covariates, int p, int* nRemoved, int* removeFlags,
                                       int* nKept, double* bounds, double* type, double* sortKey,
                                       double* covariatesOut, double* summary);

/* Turns ratings into a table of levels and, for each subject, marks over the levels.
 *
 * In     rating[n]
 *        n, K, G, p          rating rows, levels (one more than distinct ratings), subjects,
 *                            covariates
 *        subjectKey[n]       identifies the subject of a row
 *        subjectSizes[G]     rows of each subject, in ascending order of the key: 1 for an exact
 *                            rating, 2 for the ends of an interval, in the order of the ratings;
 *                            any other size marks nothing
 *        X[n * p]            covariates
 * Out    indicators[G * K]   ones are written, nothing else: pass zeros. Exact rating at level l:
 *                            1 .. l and K. Interval from level a to level b: 1 .. a - 1 and b .. K
 *        subjectX[G * p]     every column holds the last covariate of the subject's first row
 *        levels[K]           0, then the distinct ratings ascending
 * Returns 0
 * Cost   O(n log n + G K) */
SURVIVAL_C int Cpp_TransformJudgeToInt(double* rating, int n, int K, double* subjectKey, int G,
                                       double* subjectSizes, double* X, int p, double* indicators,
                                       double* subjectX, double* levels);

#endif /* SURVIVAL_CALLS_JUDGE_H_ */
