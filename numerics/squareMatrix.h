// A square matrix of doubles, row after row.
#ifndef NUMERICS_SQUARE_MATRIX_H_
#define NUMERICS_SQUARE_MATRIX_H_

#include <cstddef>
#include <span>
#include <vector>

#include "numerics/sizes.h"

namespace survmeth::numerics {

class SquareMatrix {
 public:
  SquareMatrix() = default;
  explicit SquareMatrix(std::size_t size, double value = 0.0)
      : size_(size), values_(product(size, size), value) {}

  std::size_t size() const { return size_; }
  double& operator()(std::size_t i, std::size_t j) { return values_[i * size_ + j]; }
  double operator()(std::size_t i, std::size_t j) const { return values_[i * size_ + j]; }
  std::span<double> row(std::size_t i) { return {values_.data() + i * size_, size_}; }
  std::span<const double> row(std::size_t i) const { return {values_.data() + i * size_, size_}; }
  const std::vector<double>& values() const { return values_; }

 private:
  std::size_t size_ = 0;
  std::vector<double> values_;
};

// The rows and columns `chosen` of a matrix, in their order.
SquareMatrix part(const SquareMatrix& matrix, std::span<const std::size_t> chosen);

// left * middle * left' of matrices of one size.
SquareMatrix sandwich(const SquareMatrix& left, const SquareMatrix& middle);

double dot(std::span<const double> a, std::span<const double> b);

}  // namespace survmeth::numerics

#endif  // NUMERICS_SQUARE_MATRIX_H_
