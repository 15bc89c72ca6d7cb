// Competing risks: the matrix-level routines. Arguments and outcomes are those of the flat-array
// entry points in survival/calls/cuminc.h; vectors are n x 1 matrices, indices start at 1.
#ifndef SURVIVAL_CUMINC_CUMINC_H_
#define SURVIVAL_CUMINC_CUMINC_H_

#include "Klikro/matrix"
#include "survival/export.h"

// Recodes a status column to 0 (censored) and 1, 2, ... in order of first appearance.
SURVIVAL_C int CheckStatusFormat(matrix* status, int n, matrix* eventCodes, int* eventCodeCount,
                                 int censorCode, matrix* recodedStatus);

// Sorts recoded data by stratum and, within a stratum, by time. stratumSizes is 1 x S.
SURVIVAL_C int ReorganizeDataCum(matrix* time, int n, matrix* status, matrix* eventFlag,
                                 matrix* stratum, matrix* stratumSizes, int S, double* maxTime);

// Cumulative incidence of one event type in one stratum, and its complement.
SURVIVAL_C int CumIncCalc(int r, int n, matrix* time, matrix* status, int eventCode, double alpha,
                          int m, int offset, matrix* kmTable, matrix* incidence,
                          matrix* complement);

// Gray's K-sample test; the three columns come back sorted by time.
SURVIVAL_C void GrayTest(int n, int K, matrix* time, matrix* status, matrix* group, int eventCode,
                         double rho, double* statistic, double* df, double* pValue);

// Nelson-Aalen cumulative hazard from a Kaplan-Meier table.
SURVIVAL_C int TransNelsonAalen(matrix* kmTable, matrix* table, int m, int r, double alpha,
                                int ciMethod, int varianceMethod);

#endif  // SURVIVAL_CUMINC_CUMINC_H_
