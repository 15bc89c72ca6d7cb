// Life tables, Kaplan-Meier estimates and the comparison of strata, on matrices.
//
// Data columns are n x 1; a stratum is rows offset + 1 .. offset + m of them, in ascending time.
// In the plain format a row whose status equals eventCode is an event and every other row is
// censored, each counting with its weight; in the counts format (countsFormat -1) the status
// column holds the number of events at the row's time and the weight column the number censored.
#ifndef SURVIVAL_LIFE_LIFE_H_
#define SURVIVAL_LIFE_LIFE_H_

#include "Klikro/matrix"
#include "survival/export.h"

// Checks the status column, groups the rows by stratum and sorts each stratum by time.
//
// In   n               rows of the four columns
//      strataSizes     1 x nStrata, truncated: rows of each stratum, in ascending stratum code
//      nStrata         0 sorts nothing, 1 sorts the first strataSizes(1) rows
//      skipStatusCheck -1 accepts any status, otherwise it must lie in [0, 1]
// I/O  time, status, weight, stratum  re-ordered together; ties keep their order
// Out  maxTime         largest time of all rows
// Code 0; -1 a status outside [0, 1], -2 fewer than two rows: nothing is touched. Soft: -3 the
//      statuses sum to 0, -5 every status is 1.
// Edge sizes that do not add up to n leave the rows past their sum grouped but unsorted
// Cost O(n log n)
SURVIVAL_C int cReorganizeData(matrix* time, int* n, matrix* status, matrix* weight,
                               matrix* stratum, matrix* strataSizes, int nStrata,
                               short skipStatusCheck, double* maxTime);

// Kaplan-Meier table of one stratum.
//
// Out  total      number at risk at the start: the rows, or the sum of both columns in the counts
//                 format
//      table      (m + 2) x 12, row 1 the origin, then one row per distinct time: 1 time,
//                 3 at risk, 4 events, 5 censored, 6 at risk, 7 conditional survival, 8 survival,
//                 9 density, 11 Greenwood's sum. Columns 2, 10 and 12 stay, and so does column 9
//                 where there is no event.
//      nRows      rows after the origin
//      intervals  (m + 1) x 2: each row's time and the next row's, the last one's end a unit later
// Edge with nothing left at risk the table ends, and nRows is the number of data rows consumed
//      less one; no rows give the origin only
// Cost O(m)
// Source Kaplan & Meier, JASA 53 (1958) 457-481; Greenwood (1926)
SURVIVAL_API int ComputeKaplanMeier(int offset, int m, short countsFormat, int eventCode,
                                    matrix* time, matrix* status, matrix* weight, double& total,
                                    matrix* table, int& nRows, matrix* intervals);

// Actuarial life table of one stratum.
//
// In   intervalsByWidth  -1: intervals of length `width` from 0 past the last time; otherwise
//                        between the nIntervals bounds, from 0 when the first is positive
// Out  total      as for ComputeKaplanMeier
//      intervals  lower and upper bound of each interval
//      table      16 columns, row 1 the origin, then one row per interval: 1 lower bound,
//                 3 entering, 4 events, 5 withdrawn, 6 effective number at risk, 7 conditional
//                 survival, 8 survival at the start, 9 density, 10 hazard, 11 and 12 Greenwood's
//                 sum at the start with and without the terms of no survivors, 13 and 14 standard
//                 errors of density and hazard, 15 and 16 median residual lifetime and its
//                 standard error
//      nRows      intervals in the table
// Edge a width that is not above 0 or not finite gives no interval, nor does one so small that
//      no table could hold the intervals; nothing left at risk ends the table
// Cost O(m + intervals log intervals)
// Source Cutler & Ederer, J Chron Dis 8 (1958) 699-712; Gehan, J Chron Dis 21 (1969) 629-644
SURVIVAL_API int ComputeLife(int offset, int m, int nIntervals, double width, matrix* time,
                             matrix* status, matrix* weight, matrix* bounds, short countsFormat,
                             short intervalsByWidth, int eventCode, matrix* intervals,
                             double& total, matrix* table, int& nRows);

// Runs either estimator (lifeTable -1: the life table) and, for fillStrata -1, spreads the
// stratum's counts onto the grid of times that all strata share.
//
// In   stratum     1-based, its place in the grid
//      offset      rows before this stratum
// I/O  strataGrid  (3 nStrata + 1) x nGrid; row 1 the grid's times, rows 3j - 1, 3j and 3j + 1 of
//                  stratum j become at risk, events and censored. At a time the stratum does not
//                  have, events and censored are -1 and at risk is that of its next row.
// Edge the grid's columns past the stratum's last time stay as they were; a table time that the
//      grid does not hold uses up the grid
// Cost that of the estimator + O(m + nGrid)
SURVIVAL_C int cRunLife(int nAll, int stratum, int* offset, int nIntervals, double width, int nGrid,
                        int nStrata, int m, int eventCode, int, int, matrix* time, matrix* status,
                        matrix* weight, short countsFormat, short fillStrata, short lifeTable,
                        short intervalsByWidth, matrix* bounds, matrix* intervals, double* total,
                        matrix* table, int* nRows, matrix* strataGrid);

// Mean survival with its confidence interval, and the quartiles with theirs, from a Kaplan-Meier
// table.
//
// In   table       as ComputeKaplanMeier leaves it; r its rows after the origin
//      nObs        observations behind the table
// Out  cut         time the mean is restricted to, 0 where it is not
//      meanResult  4 x 1: mean, standard error, lower and upper bound; for nObs < 2 the mean only
//      quartiles   3 x 4: label 0.75, 0.5, 0.25 for the time at which survival has fallen to
//                  0.25, 0.5, 0.75; estimate; lower and upper bound
// Edge what does not exist is -1.79769313486231e308; a lower bound may be 0 instead
// Cost O(r)
// Source Brookmeyer & Crowley, Biometrics 38 (1982) 29-41
SURVIVAL_C int cComputeKaplanMeanMedian(matrix* table, double alpha, int nObs, int r, double* cut,
                                        matrix* meanResult, matrix* quartiles);

// The distinct ones of n pooled times, ascending, into row 1 of the grid; n becomes their number.
//
// Edge the cells past the distinct times end as an exchange sort that closes the gap of each
//      duplicate leaves them, each with 1 added to the value that stood last: callers have seen
//      these cells and do not read them. Times past the end of `times` count as -1. A NaN equals
//      nothing and keeps its place among the rows that stay.
// Cost O(n log n)
SURVIVAL_C int cLoadKaplanTest(int* n, matrix* times, matrix* grid);

// Log-rank, Gehan-Breslow and Tarone-Ware tests of K strata, from the filled grid.
//
// In   nTimes  columns of the grid that take part
// Out  result  3 x 4, a row per test in that order: chi-square statistic, critical value,
//              p-value, alpha
// Edge a singular covariance gives statistic 0 and p-value 1. A time with nobody at risk keeps the
//      expectation of the time before; before anybody is at risk a stratum finds what the last
//      time left for the stratum before it, the first stratum 0
// Cost O(K^2 nTimes + K^3)
// Source Mantel (1966); Gehan, Biometrika 52 (1965) 203-223; Tarone & Ware, Biometrika 64 (1977)
//        156-160
SURVIVAL_C int cComputeLifeTests(matrix* grid, int nTimes, int K, double alpha, matrix* result);

#endif  // SURVIVAL_LIFE_LIFE_H_
