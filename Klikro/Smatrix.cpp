// Out-of-line members of the matrix of wide strings.
#include "Klikro/Smatrix"

#include <cstddef>
#include <memory>

#include "Klikro/shape.h"

Smatrix::Smatrix(int rows, int cols, wchar_t** src, int, int) {
  const klikro::Shape shape(rows, cols);
  auto strings = std::make_unique<std::wstring[]>(static_cast<std::size_t>(shape.count));
  for (int p = 0; p < shape.count; ++p) strings[p] = src[p];
  count_ = shape.count;
  rows_ = shape.rows;
  cols_ = shape.cols;
  elements_ = strings.release();
}

Smatrix::~Smatrix() { delete[] elements_; }
