/* A caller in C: sorts five survival times and estimates their survival through flat arrays. */
#include <math.h>
#include <stdio.h>

#include "Dist/Dist"
#include "survival/survival.h"

static int differs(const char* what, double found, double wanted) {
  if (fabs(found - wanted) <= 1e-15) return 0;
  printf("%s: %.17g instead of %.17g\n", what, found, wanted);
  return 1;
}

int main(void) {
  /* Events at 2, 3 and 8, censored at 3 and 5. */
  double time[] = {8, 3, 2, 5, 3};
  double status[] = {1, 1, 1, 0, 0};
  double weight[] = {1, 1, 1, 1, 1};
  double stratum[] = {1, 1, 1, 1, 1};
  double sizes[] = {5};
  double maxTime = 0;
  int n = 5;
  int offset = 0;
  double bounds[1] = {0};
  double intervals[6 * 2] = {0};
  double table[7 * 12] = {0};
  double total = 0;
  double grid[1] = {0};
  int nRows = 0;
  int wrong = 0;
  const double* survival = table + 7 * 7; /* column 8 of 7 rows */

  wrong +=
      differs("code", ReorganizeData(time, &n, status, weight, stratum, sizes, 1, 0, &maxTime), 0);
  wrong += differs("first time", time[0], 2);
  wrong += differs("largest time", maxTime, 8);

  RunLife(n, 1, &offset, 0, 0, 1, 1, n, 1, 0, 0, time, status, weight, 0, 0, 0, 0, bounds,
          intervals, &total, table, &nRows, grid);
  wrong += differs("rows", nRows, 4);
  wrong += differs("at risk", total, 5);
  wrong += differs("S(2)", survival[1], 4.0 / 5.0);
  wrong += differs("S(3)", survival[2], 3.0 / 5.0);
  wrong += differs("S(5)", survival[3], 3.0 / 5.0);
  wrong += differs("S(8)", survival[4], 0);
  wrong += differs("Phi(0)", CDFNormalStd(0), 0.5);
  if (wrong == 0) puts("as expected");
  return wrong;
}
