/* The entry points that comparison.R calls, in the shape that R's .C can call: it passes nothing
 * but pointers, so every scalar arrives as an array of one element, and a result leaves in one. */
#include "survival/survival.h"

void reorganize(double* time, int* n, double* status, double* weight, double* stratum,
                double* strataSizes, int* nStrata, int* skipStatusCheck, double* maxTime,
                int* code) {
  *code = ReorganizeData(time, n, status, weight, stratum, strataSizes, *nStrata,
                         (short)*skipStatusCheck, maxTime);
}

void loadTimes(int* n, int* nTimes, int* nStrata, double* times, double* grid) {
  LoadKaplanTest(n, *nTimes, *nStrata, times, grid);
}

/* The Kaplan-Meier table of one stratum of plain data with events of 1, and its rows of the grid.
 */
void kaplanMeier(int* nAll, int* stratum, int* offset, int* nGrid, int* nStrata, int* m,
                 double* time, double* status, double* weight, double* intervals, double* table,
                 int* nRows, double* grid) {
  double bounds = 0;
  double total = 0;
  RunLife(*nAll, *stratum, offset, 0, 0, *nGrid, *nStrata, *m, 1, 0, 0, time, status, weight, 0, -1,
          0, 0, &bounds, intervals, &total, table, nRows, grid);
}

void lifeTests(double* grid, int* nTimes, int* gridColumns, int* nStrata, double* alpha,
               double* result) {
  ComputeLifeTests(grid, *nTimes, *gridColumns, *nStrata, *alpha, result);
}
