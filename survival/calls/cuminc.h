/* Competing risks: status check, data preparation, cumulative incidence, Gray's test and the
 * Nelson-Aalen cumulative hazard. survival.h states the conventions.
 */
#ifndef SURVIVAL_CALLS_CUMINC_H_
#define SURVIVAL_CALLS_CUMINC_H_

#include "survival/export.h"

/* Recodes a status column to 0 (censored) and 1, 2, ..., the event types in order of first
 * appearance.
 *
 * In   status[n]         raw codes, any numbers
 *      censorCode        the raw code of a censored row
 * Out  eventCodes[n]     the raw event codes in order of first appearance, as many as counted;
 *                        the rest stays
 *      eventCodeCount    one int: how many there are
 *      recodedStatus[n]  0 or the position of the row's code in eventCodes
 * Returns 0, or -1 when no row differs from censoring code -1: recodedStatus is then the copy of
 *      status, the codes and their count are untouched
 * Edge a censored first row keeps its raw code, so that it reads as an event unless censorCode
 *      is 0. Without any event and with a censoring code other than -1 the result is 0, with the
 *      one event code -1. A status that is not a number is a new code each time.
 * Cost O(n)
 */
SURVIVAL_C int Cpp_CheckStatusFormat(double* status, int n, double* eventCodes, int* eventCodeCount,
                                     int censorCode, double* recodedStatus);

/* Sorts recoded data by stratum and, within a stratum, by time. Rows of equal time keep their
 * order.
 *
 * In/out  time[n]          any one unit
 *         status[n]        0 or the event type, moves with the time
 *         stratum[n]       labels; comes back ascending for S > 1, else untouched
 *         stratumSizes[max(S, 1)]  rows of each stratum, in ascending order of the labels
 * Out     eventFlag[n]     1 where the sorted status is not 0, else 0
 *         maxTime          the largest time, one double
 * Returns 0; -2 for n < 2, nothing is touched then; soft: -3 when the statuses sum to 0 (no
 *         event), -5 when all are 1 (no censoring and no competing event)
 * Edge    with S < 1 nothing is sorted; with S = 1 the first stratumSizes[0] rows are. Sizes
 *         that sum to more than n end at row n
 * Cost    O(n log n)
 */
SURVIVAL_C int Cpp_ReorganizeDataCum(double* time, int n, double* status, double* eventFlag,
                                     double* stratum, double* stratumSizes, int S, double* maxTime);

/* Cumulative incidence of one event type in one stratum, with standard errors and
 * log-transformed limits of level 1 - alpha, and the table of its complement.
 *
 * In   r                  groups of equal times, rows of the outputs
 *      time[n], status[n] prepared data of all strata
 *      eventCode          recoded type of interest
 *      m, offset          the stratum is rows offset + 1 .. offset + m
 *      kmTable[(m + 2) * 12]  the stratum's Kaplan-Meier table with all event types pooled as
 *                         events: row k + 1 is group k
 * In/out incidence[r * 10]  row k for group k; columns: time, at risk, events of the type, pooled
 *                         events, censored, incidence, its standard error, lower limit, upper
 *                         limit, 1 - pooled survival. Column 3 is added to: pass zeros
 * Out  complement[r * 10] the same with column 6 as 1 - incidence, columns 8 and 9 as 1 - upper
 *                         and 1 - lower limit, column 10 as 1 - column 10
 * Returns 0
 * Edge rows before the first with an event of the type hold the missing marker in columns 6 to
 *      10; rows without such an event repeat columns 6 to 10 of the row above. With no event
 *      before the last row, and none in it, that row repeats the markers in columns 6 and 8 to
 *      10. Limits are not clipped. The stratum's last row is counted as a group of its own, so
 *      that the incidence is too low where the last time is tied. The first standard error lacks
 *      the factor of the survival before it, and events of other types before that row enter
 *      none of them.
 * Cost O(m + r): up to 512 rows the variance is summed anew for each row, after that by running
 *      sums; a table with negative or infinite counts costs O(r^2)
 * Source Kalbfleisch & Prentice (1980); Marubini & Valsecchi (1995), section 10.2
 */
SURVIVAL_C int Cpp_CumIncCalc(int r, int n, double* time, double* status, int eventCode,
                              double alpha, int m, int offset, double* kmTable, double* incidence,
                              double* complement);

/* Gray's test that the cumulative incidence of one event type is the same in K groups, other
 * types competing, with weight (1 - pooled incidence)^rho.
 *
 * In   time[n]     rows of exactly equal time are one time point
 *      status[n]   eventCode for the event of interest, 0 censored, anything else, not-a-number
 *                  included, a competing event
 *      group[n]    1 .. K; a row with any other code takes no part
 *      rho         0 for equal weights
 * Out  statistic   chi-square statistic, one double
 *      df          K - 1, one double
 *      pValue      upper tail, one double
 * The arrays keep their order.
 * Edge where the variance is singular (no event of interest, or a group of 1 .. K - 1 without
 *      rows) the statistic is 0 and the p-value 1: failure looks like no difference
 * Cost O(n log n + n K^2)
 * Source Gray, Annals of Statistics 16 (1988) 1141-1154
 */
SURVIVAL_C void Cpp_GrayTest(int n, int K, double* time, double* status, double* group,
                             int eventCode, double rho, double* statistic, double* df,
                             double* pValue);

/* Nelson-Aalen cumulative hazard H from a Kaplan-Meier table.
 *
 * In   kmTable[(m + 2) * 12]  row k + 1 is group k
 *      r                groups, rows of the output
 *      alpha            the limits have level 1 - alpha
 *      ciMethod         1: H -+ z s; any other: H exp(-+ z s / H)
 *      varianceMethod   what d events among n at risk add to the variance: 1: d / n^2;
 *                       2: d (n - d) / n^3; any other: d (n - d) / (n^2 (n - 1)). With n = 1
 *                       d / n^2 always
 * Out  table[r * 9]     row k for group k; columns: time, at risk, events, censored, H, its
 *                       standard error s, lower limit, upper limit, exp(-H)
 * Returns 0
 * Edge rows before the first event hold the missing marker in columns 5 and 7 to 9 and
 *      not-a-number in column 6; rows without events repeat columns 5 to 9 of the row above.
 *      With no event before the last row, and none in it, that row does so too. Limits are not
 *      clipped
 * Cost O(r)
 * Source Nelson, Technometrics 14 (1972) 945-966; Aalen, Annals of Statistics 6 (1978) 701-726;
 *      Klein, Scandinavian Journal of Statistics 18 (1991) 333-340
 */
SURVIVAL_C int Cpp_TransNelsonAalen(double* kmTable, double* table, int m, int r, double alpha,
                                    int ciMethod, int varianceMethod);

#endif /* SURVIVAL_CALLS_CUMINC_H_ */
