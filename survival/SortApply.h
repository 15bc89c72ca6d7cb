// Row permutations of a matrix.
#ifndef SURVIVAL_SORTAPPLY_H_
#define SURVIVAL_SORTAPPLY_H_

#include "Klikro/matrix"
#include "Klikro/matrixInt"
#include "survival/export.h"

// dst(i, j) := src(perm(i), j) for rows 1..n and columns 1..cols. perm holds 1-based row numbers,
// truncated; an entry that is no row of src, or lies outside 1..n, gives -1 in every column.
// Cost O(n cols).
template <typename T, typename U>
SURVIVAL_API void SortApply(T* src, int n, int cols, matrix* perm, U* dst);

// The same in place, by way of a work copy that starts at zero.
template <typename T>
SURVIVAL_API void SortApply2(T* m, int n, int cols, matrix* perm);

extern template SURVIVAL_API void SortApply<matrix, matrix>(matrix*, int, int, matrix*, matrix*);
extern template SURVIVAL_API void SortApply<matrixInt, matrixInt>(matrixInt*, int, int, matrix*,
                                                                  matrixInt*);
extern template SURVIVAL_API void SortApply2<matrix>(matrix*, int, int, matrix*);
extern template SURVIVAL_API void SortApply2<matrixInt>(matrixInt*, int, int, matrix*);

#endif  // SURVIVAL_SORTAPPLY_H_
