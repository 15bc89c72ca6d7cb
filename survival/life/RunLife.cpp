// The driver of both estimators, and the grid that all strata share.
#include "Klikro/Klikro"
#include "survival/life/life.h"
#include "survival/life/stratum.h"

namespace {

// Puts the table's counts at the grid's times. The cursor goes once through the grid: both the
// table and the grid ascend.
void fillGrid(int stratum, int rowsToScan, const matrix* table, matrix* grid) {
  const int countsRow = truncated(3.0 * stratum);
  const int atRiskRow = survival::indexSum(countsRow, -1);
  const int censoredRow = survival::indexSum(countsRow, 1);
  int column = 1;
  for (int i = 0; i < rowsToScan; ++i) {
    const int row = survival::indexSum(i, 2);
    const double atRisk = table->vbget(row, 3);
    if (atRisk == 0.0) continue;
    const double time = table->vbget(row, 1);
    const double events = table->vbget(row, 4);
    const double censored = table->vbget(row, 5);
    bool found = false;
    while (!found) {
      if (column > grid->cols()) return;
      found = grid->vbget(1, column) == time;
      // The tests read -1 as "no observation of this stratum here".
      grid->vbset(atRiskRow, column, atRisk);
      grid->vbset(countsRow, column, found ? events : -1.0);
      grid->vbset(censoredRow, column, found ? censored : -1.0);
      ++column;
    }
  }
}

}  // namespace

int cRunLife(int, int stratum, int* offset, int nIntervals, double width, int, int, int m,
             int eventCode, int, int, matrix* time, matrix* status, matrix* weight,
             short countsFormat, short fillStrata, short lifeTable, short intervalsByWidth,
             matrix* bounds, matrix* intervals, double* total, matrix* table, int* nRows,
             matrix* strataGrid) {
  if (lifeTable == kTrue) {
    ComputeLife(*offset, m, nIntervals, width, time, status, weight, bounds, countsFormat,
                intervalsByWidth, eventCode, intervals, *total, table, *nRows);
  } else {
    ComputeKaplanMeier(*offset, m, countsFormat, eventCode, time, status, weight, *total, table,
                       *nRows, intervals);
  }
  if (fillStrata == kTrue) fillGrid(stratum, lifeTable == kTrue ? *nRows : m, table, strataGrid);
  return 0;
}
