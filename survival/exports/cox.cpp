// Flat-array entry points of the Cox family.
#include "survival/calls/cox.h"

#include "survival/cox/cox.h"
#include "survival/exports/frame.h"

using survival::Apart;
using survival::Block;
using survival::cells;
using survival::IntBlock;
using survival::raised;
using survival::reads;
using survival::sets;
using survival::shape;
using survival::view;
using survival::writes;

int Cpp_ReorganizeDataCox(double* time, int n, int p, double* status, double* extraColumn,
                          double* tieKey, double* covariates, double* stratum, double* stratumSizes,
                          int S, int* distinctTimes, int* censored, int* groupStart, int* groupSize,
                          int* groupEvents, int* maxGroups) {
  const int strata = raised(S);
  const long long columnCells = cells(n, raised(p));
  const long long tableCells = cells(strata, n);
  Apart apart{writes(time, n),
              writes(status, n),
              writes(extraColumn, n),
              writes(tieKey, n),
              writes(covariates, columnCells),
              writes(stratum, n),
              writes(stratumSizes, strata),
              writes(distinctTimes, strata),
              writes(censored, strata),
              writes(groupStart, tableCells),
              writes(groupSize, tableCells),
              writes(groupEvents, tableCells),
              sets(maxGroups)};
  Block times(n, 1, time);
  Block statuses(n, 1, status);
  Block extra(n, 1, extraColumn);
  Block keys(n, 1, tieKey);
  Block columns(n, raised(p), covariates);
  Block labels(n, 1, stratum);
  Block sizes(1, strata, stratumSizes);
  IntBlock distinct(strata, 1, distinctTimes);
  IntBlock censoredCounts(strata, 1, censored);
  IntBlock starts(strata, n, groupStart);
  IntBlock groupSizes(strata, n, groupSize);
  IntBlock events(strata, n, groupEvents);

  const int code =
      cReorganizeDataCox(&times, n, p, &statuses, &extra, &keys, &columns, &labels, &sizes, S,
                         &distinct, &censoredCounts, &starts, &groupSizes, &events, maxGroups);

  for (const Block* block : {&times, &statuses, &extra, &keys, &columns, &labels, &sizes}) {
    block->copyBack();
  }
  for (const IntBlock* block : {&distinct, &censoredCounts, &starts, &groupSizes, &events}) {
    block->copyBack();
  }
  apart.giveBack();
  return code;
}

int RunCoxReg(double* time, int n, int p, int* finalCovariates, double* status, int,
              double* covariates, int, double* stratumSizes, int S, int* iterations,
              double tolerance, int ties, int* distinctTimes, int* groupSize, int* groupEvents,
              int* censored, int* groupStart, int method, int removalTest, double entryThreshold,
              double removalThreshold, double alpha, int G, short survival, int, int, int,
              double* beta, double* criteria, double* tests, double* coefficients,
              double* baselineSurvival, double* meanSurvival, double* residuals, double* history,
              int* steps, int* order) {
  const int strata = raised(S);
  const int groups = raised(G);
  const int candidates = raised(p);
  const bool asked = survival == kTrue;
  const int residualColumns = shape(2LL * p + 4);
  const long long tableCells = cells(strata, groups);
  Apart apart{reads(time, n),
              sets(finalCovariates),
              reads(status, n),
              reads(covariates, cells(n, candidates)),
              reads(stratumSizes, strata),
              sets(iterations),
              reads(distinctTimes, strata),
              reads(groupSize, tableCells),
              reads(groupEvents, tableCells),
              reads(censored, strata),
              reads(groupStart, tableCells),
              writes(beta, candidates),
              writes(criteria, 12),
              writes(tests, 9),
              writes(coefficients, 9LL * candidates),
              writes(baselineSurvival, asked ? tableCells : 1),
              writes(meanSurvival, asked ? tableCells : 1),
              writes(residuals, asked ? cells(n, residualColumns) : 1),
              writes(history, 3LL * candidates),
              sets(steps),
              writes(order, candidates)};
  matrix times = view(n, 1, time);
  matrix statuses = view(n, 1, status);
  Block columns(n, candidates, covariates);  // selections move them
  matrix sizes = view(1, strata, stratumSizes);
  IntBlock distinct(strata, 1, distinctTimes);
  IntBlock groupSizes(strata, groups, groupSize);
  IntBlock events(strata, groups, groupEvents);
  IntBlock censoredCounts(strata, 1, censored);
  IntBlock starts(strata, groups, groupStart);
  Block estimates(candidates, 1, beta);
  Block criteriaTable(6, 2, criteria);
  Block testTable(3, 3, tests);
  Block coefficientTable(candidates, 9, coefficients);
  Block baseline(asked, strata, groups, baselineSurvival);
  Block mean(asked, strata, groups, meanSurvival);
  Block residualTable(asked, n, residualColumns, residuals);
  Block historyTable(3, candidates, history);
  IntBlock orders(candidates, 1, order);

  cRunCoxReg(&times, n, p, finalCovariates, &statuses, &columns, &sizes, S, iterations, tolerance,
             ties, &distinct, &groupSizes, &events, &censoredCounts, &starts, method, removalTest,
             entryThreshold, removalThreshold, alpha, G, survival, &estimates, &criteriaTable,
             &testTable, &coefficientTable, &baseline, &mean, &residualTable, &historyTable, steps,
             &orders);

  for (const Block* block : {&estimates, &criteriaTable, &testTable, &coefficientTable, &baseline,
                             &mean, &residualTable, &historyTable}) {
    block->copyBack();
  }
  orders.copyBack();
  apart.giveBack();
  return 0;
}
