// Row permutations of a matrix.
#include "survival/SortApply.h"

#include <algorithm>

#include "Klikro/Klikro"

template <typename T, typename U>
void SortApply(T* src, int n, int cols, matrix* perm, U* dst) {
  const int rows = std::min(n, src->rows());
  for (int j = 1; j <= cols; ++j) {
    for (int i = 1; i <= n; ++i) {
      // The accessor looks at the linear position alone and would answer from another column.
      const int row = truncated(perm->vbget(i, 1));
      dst->vbset(i, j, row >= 1 && row <= rows ? src->vbget(row, j) : -1);
    }
  }
}

template <typename T>
void SortApply2(T* m, int n, int cols, matrix* perm) {
  T work(n, cols, 0);
  SortApply<T, T>(m, n, cols, perm, &work);
  work.copyMatTo(m);
}

template SURVIVAL_API void SortApply<matrix, matrix>(matrix*, int, int, matrix*, matrix*);
template SURVIVAL_API void SortApply<matrixInt, matrixInt>(matrixInt*, int, int, matrix*,
                                                           matrixInt*);
template SURVIVAL_API void SortApply2<matrix>(matrix*, int, int, matrix*);
template SURVIVAL_API void SortApply2<matrixInt>(matrixInt*, int, int, matrix*);
