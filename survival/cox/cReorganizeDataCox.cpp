// Sorting the rows of a Cox regression and indexing their distinct times.
#include <algorithm>
#include <climits>

#include "Klikro/Klikro"
#include "survival/cox/cox.h"

namespace {

using Row = long long;  // row numbers and their sums, wider than the counts they come from

int narrowed(Row row) { return static_cast<int>(std::clamp<Row>(row, INT_MIN, INT_MAX)); }

struct Tables {
  matrixInt* distinctTimes;
  matrixInt* censored;
  matrixInt* groupStart;
  matrixInt* groupSize;
  matrixInt* groupEvents;

  // Strata past every table leave no trace.
  int reachable(int S) const {
    return std::min(S, std::max({distinctTimes->count(), censored->count(), groupStart->count(),
                                 groupSize->count()}));
  }
};

// Sorts the rows first..last of every array by one key column.
class RowSorter {
 public:
  RowSorter(int n, int p, matrix* status, matrix* extraColumn, matrix* tieKey, matrix* covariates)
      : n_(n),
        p_(p),
        status_(status),
        extraColumn_(extraColumn),
        tieKey_(tieKey),
        covariates_(covariates),
        extraKey_(n, 1, 0),
        covariateKey_(n, 1, 0) {}

  // Each sort moves its key, so every array needs a key of its own. The tie key is the companion
  // of two of them: callers know it as permuted twice.
  void sort(Row first, Row last, matrix* key, matrix* covariateCompanion) {
    const int from = static_cast<int>(std::clamp<Row>(first, 1, n_));
    const int to = static_cast<int>(std::clamp<Row>(last, 0, n_));
    V_Duplicate(key, from, 1, to - from + 1, &extraKey_, from, 1);
    V_Duplicate(key, from, 1, to - from + 1, &covariateKey_, from, 1);
    SortQ(status_, n_, 1, from, to, key, tieKey_, 1, 0, kTrue);
    SortQ(extraColumn_, n_, 1, from, to, &extraKey_, tieKey_, 1, 0, kTrue);
    SortQ(covariates_, n_, p_, from, to, &covariateKey_, covariateCompanion, 1, 0, kTrue);
  }

 private:
  int n_;
  int p_;
  matrix* status_;
  matrix* extraColumn_;
  matrix* tieKey_;
  matrix* covariates_;
  matrix extraKey_;
  matrix covariateKey_;
};

// The tie groups of stratum s, rows first..last; returns how many there are.
int formGroups(int s, Row first, Row last, const matrix* time, const matrix* tieKey,
               const Tables& tables) {
  const Row end = std::max(time->count(), tieKey->count());
  int groups = tables.distinctTimes->vbget(s, 1);
  const auto grow = [&](Row by) {
    const int size = tables.groupSize->vbget(s, groups);
    tables.groupSize->vbset(s, groups, narrowed(size + by));
  };
  for (Row row = first + 1; row <= last; ++row) {
    // Rows outside the data all read -1, as time and as tie key: they tie with one another.
    const Row stretch = row <= 0 ? std::min<Row>(0, last) : row > end + 1 ? last : row - 1;
    if (stretch >= row) {
      grow(stretch - row + 1);
      row = stretch;
      continue;
    }
    const int i = static_cast<int>(row);
    if (time->vbget(i, 1) != time->vbget(i - 1, 1)) {
      ++groups;
      tables.distinctTimes->vbset(s, 1, groups);
      tables.groupStart->vbset(s, groups, i);
      tables.groupSize->vbset(s, groups, 1);
    } else if (tieKey->vbget(i, 1) != 0.0) {
      // A row left out here still occupies its place: the group's block of rows is then shorter
      // than the run of equal times.
      grow(1);
    }
  }
  return tables.distinctTimes->vbget(s, 1);
}

int countCensored(Row first, Row last, const matrix* status) {
  int censored = 0;
  const Row to = std::min<Row>(last, status->count());  // rows outside read -1: events
  for (Row row = std::max<Row>(first, 1); row <= to; ++row) {
    if (status->vbget(static_cast<int>(row), 1) == 0.0) ++censored;
  }
  return censored;
}

}  // namespace

int cReorganizeDataCox(matrix* time, int n, int p, matrix* status, matrix* extraColumn,
                       matrix* tieKey, matrix* covariates, matrix* stratum, matrix* stratumSizes,
                       int S, matrixInt* distinctTimes, matrixInt* censored, matrixInt* groupStart,
                       matrixInt* groupSize, matrixInt* groupEvents, int* maxGroups) {
  const Tables tables{distinctTimes, censored, groupStart, groupSize, groupEvents};
  const int strata = tables.reachable(S);

  // Before any check: callers read these cells after a refusal too.
  Row first = 1;
  for (int s = 1; s <= strata; ++s) {
    distinctTimes->vbset(s, 1, 1);
    censored->vbset(s, 1, 0);
    groupStart->vbset(s, 1, narrowed(first));
    groupSize->vbset(s, 1, 1);
    first += truncated(stratumSizes->vbget(1, s));
  }

  if (n < 1) return -2;
  for (int i = 1; i <= n; ++i) {
    const double value = status->vbget(i, 1);
    if (value < 0.0 || value > 1.0) return -1;
  }
  if (n < 2) return -2;
  if (V_Sum2(status, n) == 0.0) return -3;
  if (S <= 0) return 0;

  RowSorter rows(n, p, status, extraColumn, tieKey, covariates);
  if (S >= 2) rows.sort(1, n, stratum, time);

  matrix scratch(n, 1, 0);
  first = 1;
  for (int s = 1; s <= strata; ++s) {
    const int size = truncated(stratumSizes->vbget(1, s));
    const Row last = first + size - 1;
    rows.sort(first, last, time, &scratch);
    censored->vbset(s, 1, censored->vbget(s, 1) + countCensored(first, last, status));

    const int groups = formGroups(s, first, last, time, tieKey, tables);
    for (int k = 1; k <= groups; ++k) {
      const Row start = groupStart->vbget(s, k);
      const int members = groupSize->vbget(s, k);
      groupEvents->vbset(s, k, members - countCensored(start, start + members - 1, status));
    }
    *maxGroups = std::max(*maxGroups, groups);
    first += size;
  }
  return 0;
}
