// Answers at inspection times to censored rows.
#include <algorithm>

#include "Klikro/Klikro"
#include "survival/SortApply.h"
#include "survival/judge/judge.h"

namespace {

constexpr double kNo = 0.0;
constexpr double kYes = 1.0;
constexpr double kDropped = -1.0;
constexpr double kRightCensored = 0.0;
constexpr double kLeftCensored = 2.0;
constexpr double kIntervalCensored = 3.0;

struct Rows {
  matrix* answers;
  int k;
  matrix* times;
  matrix* bounds;
  matrix* type;
  matrix* sortKey;

  double time(int j) const { return times->vbget(j, 1); }

  // Inspections past the end of the answers have none.
  int lastAnswer() const { return std::min(k, answers->count()); }

  // First inspection from 2 on with a no, or 0.
  int firstNo(int i) const {
    const int last = lastAnswer();
    for (int c = 2; c <= last; ++c) {
      if (answers->vbget(i, c) == kNo) return c;
    }
    return 0;
  }

  // Subject i, whose first answer is not no.
  void classify(int i) const {
    if (k < 2) return;
    const int c = firstNo(i);
    if (c == 0) {
      type->vbset(i, 1, kRightCensored);
      sortKey->vbset(i, 1, time(k));
      return;
    }
    // The models that follow take logarithms: an interval cannot begin at 0.
    const int from = time(c - 1) == 0.0 ? c : c - 1;
    type->vbset(i, 1, kIntervalCensored);
    bounds->vbset(i, 1, time(from));
    sortKey->vbset(i, 1, time(from));
    bounds->vbset(i, 2, time(from + 1));
    // A later yes makes the row left-censored, a no after that an interval again.
    const int last = lastAnswer();
    for (int j = c; j <= last; ++j) {
      const double answer = answers->vbget(i, j);
      if (answer == kYes) {
        type->vbset(i, 1, kLeftCensored);
        sortKey->vbset(i, 1, time(c));
      }
      if (type->vbget(i, 1) == kLeftCensored && answer == kNo && bounds->vbget(i, 1) != time(j)) {
        type->vbset(i, 1, kIntervalCensored);
        bounds->vbset(i, 2, time(j));
      }
    }
  }
};

// Kept rows of a column to its top; below them the sorted values stay, a dropped subject's too.
void compact(matrix* column, int n, matrixInt* removeFlags) {
  matrix copy(n, column);
  M_RemoveRowsInList(&copy, n, 1, removeFlags, column);
}

// Sums of the first `rows` answers, as they are and in percent of n. Rows past the end count -1
// each, as the accessor reads them.
void summarise(matrix* answers, int rows, int n, int k, matrix* summary) {
  const int present = std::min(rows, answers->count());
  const double beyond = static_cast<double>(std::max(rows, present)) - present;
  const int last = std::min(k, summary->count());
  M_SumByCols(answers, present, last, summary);
  for (int j = 1; j <= last; ++j) {
    const double sum = summary->vbget(j, 1) - beyond;
    summary->vbset(j, 1, sum);
    summary->vbset(j, 2, sum * 100.0 / n);
  }
}

}  // namespace

int PrepareIntervalData(matrix* answers, int n, int k, matrix* times, matrix* covariates, int p,
                        int* nRemoved, matrixInt* removeFlags, int* nKept, matrix* bounds,
                        matrix* type, matrix* sortKey, matrix* covariatesOut, matrix* summary) {
  const Rows rows{answers, k, times, bounds, type, sortKey};
  // Subjects past the end of every column have no answers and leave nothing.
  const int present = std::min(n, std::max({answers->count(), removeFlags->count(), bounds->count(),
                                            type->count(), sortKey->count()}));
  for (int i = 1; i <= present; ++i) {
    if (answers->vbget(i, 1) == kNo) {
      removeFlags->vbset(i, 1, 1);
      type->vbset(i, 1, kDropped);
    } else {
      rows.classify(i);
    }
  }

  matrix order(n, 1, 0);
  V_Set1toN(&order, n);
  SortQ(covariates, n, p, 1, n, sortKey, &order, 1, 0, kTrue);
  SortApply2<matrix>(type, n, 1, &order);
  SortApply2<matrix>(bounds, n, 2, &order);
  SortApply2<matrixInt>(removeFlags, n, 1, &order);

  *nRemoved = truncated(V_Sum2(removeFlags, n));
  M_RemoveRowsInList(covariates, n, std::min(p, covariatesOut->count()), removeFlags,
                     covariatesOut);
  compact(type, n, removeFlags);
  compact(sortKey, n, removeFlags);
  // Flags that the caller set to other values take part: the difference wraps rather than overflow.
  *nKept = static_cast<int>(static_cast<unsigned>(n) - static_cast<unsigned>(*nRemoved));

  summarise(answers, *nKept, n, k, summary);

  if (*nKept == 0) return -2;
  for (int r = 0; r < n; ++r) {
    const double code = type->vbget(r + 1, 1);
    if (code < kRightCensored || code > kIntervalCensored) return -1;
  }
  return 0;
}
