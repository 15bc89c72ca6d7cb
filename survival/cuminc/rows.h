// What the tables made from a Kaplan-Meier table share: rows before the first event hold the
// missing marker, rows without events repeat the row above.
#ifndef SURVIVAL_CUMINC_ROWS_H_
#define SURVIVAL_CUMINC_ROWS_H_

#include <algorithm>
#include <climits>
#include <cstdint>
#include <initializer_list>

#include "Klikro/Klikro"

namespace survival {

// Row count r, brought to where rows beyond a table's `elements` begin. Such rows read -1 and
// cannot be written, so that leaving the others of them out changes nothing.
inline int reachableRows(int r, int elements) {
  const std::int64_t limit = std::min<std::int64_t>(std::int64_t{elements} + 1, INT_MAX - 1);
  return static_cast<int>(std::clamp<std::int64_t>(r, -limit, limit));
}

// The first of rows 1..rows - 1 with something above 0 in the column; `rows` where there is none.
inline int firstEventRow(const matrix* table, int column, int rows) {
  for (int k = 1; k < rows; ++k) {
    if (table->vbget(k, column) > 0.0) return k;
  }
  return rows;
}

// The marker into columns firstColumn..lastColumn of the rows before `row`.
inline void markRowsBefore(int row, int firstColumn, int lastColumn, matrix* table) {
  for (int k = 1; k < row; ++k) {
    for (int j = firstColumn; j <= lastColumn; ++j) table->vbset(k, j, kMissing);
  }
}

// Columns of `row` := those of the row above, in the order given.
inline void repeatRowAbove(int row, std::initializer_list<int> columns, matrix* table) {
  for (const int j : columns) table->vbset(row, j, table->vbget(row - 1, j));
}

}  // namespace survival

#endif  // SURVIVAL_CUMINC_ROWS_H_
