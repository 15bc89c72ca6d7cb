#include "numerics/cholesky.h"

#include <cmath>

#include "numerics/elementary.h"

namespace survmeth::numerics {

SquareMatrix part(const SquareMatrix& matrix, std::span<const std::size_t> chosen) {
  SquareMatrix result(chosen.size());
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    for (std::size_t j = 0; j < chosen.size(); ++j) result(i, j) = matrix(chosen[i], chosen[j]);
  }
  return result;
}

SquareMatrix sandwich(const SquareMatrix& left, const SquareMatrix& middle) {
  const std::size_t n = left.size();
  SquareMatrix half(n);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t k = 0; k < n; ++k) {
      for (std::size_t j = 0; j < n; ++j) half(i, j) += left(i, k) * middle(k, j);
    }
  }
  SquareMatrix result(n);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) result(i, j) = dot(half.row(i), left.row(j));
  }
  return result;
}

double dot(std::span<const double> a, std::span<const double> b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
  return sum;
}

Cholesky::Cholesky(const SquareMatrix& a, double tolerance, std::span<const double> smallest)
    : factor_(a.size()), scale_(a.size(), 0.0), dependent_(a.size(), 0) {
  const std::size_t n = a.size();
  for (std::size_t j = 0; j < n; ++j) {
    const double least = smallest.empty() ? 0.0 : smallest[j];
    if (a(j, j) > least && std::isfinite(a(j, j))) scale_[j] = 1.0 / std::sqrt(a(j, j));
    if (a(j, j) < 0.0) indefinite_ = true;
  }
  for (std::size_t j = 0; j < n; ++j) {
    for (std::size_t k = 0; k < j; ++k) {
      if (dependent_[k] != 0) continue;
      double rest = a(j, k) * scale_[j] * scale_[k];
      for (std::size_t m = 0; m < k; ++m) rest -= factor_(j, m) * factor_(k, m);
      factor_(j, k) = rest / factor_(k, k);
    }
    double left = scale_[j] > 0.0 ? 1.0 : 0.0;
    for (std::size_t m = 0; m < j; ++m) left -= factor_(j, m) * factor_(j, m);
    if (left < -100.0 * tolerance) indefinite_ = true;
    // A comparison that holds for no NaN.
    if (scale_[j] > 0.0 && left > tolerance) {
      factor_(j, j) = std::sqrt(left);
      ++rank_;
    } else {
      dependent_[j] = 1;
    }
  }
}

// L y = S b; entries of dependent columns are 0.
std::vector<double> Cholesky::forward(std::span<const double> b) const {
  const std::size_t n = factor_.size();
  std::vector<double> y(n, 0.0);
  for (std::size_t j = 0; j < n; ++j) {
    if (dependent_[j] != 0) continue;
    double rest = b[j] * scale_[j];
    for (std::size_t k = 0; k < j; ++k) {
      if (dependent_[k] == 0) rest -= factor_(j, k) * y[k];
    }
    y[j] = rest / factor_(j, j);
  }
  return y;
}

// L' x = y over the independent columns, in place.
void Cholesky::backward(std::vector<double>& x) const {
  for (std::size_t j = factor_.size(); j-- > 0;) {
    if (dependent_[j] != 0) continue;
    x[j] /= factor_(j, j);
    for (std::size_t k = 0; k < j; ++k) {
      if (dependent_[k] == 0) x[k] -= factor_(j, k) * x[j];
    }
  }
}

std::vector<double> Cholesky::solve(std::span<const double> b) const {
  std::vector<double> x = forward(b);
  backward(x);
  for (std::size_t j = 0; j < x.size(); ++j) x[j] *= scale_[j];
  return x;
}

double Cholesky::quadraticForm(std::span<const double> b) const {
  const std::vector<double> y = forward(b);
  return dot(y, y);
}

SquareMatrix Cholesky::inverse() const {
  const std::size_t n = factor_.size();
  SquareMatrix result(n);
  std::vector<double> unit(n, 0.0);
  for (std::size_t j = 0; j < n; ++j) {
    if (dependent_[j] != 0) continue;
    unit[j] = 1.0;
    const std::vector<double> column = solve(unit);
    unit[j] = 0.0;
    for (std::size_t i = j; i < n; ++i) result(i, j) = result(j, i) = column[i];
  }
  return result;
}

double Cholesky::logDeterminant() const {
  double sum = 0.0;
  for (std::size_t j = 0; j < factor_.size(); ++j) {
    if (dependent_[j] == 0) sum += 2.0 * (log(factor_(j, j)) - log(scale_[j]));
  }
  return sum;
}

std::vector<double> Cholesky::combination(std::size_t j) const {
  const std::size_t n = factor_.size();
  std::vector<double> c(n, 0.0);
  if (scale_[j] == 0.0) return c;
  for (std::size_t k = 0; k < j; ++k) c[k] = dependent_[k] != 0 ? 0.0 : factor_(j, k);
  backward(c);
  for (std::size_t k = 0; k < j; ++k) c[k] *= scale_[k] / scale_[j];
  return c;
}

}  // namespace survmeth::numerics
