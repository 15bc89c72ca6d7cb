// Keyed sorts: one stable order of the key, applied to every column that moves with it.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Klikro/order.h"
#include "Klikro/utilities.h"

namespace {

// Rows first..last of an n-row matrix as far as they exist, 0-based and half-open.
struct RowRange {
  RowRange(int first, int last, int n) : begin(std::max(first, 1) - 1), end(std::min(last, n)) {}
  bool empty() const { return end <= begin; }
  int begin;
  int end;
};

// Applies the order to the columns 1..cols of m, over the rows of the range.
void reorder(matrix* m, int cols, const RowRange& range, const std::vector<std::uint32_t>& order,
             std::vector<double>& scratch) {
  const int present = std::min(cols, m->cols());
  if (range.end > m->rows()) return;
  for (int j = 0; j < present; ++j) {
    double* column = m->data() + static_cast<std::size_t>(j) * m->rows();
    klikro::applyOrder(order, column + range.begin, scratch);
  }
}

}  // namespace

void SortQ(matrix* a, int n, int aCols, int first, int last, matrix* key, matrix* b, int bCols,
           short descending, short moveKey) {
  const RowRange range(first, last, std::min(n, key->rows()));
  if (range.empty()) return;
  const std::vector<std::uint32_t> order =
      klikro::sortedOrder(key->data() + range.begin, range.end - range.begin, descending == kTrue);
  if (order.empty()) return;
  std::vector<double> scratch;
  reorder(a, aCols, range, order, scratch);
  if (bCols > 0 && b != nullptr && b != a) reorder(b, bCols, range, order, scratch);
  if (moveKey == kTrue && key != a && (key != b || bCols < 1)) {
    reorder(key, 1, range, order, scratch);
  }
}

void SortQVector(matrix*& v, int n, int first, int last, short descending) {
  SortQ(v, n, 1, first, last, v, nullptr, 0, descending, 0);
}

template <typename T>
int SortQMatrixCol(T* a, int n, int nCols, int keyCol, int first, int last, short descending) {
  const RowRange range(first, last, std::min(n, a->rows()));
  if (range.empty() || keyCol < 1 || keyCol > a->cols()) return 0;
  const double* key = a->data() + static_cast<std::size_t>(keyCol - 1) * a->rows();
  const std::vector<std::uint32_t> order =
      klikro::sortedOrder(key + range.begin, range.end - range.begin, descending == kTrue);
  if (order.empty()) return 0;
  std::vector<double> scratch;
  reorder(a, nCols, range, order, scratch);
  return 0;
}
template KLIKRO_API int SortQMatrixCol<matrix>(matrix*, int, int, int, int, int, short);
