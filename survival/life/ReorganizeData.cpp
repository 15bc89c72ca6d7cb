// Preparation of survival data: status check, grouping by stratum, sort by time.
#include <algorithm>
#include <cstddef>
#include <vector>

#include "Klikro/Klikro"
#include "survival/life/life.h"

int cReorganizeData(matrix* time, int* n, matrix* status, matrix* weight, matrix* stratum,
                    matrix* strataSizes, int nStrata, short skipStatusCheck, double* maxTime) {
  const int rows = *n;
  if (skipStatusCheck != kTrue) {
    if (rows < 1) return -2;
    for (int i = 1; i <= rows; ++i) {
      const double code = status->vbget(i, 1);
      if (code < 0.0 || code > 1.0) return -1;
    }
  }
  if (rows < 2) return -2;

  const double events = V_Sum2(status, rows);
  int code = events == 0.0 ? -3 : 0;
  if (events == rows && V_IsConstant(status, rows, kTrue) == kTrue) code = -5;

  if (nStrata >= 2) {
    // The key moves in the second pass only, so both passes see the same order.
    matrix companion(rows, 1, 0);
    SortQ(status, rows, 1, 1, rows, stratum, weight, 1, 0, 0);
    SortQ(time, rows, 1, 1, rows, stratum, &companion, 1, 0, kTrue);
  }

  std::vector<short> none(static_cast<std::size_t>(rows));
  InitVectorToFalse(none.data(), rows);
  *maxTime = V_Max(time, rows, none.data());

  // Sizes past the end of the list would read as -1 and sort nothing.
  long long start = 1;
  for (int j = 1; j <= std::min(nStrata, strataSizes->count()); ++j) {
    const int size = truncated(strataSizes->vbget(1, j));
    const long long last = std::min<long long>(start + size - 1, rows);
    if (start <= last) {
      SortQ(status, rows, 1, static_cast<int>(std::max(start, 1LL)), static_cast<int>(last), time,
            weight, 1, 0, kTrue);
    }
    start += size;
  }
  return code;
}
