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

using survival::Block;
using survival::raised;
using survival::shape;
using survival::view;

// How many whole intervals the times fill; INT_MIN, as for a quotient that is no number, where no
// table could hold them.
int wholeIntervals(double lastTime, double width) {
  const double count = std::floor(lastTime / width);
  return count < survival::kMostIntervals - 3 ? truncated(count) : INT_MIN;
}

}  // namespace

int ReorganizeData(double* time, int* n, double* status, double* weight, double* stratum,
                   double* strataSizes, int nStrata, short skipStatusCheck, double* maxTime) {
  Block times(*n, 1, time);
  Block statuses(*n, 1, status);
  Block weights(*n, 1, weight);
  Block strata(*n, 1, stratum);
  matrix sizes = view(1, raised(nStrata), strataSizes);
  const int code = cReorganizeData(&times, n, &statuses, &weights, &strata, &sizes, nStrata,
                                   skipStatusCheck, maxTime);
  for (const Block* block : {&times, &statuses, &weights, &strata}) block->copyBack();
  return code;
}

void RunLife(int nAll, int stratum, int* offset, int nIntervals, double width, int nGrid,
             int nStrata, int m, int eventCode, int unused1, int unused2, double* time,
             double* status, double* weight, short countsFormat, short fillStrata, short lifeTable,
             short intervalsByWidth, double* bounds, double* intervals, double* total,
             double* table, int* nRows, double* strataGrid) {
  matrix times = view(nAll, 1, time);
  matrix statuses = view(nAll, 1, status);
  matrix weights = view(nAll, 1, weight);
  matrix boundList = view(raised(nIntervals), 1, bounds);

  int intervalRows = shape(m + 1LL);
  int tableRows = shape(m + 2LL);
  if (lifeTable == kTrue) {
    int count = nIntervals;
    if (intervalsByWidth == kTrue) {
      const int lastRow = survival::indexSum(*offset, std::max(m, 0));
      count = wholeIntervals(times.vbget(lastRow, 1), width);
    }
    intervalRows = shape(count + 2LL);
    tableRows = shape(std::max(count, nIntervals) + 3LL);
  }
  matrix intervalView = view(intervalRows, 2, intervals);
  matrix tableView = view(tableRows, lifeTable == kTrue ? 16 : 12, table);
  const bool filled = fillStrata == kTrue;
  matrix grid = view(filled ? shape(3LL * nStrata + 1) : 1, filled ? raised(nGrid) : 1, strataGrid);
  if (!filled) *strataGrid = 0.0;
  cRunLife(nAll, stratum, offset, nIntervals, width, nGrid, nStrata, m, eventCode, unused1, unused2,
           &times, &statuses, &weights, countsFormat, fillStrata, lifeTable, intervalsByWidth,
           &boundList, &intervalView, total, &tableView, nRows, &grid);
}

void ComputeKaplanMeanMedian(double* table, int m, double alpha, int nObs, int r, double* cut,
                             double* meanResult, double* quartiles) {
  matrix tableView = view(shape(m + 2LL), 12, table);
  matrix mean(4, 1, 0);
  matrix quartileRows(3, 4, 0);
  cComputeKaplanMeanMedian(&tableView, alpha, nObs, r, cut, &mean, &quartileRows);
  mean.copyMatTo(meanResult);
  quartileRows.copyMatTo(quartiles);
}

void ComputeLifeTests(double* grid, int nTimes, int G, int K, double alpha, double* result) {
  matrix gridView = view(shape(3LL * K + 1), G, grid);
  Block results(3, 4, result);
  cComputeLifeTests(&gridView, nTimes, K, alpha, &results);
  results.copyBack();
}

void LoadKaplanTest(int* n, int nTimes, int K, double* times, double* grid) {
  matrix timesView = view(nTimes, 1, times);
  matrix gridView = view(shape(3LL * K + 1), *n, grid);
  cLoadKaplanTest(n, &timesView, &gridView);
}
