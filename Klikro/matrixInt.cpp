// Out-of-line members of the matrix of int.
#include "Klikro/matrixInt"

#include <algorithm>
#include <cstddef>

#include "Klikro/Klikro"
#include "Klikro/shape.h"

matrixInt::~matrixInt() {
  if (owned_) delete[] buffer_;
}

matrixInt::matrixInt(int rows, int cols, int fill) {
  reshape(rows, cols);
  std::fill_n(buffer_, count_, fill);
}

matrixInt::matrixInt(int rows, int cols, int* src, bool borrow) {
  if (borrow) {
    const klikro::Shape shape(rows, cols);
    buffer_ = src;
    rows_ = shape.rows;
    cols_ = shape.cols;
    count_ = shape.count;
    owned_ = false;
  } else {
    reshape(rows, cols);
    std::copy_n(src, count_, buffer_);
  }
}

void matrixInt::reshape(int rows, int cols) {
  const klikro::Shape shape(rows, cols);
  int* fresh = new int[static_cast<std::size_t>(shape.count)];
  if (owned_) delete[] buffer_;
  buffer_ = fresh;
  rows_ = shape.rows;
  cols_ = shape.cols;
  count_ = shape.count;
  owned_ = true;
}

void matrixInt::copyMatTo(int* dst) const { std::copy_n(buffer_, count_, dst); }

void matrixInt::copyMatTo(matrixInt* dst) const {
  if (dst == this) return;
  std::copy_n(buffer_, std::min(count_, dst->count_), dst->buffer_);
}

void matrixInt::matCheck(matrixInt*& target, int rows, int cols, double fill) {
  const int value = truncated(fill);
  if (target == nullptr) {
    target = new matrixInt(rows, cols, value);
    return;
  }
  const klikro::Shape shape(rows, cols);
  if (target->rows_ != shape.rows || target->cols_ != shape.cols) target->reshape(rows, cols);
  std::fill_n(target->buffer_, target->count_, value);
}

void matrixInt::ReInit() { std::fill_n(buffer_, count_, 0); }
