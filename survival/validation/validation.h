// Validation of regression models: the matrix-level routines. Arguments and outcomes are those of
// the flat-array entry points in survival/calls/validation.h.
#ifndef SURVIVAL_VALIDATION_VALIDATION_H_
#define SURVIVAL_VALIDATION_VALIDATION_H_

#include "Klikro/matrix"
#include "survival/export.h"

// Mean, variance and percentile interval of five statistics over B bootstrap samples. Returns 0.
SURVIVAL_C int ComputeBootOut(int B, double alpha, matrix* statistics, matrix* summary);

// One row of the validation table. Returns 0.
SURVIVAL_C int ComputeCVTable(int n, int p, matrix* time, matrix* status, matrix* X, matrix* beta,
                              matrix* H, matrix* F, int row, matrix* table);

// Harrell's index: among the pairs whose earlier time is an event, the part whose earlier member
// has the higher risk score.
//
// In   time[n]        any one unit
//      status[n]      an event where exactly 1
//      X[n * p], beta[p]  the risk score of row i is the sum of X(i, k) beta(k)
// Out  the index in [0, 1], or the missing marker where no pair can be used
// Edge ties in time make a pair unusable; ties in score count as discordant, so that a constant
//      score gives 0 and not 1/2. A time that is not a number takes part in no pair, a score that
//      is not a number is concordant in none.
// Cost O(n p + n log n), memory O(n)
// Source Harrell et al., Statistics in Medicine 15 (1996) 361-387
SURVIVAL_C double ConcordIndex(int n, int p, matrix* time, matrix* status, matrix* X, matrix* beta);

#endif  // SURVIVAL_VALIDATION_VALIDATION_H_
