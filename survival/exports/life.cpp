// Entry points of the life family.
#include "survival/calls/life.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "Klikro/Klikro"
#include "survival/exports/frame.h"
#include "survival/life/life.h"
#include "survival/life/stratum.h"

namespace {

using survival::Apart;
using survival::Block;
using survival::cells;
using survival::echoes;
using survival::raised;
using survival::reads;
using survival::sets;
using survival::shape;
using survival::view;
using survival::writes;

// How many whole intervals the times fill; INT_MIN, as for a quotient that is no number, where no
// table could hold them.
int wholeIntervals(double lastTime, double width) {
  const double count = std::floor(lastTime / width);
  return count < survival::kMostIntervals - 3 ? truncated(count) : INT_MIN;
}

}  // namespace

int ReorganizeData(double* time, int* n, double* status, double* weight, double* stratum,
                   double* strataSizes, int nStrata, short skipStatusCheck, double* maxTime) {
  Apart apart{writes(time, *n),    reads(n),
              writes(status, *n),  writes(weight, *n),
              writes(stratum, *n), echoes(strataSizes, raised(nStrata)),
              sets(maxTime)};
  Block times(*n, 1, time);
  Block statuses(*n, 1, status);
  Block weights(*n, 1, weight);
  Block strata(*n, 1, stratum);
  matrix sizes = view(1, raised(nStrata), strataSizes);
  const int code = cReorganizeData(&times, n, &statuses, &weights, &strata, &sizes, nStrata,
                                   skipStatusCheck, maxTime);
  for (const Block* block : {&times, &statuses, &weights, &strata}) block->copyBack();
  apart.giveBack();
  return code;
}

void RunLife(int nAll, int stratum, int* offset, int nIntervals, double width, int nGrid,
             int nStrata, int m, int eventCode, int unused1, int unused2, double* time,
             double* status, double* weight, short countsFormat, short fillStrata, short lifeTable,
             short intervalsByWidth, double* bounds, double* intervals, double* total,
             double* table, int* nRows, double* strataGrid) {
  int intervalRows = shape(m + 1LL);
  int tableRows = shape(m + 2LL);
  if (lifeTable == kTrue) {
    int count = nIntervals;
    if (intervalsByWidth == kTrue) {
      const int lastRow = survival::indexSum(*offset, std::max(m, 0));
      count = wholeIntervals(view(nAll, 1, time).vbget(lastRow, 1), width);
    }
    intervalRows = shape(count + 2LL);
    tableRows = shape(std::max(count, nIntervals) + 3LL);
  }
  const int tableColumns = lifeTable == kTrue ? 16 : 12;
  const bool filled = fillStrata == kTrue;
  const int gridRows = filled ? shape(3LL * nStrata + 1) : 1;
  const int gridColumns = filled ? raised(nGrid) : 1;
  Apart apart{reads(offset),
              echoes(time, nAll),
              echoes(status, nAll),
              echoes(weight, nAll),
              echoes(bounds, raised(nIntervals)),
              writes(intervals, 2LL * intervalRows),
              sets(total),
              writes(table, cells(tableRows, tableColumns)),
              sets(nRows),
              writes(strataGrid, cells(gridRows, gridColumns))};
  matrix times = view(nAll, 1, time);
  matrix statuses = view(nAll, 1, status);
  matrix weights = view(nAll, 1, weight);
  matrix boundList = view(raised(nIntervals), 1, bounds);
  matrix intervalView = view(intervalRows, 2, intervals);
  matrix tableView = view(tableRows, tableColumns, table);
  matrix grid = view(gridRows, gridColumns, strataGrid);
  if (!filled) *strataGrid = 0.0;
  cRunLife(nAll, stratum, offset, nIntervals, width, nGrid, nStrata, m, eventCode, unused1, unused2,
           &times, &statuses, &weights, countsFormat, fillStrata, lifeTable, intervalsByWidth,
           &boundList, &intervalView, total, &tableView, nRows, &grid);
  apart.giveBack();
}

void ComputeKaplanMeanMedian(double* table, int m, double alpha, int nObs, int r, double* cut,
                             double* meanResult, double* quartiles) {
  const int tableRows = shape(m + 2LL);
  Apart apart{reads(table, 12LL * tableRows), sets(cut), writes(meanResult, 4),
              writes(quartiles, 12)};
  matrix tableView = view(tableRows, 12, table);
  matrix mean(4, 1, 0);
  matrix quartileRows(3, 4, 0);
  cComputeKaplanMeanMedian(&tableView, alpha, nObs, r, cut, &mean, &quartileRows);
  mean.copyMatTo(meanResult);
  quartileRows.copyMatTo(quartiles);
  apart.giveBack();
}

void ComputeLifeTests(double* grid, int nTimes, int G, int K, double alpha, double* result) {
  const int gridRows = shape(3LL * K + 1);
  Apart apart{reads(grid, cells(gridRows, G)), writes(result, 12)};
  matrix gridView = view(gridRows, G, grid);
  Block results(3, 4, result);
  cComputeLifeTests(&gridView, nTimes, K, alpha, &results);
  results.copyBack();
  apart.giveBack();
}

void LoadKaplanTest(int* n, int nTimes, int K, double* times, double* grid) {
  const int gridRows = shape(3LL * K + 1);
  const int gridColumns = *n;
  Apart apart{sets(n), reads(times, nTimes), writes(grid, cells(gridRows, gridColumns))};
  matrix timesView = view(nTimes, 1, times);
  matrix gridView = view(gridRows, gridColumns, grid);
  cLoadKaplanTest(n, &timesView, &gridView);
  apart.giveBack();
}
