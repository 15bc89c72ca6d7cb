// Sorts recoded competing-risks data by stratum and time.
#include <algorithm>
#include <climits>
#include <cstdint>

#include "Klikro/Klikro"
#include "survival/cuminc/cuminc.h"

namespace {

int asRow(std::int64_t row) {
  return static_cast<int>(std::clamp<std::int64_t>(row, INT_MIN, INT_MAX));
}

}  // namespace

int ReorganizeDataCum(matrix* time, int n, matrix* status, matrix* eventFlag, matrix* stratum,
                      matrix* stratumSizes, int S, double* maxTime) {
  if (n < 2) return -2;

  // Both codes only report: the data are prepared all the same.
  int code = 0;
  const double events = V_Sum2(status, n);
  if (events == 0.0) code = -3;
  if (events == n && V_IsConstant(status, n, kTrue) == kTrue) code = -5;

  if (S > 1) SortQ(status, n, 1, 1, n, stratum, time, 1, 0, kTrue);

  // Rows past the column all read -1: one of them stands for the rest.
  *maxTime = V_Max2(time, asRow(std::min<std::int64_t>(n, std::int64_t{time->count()} + 1)));

  // A size past the end of the list reads -1 and holds no row.
  const int strata = std::min(S, stratumSizes->count());
  std::int64_t start = 1;
  for (int j = 1; j <= strata; ++j) {
    const int size = truncated(stratumSizes->vbget(j, 1));
    SortQ(status, n, 1, asRow(start), asRow(start + size - 1), time, nullptr, 0, 0, kTrue);
    start += size;
  }

  for (int i = 1; i <= std::min(n, eventFlag->count()); ++i) {
    eventFlag->vbset(i, 1, status->vbget(i, 1) != 0.0 ? 1.0 : 0.0);
  }
  return code;
}
