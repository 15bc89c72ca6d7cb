// Vector, matrix and sorting utilities shared by the statistical routines.
#ifndef KLIKRO_UTILITIES_H_
#define KLIKRO_UTILITIES_H_

#include <climits>

#include "Klikro/export.h"
#include "Klikro/matrix"
#include "Klikro/matrixInt"

// A statistic that cannot be formed; an input at or below it is missing.
inline constexpr double kMissing = -1.79769313486231e308;
// An infinite result or an open bound.
inline constexpr double kInfinite = 1.79769313486231e308;
// 2^-52, the library's guard against zero denominators.
inline constexpr double kEpsilon = 2.220446049250313e-16;
// True, as the macro language writes it; every other value of a flag is false.
inline constexpr short kTrue = -1;

inline bool isMissing(double value) { return value <= kMissing; }

// x without its fraction; INT_MIN, as the processor's own conversion gives, where no int fits.
inline int truncated(double x) {
  return x > -2147483649.0 && x < 2147483648.0 ? static_cast<int>(x) : INT_MIN;
}

// ---- Sorts: stable, deterministic, O(n log n); NaN after every number, in input order ----

// Re-orders rows first..last of a (aCols columns) and b (bCols columns, 0 leaves b alone) by
// column 1 of key, ascending (descending for flag -1); the key column moves too for moveKey -1.
// Rows outside, and rows past n or past a matrix's end, stay.
KLIKRO_API void SortQ(matrix* a, int n, int aCols, int first, int last, matrix* key, matrix* b,
                      int bCols, short descending, short moveKey);

// Sorts elements first..last of v[n].
KLIKRO_API void SortQVector(matrix*& v, int n, int first, int last, short descending);

// Sorts rows first..last of the n x nCols matrix by column keyCol, whole rows. Returns 0.
template <typename T>
int SortQMatrixCol(T* a, int n, int nCols, int keyCol, int first, int last, short descending);
extern template KLIKRO_API int SortQMatrixCol<matrix>(matrix*, int, int, int, int, int, short);

// ---- Vectors ----

// v(1) + v(2) + ... + v(n), added from left to right.
KLIKRO_API double V_Sum2(matrix* v, int n);
KLIKRO_API double V_Sum2(matrixInt* v, int n);

// -1 when the first n elements are all equal (none or one included), else 0; the last argument
// is ignored.
KLIKRO_API short V_IsConstant(matrix* v, int n, short);

// Largest of the first n elements, in V_Max of those whose flag is not -1. NaN is passed over;
// kMissing over nothing.
KLIKRO_API double V_Max(matrix* v, int n, short* skip);
KLIKRO_API double V_Max2(matrix* v, int n);

// v(i) := i for i = 1..n.
KLIKRO_API void V_Set1toN(matrix* v, int n);

// flags[0..n - 1] := 0.
KLIKRO_API void InitVectorToFalse(short* flags, int n);

// dst(row2 + i, col2) := src(row + i, col) for i = 0..n - 1.
KLIKRO_API void V_Duplicate(matrix* src, int row, int col, int n, matrix* dst, int row2, int col2);

// sum(w x) / sum(w) over the rows whose flag is not -1.
KLIKRO_API double V_Mean(matrix* v, int n, short* skip, matrix* weights);

// Mean of the non-missing values among the first n.
KLIKRO_API double V_Mean2(matrix* v, int n);

// sum(w (x - mean)^2) / (sum(w) - 1) over the rows whose flag is not -1.
KLIKRO_API double V_Var(matrix* v, int n, short* skip, matrix* weights);

// V_Mean into mean, the square root of V_Var into sd.
KLIKRO_API void V_MeanStdev(matrix* v, int n, short* skip, matrix* weights, double* mean,
                            double* sd);

// Variance of the N non-missing values: divisor N, or N - 1 for unbiased = -1. The last argument
// is ignored.
KLIKRO_API double V_Var2(matrix* v, int n, short unbiased, short);

// How many of the first n values are not missing; how many distinct such values there are.
KLIKRO_API int V_NbNonMissing(matrix* v, int n);
KLIKRO_API int V_NbDistinct(matrix* v, int n);

// Quantile at p in [0, 1]: linear interpolation between order statistics at position
// 1 + (N - 1) p, over the first n values, in V_QuantileM over those whose flag is not -1.
// kMissing over nothing. Cost O(n).
KLIKRO_API double V_Quantile(matrix* v, int n, double p);
KLIKRO_API double V_QuantileM(matrix* v, int n, short* skip, double p);

// ---- Matrices ----

// Copies the rows x cols block of src at (r1, c1) to dst at (r2, c2).
KLIKRO_API void M_Duplicate(matrix* src, int rows, int cols, matrix* dst, int r1, int c1, int r2,
                            int c2);

// Copies rows firstRow..lastRow, columns firstCol..lastCol of src to dst at (1, 1).
KLIKRO_API void M_CopyBlock(matrix* src, int firstRow, int lastRow, int firstCol, int lastCol,
                            matrix* dst);

// The quadratic form v' B v, v of length n and B n x n.
KLIKRO_API double M_ProductTrVBV(matrix* v, int n, matrix* B);

// dst := the columns of a (rows x cols) whose entry in list[cols] is 0, or the rows whose flag in
// flags[rows] is 0, or all columns but `col`. What is kept stands first in dst; the rest of dst
// stays as it was.
KLIKRO_API void M_RemoveColsInList(matrix* a, int rows, int cols, matrix* list, matrix* dst);
KLIKRO_API void M_RemoveRowsInList(matrix* a, int rows, int cols, matrixInt* flags, matrix* dst);
KLIKRO_API void M_RemoveCol(matrix* a, int rows, int cols, int col, matrix* dst);

// sums(j, 1) := the sum of the first `rows` rows of column j, for j = 1..k.
KLIKRO_API void M_SumByCols(matrix* a, int rows, int k, matrix* sums);

// dst := columns firstCol..lastCol of a's first `rows` rows.
KLIKRO_API void M_ExtractMatToMatByColDbl(matrix* a, int rows, int firstCol, int lastCol,
                                          matrix* dst);

// Groups rows 1..n of a by column keyCol: row g of groups (at most n x 3) gets the g-th smallest
// key, the number of its non-missing values in column valueCol and their mean (kMissing when
// there are none). Rows whose key is missing belong to no group. Returns the number of groups.
// Cost O(n log n).
KLIKRO_API int M_GroupBy(matrix* a, int n, int keyCol, int valueCol, matrix* groups);

// arr[0..count - 1] := new rows x cols matrices of zeros; deletes them again. When an allocation
// fails, those already made are deleted before the exception passes.
KLIKRO_API void iniSuperMat(matrix** arr, int count, int rows, int cols);
KLIKRO_API void deletecascade(matrix** arr, int count);

// Weighted least squares by Householder QR of the design: the p columns of X[n x p], then a
// column of ones. coefficients (p + 1) x 1 in that order, residuals y - fit, n x 1. For
// noIntercept = -1 the column of ones is left out and its coefficient is 0. A column whose part
// independent of the columns before it is not above tolerance times its own norm is left out:
// its coefficient is 0. The two arguments after w are ignored. Cost O(n p^2).
KLIKRO_API void OLSBasic(int n, int p, matrix* X, matrix* y, matrix* w, int, short,
                         short noIntercept, double tolerance, matrix* coefficients,
                         matrix* residuals);

#endif  // KLIKRO_UTILITIES_H_
