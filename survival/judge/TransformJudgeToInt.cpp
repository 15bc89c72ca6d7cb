// Judges' ratings to marks over the levels of the rating.
#include <algorithm>

#include "Klikro/Klikro"
#include "survival/SortApply.h"
#include "survival/judge/judge.h"

namespace {

// Sorts X and key by key, and `companion` alike.
void sortBy(matrix* key, int n, matrix* X, int p, matrix* companion) {
  matrix order(n, 1, 0);
  V_Set1toN(&order, n);
  SortQ(X, n, p, 1, n, key, &order, 1, 0, kTrue);
  SortApply2<matrix>(companion, n, 1, &order);
}

// indicators(g, from .. to) := 1. Columns past the last element cannot be written.
void mark(matrix* indicators, int g, int from, int to) {
  const int end = std::min(to, indicators->count());
  for (int l = from; l <= end; ++l) indicators->vbset(g, l, 1.0);
}

}  // namespace

int TransformJudgeToInt(matrix* rating, int n, int K, matrix* subjectKey, int G,
                        matrix* subjectSizes, matrix* X, int p, matrix* indicators,
                        matrix* subjectX, matrix* levels) {
  sortBy(rating, n, X, p, subjectKey);
  levels->vbset(1, 1, 0.0);
  levels->vbset(2, 1, rating->vbget(1, 1));
  int level = 2;
  for (int i = 1; i < n; ++i) {
    const double next = rating->vbget(i + 1, 1);
    if (next > rating->vbget(i, 1)) levels->vbset(++level, 1, next);
  }
  sortBy(subjectKey, n, X, p, rating);

  // Loops end where nothing more can be read or written, however large the counts are.
  const int lastLevel = std::min(K, std::max(levels->count(), indicators->count()) + 1);
  const int lastSubject =
      std::min(G, std::max({subjectSizes->count(), indicators->count(), subjectX->count()}));
  const int lastColumn = std::min(p, subjectX->count());
  int row = 1;
  for (int g = 1; g <= lastSubject; ++g) {
    const double size = subjectSizes->vbget(1, g);
    const double lower = rating->vbget(row, 1);
    if (size == 1.0) {
      for (int l = 1; l <= lastLevel; ++l) {
        if (levels->vbget(l, 1) != lower) continue;
        mark(indicators, g, 1, l);
        mark(indicators, g, K, K);
      }
    } else if (size == 2.0) {
      const double upper = rating->vbget(truncated(row + 1.0), 1);
      for (int l = 1; l <= lastLevel; ++l) {
        if (l >= 2 && levels->vbget(l, 1) == lower) mark(indicators, g, 1, l - 1);
        if (levels->vbget(l, 1) == upper) mark(indicators, g, l, K);
      }
    }
    // The last covariate in every column: callers' tables were made so.
    const double covariate = X->vbget(row, p);
    for (int c = 1; c <= lastColumn; ++c) subjectX->vbset(g, c, covariate);
    row = truncated(row + size);
  }
  return 0;
}
