// Copies, removals, groupings and quadratic forms of matrices.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Klikro/order.h"
#include "Klikro/utilities.h"

void M_Duplicate(matrix* src, int rows, int cols, matrix* dst, int r1, int c1, int r2, int c2) {
  for (int j = 0; j < cols; ++j) V_Duplicate(src, r1, c1 + j, rows, dst, r2, c2 + j);
}

void M_CopyBlock(matrix* src, int firstRow, int lastRow, int firstCol, int lastCol, matrix* dst) {
  M_Duplicate(src, lastRow - firstRow + 1, lastCol - firstCol + 1, dst, firstRow, firstCol, 1, 1);
}

double M_ProductTrVBV(matrix* v, int n, matrix* B) {
  double form = 0.0;
  for (int i = 1; i <= n; ++i) {
    double product = 0.0;  // row i of B v
    for (int j = 1; j <= n; ++j) product += B->vbget(i, j) * v->vbget(j, 1);
    form += v->vbget(i, 1) * product;
  }
  return form;
}

void M_RemoveColsInList(matrix* a, int rows, int cols, matrix* list, matrix* dst) {
  int kept = 0;
  for (int j = 1; j <= cols; ++j) {
    if (list->vbget(j, 1) == 0.0) V_Duplicate(a, 1, j, rows, dst, 1, ++kept);
  }
}

void M_RemoveRowsInList(matrix* a, int rows, int cols, matrixInt* flags, matrix* dst) {
  int kept = 0;
  for (int i = 1; i <= rows; ++i) {
    if (flags->vbget(i, 1) != 0) continue;
    ++kept;
    for (int j = 1; j <= cols; ++j) dst->vbset(kept, j, a->vbget(i, j));
  }
}

void M_RemoveCol(matrix* a, int rows, int cols, int col, matrix* dst) {
  int kept = 0;
  for (int j = 1; j <= cols; ++j) {
    if (j != col) V_Duplicate(a, 1, j, rows, dst, 1, ++kept);
  }
}

void M_SumByCols(matrix* a, int rows, int k, matrix* sums) {
  for (int j = 1; j <= k; ++j) {
    double total = 0.0;
    for (int i = 1; i <= rows; ++i) total += a->vbget(i, j);
    sums->vbset(j, 1, total);
  }
}

void M_ExtractMatToMatByColDbl(matrix* a, int rows, int firstCol, int lastCol, matrix* dst) {
  M_CopyBlock(a, 1, rows, firstCol, lastCol, dst);
}

int M_GroupBy(matrix* a, int n, int keyCol, int valueCol, matrix* groups) {
  std::vector<double> keys;
  std::vector<double> values;
  for (int i = 1; i <= n; ++i) {
    if (isMissing(a->vbget(i, keyCol))) continue;
    keys.push_back(a->vbget(i, keyCol));
    values.push_back(a->vbget(i, valueCol));
  }
  std::vector<std::uint32_t> order = klikro::sortedOrder(keys.data(), keys.size(), false);
  int group = 0;
  for (std::size_t k = 0; k < keys.size();) {
    const auto rowAt = [&](std::size_t at) { return order.empty() ? at : order[at]; };
    const double key = keys[rowAt(k)];
    double total = 0.0;
    int present = 0;
    do {
      const double value = values[rowAt(k)];
      if (!isMissing(value)) {
        total += value;
        ++present;
      }
      ++k;
    } while (k < keys.size() && keys[rowAt(k)] == key);
    ++group;
    groups->vbset(group, 1, key);
    groups->vbset(group, 2, present);
    groups->vbset(group, 3, present > 0 ? total / present : kMissing);
  }
  return group;
}

void iniSuperMat(matrix** arr, int count, int rows, int cols) {
  int made = 0;
  try {
    for (; made < count; ++made) arr[made] = new matrix(rows, cols, 0);
  } catch (...) {
    deletecascade(arr, made);
    throw;
  }
}

void deletecascade(matrix** arr, int count) {
  for (int made = count; made > 0; --made) {
    delete arr[made - 1];
    arr[made - 1] = nullptr;
  }
}
