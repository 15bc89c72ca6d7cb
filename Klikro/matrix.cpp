// Out-of-line members of the matrix of double.
#include "Klikro/matrix"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "Klikro/shape.h"

matrix::~matrix() {
  if (owned_) delete[] buffer_;
}

matrix::matrix(int rows, int cols, int fill) : matrix(rows, cols, static_cast<double>(fill)) {}

matrix::matrix(int rows, int cols, double fill) {
  reshape(rows, cols);
  std::fill_n(buffer_, count_, fill);
}

matrix::matrix(int rows, int cols, double* src, int, int) {
  reshape(rows, cols);
  std::copy_n(src, count_, buffer_);
}

matrix::matrix(int rows, int cols, double* src, bool borrow) {
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

matrix::matrix(int rows, matrix* src) {
  reshape(rows, src->cols());
  double* out = buffer_;
  for (int j = 1; j <= cols_; ++j) {
    for (int i = 1; i <= rows_; ++i) *out++ = src->vbget(i, j);
  }
}

void matrix::reshape(int rows, int cols) {
  const klikro::Shape shape(rows, cols);
  double* fresh = new double[static_cast<std::size_t>(shape.count)];
  if (owned_) delete[] buffer_;
  buffer_ = fresh;
  rows_ = shape.rows;
  cols_ = shape.cols;
  count_ = shape.count;
  owned_ = true;
}

void matrix::copyMatTo(double* dst) const { std::copy_n(buffer_, count_, dst); }

void matrix::copyMatTo(matrix* dst) const {
  if (dst == this) return;
  std::copy_n(buffer_, std::min(count_, dst->count_), dst->buffer_);
}

void matrix::copyCol(matrix* dst, int col, int) const {
  for (int i = 1; i <= rows_; ++i) dst->vbset(i, 1, vbget(i, col));
}

void matrix::matCheck(matrix*& target, int rows, int cols, double fill) {
  if (target == nullptr) {
    target = new matrix(rows, cols, fill);
    return;
  }
  const klikro::Shape shape(rows, cols);
  if (target->rows_ != shape.rows || target->cols_ != shape.cols) target->reshape(rows, cols);
  std::fill_n(target->buffer_, target->count_, fill);
}

void matrix::inverse1(matrix* result, short& status, double eps) const {
  status = -1;
  std::fill_n(result->buffer_, result->count_, 0.0);
  const int n = rows_;
  if (cols_ != n || result->rows_ != n || result->cols_ != n) return;

  // work = this, inverse = I; every row operation is applied to both. Column-major with stride n.
  const std::size_t stride = static_cast<std::size_t>(n);
  std::vector<double> work(buffer_, buffer_ + count_);
  std::vector<double> inverse(work.size(), 0.0);
  for (int i = 0; i < n; ++i) inverse[i + i * stride] = 1.0;

  for (int k = 0; k < n; ++k) {
    int pivotRow = k;
    for (int i = k + 1; i < n; ++i) {
      if (std::fabs(work[i + k * stride]) > std::fabs(work[pivotRow + k * stride])) pivotRow = i;
    }
    const double pivot = work[pivotRow + k * stride];
    if (!(std::fabs(pivot) > eps)) return;
    for (int j = 0; j < n; ++j) {
      std::swap(work[k + j * stride], work[pivotRow + j * stride]);
      std::swap(inverse[k + j * stride], inverse[pivotRow + j * stride]);
    }
    for (int j = 0; j < n; ++j) {
      work[k + j * stride] /= pivot;
      inverse[k + j * stride] /= pivot;
    }
    for (int i = 0; i < n; ++i) {
      const double factor = work[i + k * stride];
      if (i == k) continue;
      for (int j = 0; j < n; ++j) {
        work[i + j * stride] -= factor * work[k + j * stride];
        inverse[i + j * stride] -= factor * inverse[k + j * stride];
      }
    }
  }
  std::copy(inverse.begin(), inverse.end(), result->buffer_);
  status = 0;
}
