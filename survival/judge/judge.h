// Interval data: yes/no answers at inspections, and judges' ratings, turned into censored rows.
#ifndef SURVIVAL_JUDGE_JUDGE_H_
#define SURVIVAL_JUDGE_JUDGE_H_

#include "Klikro/matrix"
#include "Klikro/matrixInt"
#include "survival/export.h"

// Censored rows from answers at inspection times, sorted by time, without the subjects whose first
// answer is no.
//
// In     answers (n x k)     1 yes, 0 no, compared exactly
//        times[k]            inspection times, one per column
// In/out covariates (n x p)  sorted
//        removeFlags[n]      zeros; becomes 1 for a dropped subject, sorted
//        bounds (n x 2)      interval of the change, sorted; dropped subjects are not taken out
//        type[n]             0 right-, 2 left-, 3 interval-censored (-1 dropped); kept subjects
//                            first
//        sortKey[n]          the time of the order, kept subjects first
// Out    covariatesOut (n x p)  covariates of the kept subjects
//        summary (k x 2)     sum of the first nKept answers as passed; the same in percent of n
//        nRemoved, nKept     subjects
// Returns 0; -2 when every subject was dropped; -1 when one of the n values of type is not in
//        [0, 3]: of a dropped subject whose sorted place is past the number of kept ones.
//        Everything is written before
// Edge   an interval that would begin at time 0 moves one inspection on; a bound past the last
//        inspection is -1; for k = 1 a subject that said yes gets nothing
// Cost   O(n k + n log n)
SURVIVAL_C int PrepareIntervalData(matrix* answers, int n, int k, matrix* times, matrix* covariates,
                                   int p, int* nRemoved, matrixInt* removeFlags, int* nKept,
                                   matrix* bounds, matrix* type, matrix* sortKey,
                                   matrix* covariatesOut, matrix* summary);

// Levels of the ratings, and for each subject 0/1 marks over the levels.
//
// In/out rating[n], subjectKey[n], X (n x p)  sorted by subject, each subject's rows by rating
// In     subjectSizes (1 x G)  rows of each subject in ascending key order: 1, an exact rating, or
//                              2, the ends of an interval; any other size marks nothing
// Out    levels[K]             0, then the distinct ratings ascending
//        indicators (G x K)    ones only; the caller passes zeros
//        subjectX (G x p)      in every column the last covariate of the subject's first row
// Returns 0
// Cost   O(n log n + G K)
SURVIVAL_C int TransformJudgeToInt(matrix* rating, int n, int K, matrix* subjectKey, int G,
                                   matrix* subjectSizes, matrix* X, int p, matrix* indicators,
                                   matrix* subjectX, matrix* levels);

#endif  // SURVIVAL_JUDGE_JUDGE_H_
