/* Life tables, Kaplan-Meier estimates and the comparison of strata, on flat arrays.
 *
 * The way of an analysis: ReorganizeData once; LoadKaplanTest for the grid of times; RunLife for
 * each stratum; then ComputeLifeTests on the grid and ComputeKaplanMeanMedian on each table.
 * Times are in any one unit, which is the unit of every time, width and bound below; densities
 * and hazards are per that unit.
 */
#ifndef SURVIVAL_CALLS_LIFE_H_
#define SURVIVAL_CALLS_LIFE_H_

#include "survival/export.h"

/* Checks, groups by stratum and sorts by time.
 *
 * I/O  time[n], status[n], weight[n], stratum[n]  re-ordered together: ascending stratum code,
 *                        ascending time within; ties keep their order. With one stratum the
 *                        stratum column stays as it was
 * In   n[1]              rows
 *      strataSizes[max(nStrata, 1)]  rows of each stratum, in ascending order of stratum code
 *      nStrata           0: not sorted at all; 1: the first strataSizes[0] rows are sorted
 *      skipStatusCheck   flag; unless true every status must lie in [0, 1]
 * Out  maxTime[1]        the largest time
 * Code 0; -1 a status outside [0, 1], -2 fewer than two rows: no array is touched.
 *      Soft: -3 no event (the statuses sum to 0), -5 every status is 1.
 * Edge sizes whose sum is not n leave the rows past their sum unsorted
 * Cost O(n log n)
 */
SURVIVAL_C int ReorganizeData(double* time, int* n, double* status, double* weight, double* stratum,
                              double* strataSizes, int nStrata, short skipStatusCheck,
                              double* maxTime);

/* Kaplan-Meier table or life table of one stratum, and its part of the strata grid.
 *
 * In   nAll              rows of time, status and weight, as ReorganizeData leaves them
 *      stratum           1-based number of this stratum; offset[1] the rows before it, m its rows
 *      time[nAll]
 *      status[nAll]      plain format: an event where it equals eventCode, else censored;
 *                        counts format: the number of events at that time
 *      weight[nAll]      plain format: what the row counts in events or censored (the number at
 *                        risk starts from m all the same); counts format: the number censored
 *      countsFormat      flag
 *      lifeTable         flag: a life table instead of Kaplan-Meier
 *      intervalsByWidth  flag: life-table intervals of length `width`, starting at 0; else they
 *                        lie between bounds[max(nIntervals, 1)], ascending, and start at 0 when
 *                        the first bound is positive
 *      fillStrata        flag: fill this stratum's rows of strataGrid
 *      the two int after eventCode are not used
 * Out  intervals         Kaplan-Meier: (m + 1) x 2. Life table: (nIntervals + 2) x 2, or
 *                        (q + 2) x 2 by width, where q = floor(last time / width).
 *                        Lower and upper end of each row's interval.
 *      table             Kaplan-Meier: (m + 2) x 12. Life table: (nIntervals + 3) x 16, or
 *                        (max(q, nIntervals) + 3) x 16 by width. Row 1 is the origin (survival
 *                        1), then a row for each distinct time or interval. Columns: 1 time or
 *                        lower bound, 3 at risk, 4 events, 5 censored, 6 effective number at
 *                        risk, 7 conditional survival, 8 survival (life table: at the start of
 *                        the interval), 9 density, 11 Greenwood's sum; life table also: 10 hazard,
 *                        12 Greenwood's sum unguarded, 13 and 14 standard errors of density and
 *                        hazard, 15 and 16 median residual lifetime and its standard error.
 *                        Cells not named, column 9 of rows without events and rows past the last
 *                        stay as passed; a life table's first interval writes 0 into the origin's
 *                        column 9.
 *      total[1]          number at risk at the start
 *      nRows[1]          rows after the origin
 * I/O  strataGrid[(3 nStrata + 1) * max(nGrid, 1)]  row 1 the times of LoadKaplanTest; rows
 *                        3j - 1, 3j, 3j + 1 of stratum j become at risk, events and censored;
 *                        events and censored are -1 at a time that the stratum does not have.
 *                        Columns past the stratum's last time stay as passed.
 * Edge a width that is not above 0 or not finite, or so small that no table could hold the
 *      intervals: nRows 0. With nothing left at risk the table ends early.
 *      Standard errors of an interval without events are -51 in the first interval, else 0.
 * Cost Kaplan-Meier O(m), life table O(m + q log q); O(nGrid) for the grid
 */
SURVIVAL_C void RunLife(int nAll, int stratum, int* offset, int nIntervals, double width, int nGrid,
                        int nStrata, int m, int eventCode, int, int, double* time, double* status,
                        double* weight, short countsFormat, short fillStrata, short lifeTable,
                        short intervalsByWidth, double* bounds, double* intervals, double* total,
                        double* table, int* nRows, double* strataGrid);

/* Mean and quartiles of survival from a Kaplan-Meier table.
 *
 * In   table[(m + 2) * 12]  as RunLife leaves it; r its rows after the origin
 *      nObs                 observations behind the table
 * Out  cut[1]               time the mean is restricted to; 0: not restricted
 *      meanResult[4]        mean, standard error, lower and upper bound (lower at least 0); for
 *                           nObs < 2 all but the mean are missing
 *      quartiles[3 * 4]     a row for each of survival 0.25, 0.5, 0.75; columns: 0.75, 0.5, 0.25
 *                           (the probability of an earlier event), time, lower and upper bound
 * Edge what does not exist is missing
 * Cost O(r)
 */
SURVIVAL_C void ComputeKaplanMeanMedian(double* table, int m, double alpha, int nObs, int r,
                                        double* cut, double* meanResult, double* quartiles);

/* Log-rank, Gehan-Breslow and Tarone-Ware tests of K strata.
 *
 * In   grid[(3 K + 1) * G]  as RunLife fills it; its first nTimes columns take part
 * Out  result[3 * 4]        a row per test in that order: chi-square statistic, critical value
 *                           at alpha with K - 1 degrees of freedom, p-value, alpha
 * Edge a singular covariance gives statistic 0 and p-value 1
 * Cost O(K^2 nTimes + K^3)
 */
SURVIVAL_C void ComputeLifeTests(double* grid, int nTimes, int G, int K, double alpha,
                                 double* result);

/* The grid's times: the distinct ones of the pooled times of all strata.
 *
 * In   times[nTimes]
 * I/O  n[1]                  in: how many times, at most nTimes; out: how many distinct ones
 * Out  grid[(3 K + 1) * n]   (n as passed) row 1: the distinct times ascending; its cells past
 *                            them hold no time. Other rows stay.
 * Cost O(n log n)
 */
SURVIVAL_C void LoadKaplanTest(int* n, int nTimes, int K, double* times, double* grid);

#endif /* SURVIVAL_CALLS_LIFE_H_ */
