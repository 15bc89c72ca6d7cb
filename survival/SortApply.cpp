// Row permutations of a matrix.
#include "survival/SortApply.h"

#include "Klikro/Klikro"

template <typename T, typename U>
void SortApply(T* src, int n, int cols, matrix* perm, U* dst) {
  for (int j = 1; j <= cols; ++j) {
    for (int i = 1; i <= n; ++i) dst->vbset(i, j, src->vbget(truncated(perm->vbget(i, 1)), j));
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
