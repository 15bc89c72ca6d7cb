// Factorisation of a symmetric, positive semidefinite matrix that says which of its columns
// depend on the ones before them, and how.
#ifndef NUMERICS_CHOLESKY_H_
#define NUMERICS_CHOLESKY_H_

#include <cstddef>
#include <span>
#include <vector>

#include "numerics/squareMatrix.h"

namespace survmeth::numerics {

// S A S = L L' with S the diagonal that makes the diagonal of S A S one, column after column in
// the order given, so that the later one of two columns that say the same is the dependent one.
class Cholesky {
 public:
  // In   a           n x n, symmetric; the lower triangle is read
  //      tolerance   column j depends on those before it where at most `tolerance` of its
  //                  diagonal element is left: 1 - R^2 of its regression on them
  //      smallest    n or none: a diagonal element at or below smallest[j] counts as 0
  // Edge an element that is no number makes every column dependent
  // Cost O(n^3 / 3)
  explicit Cholesky(const SquareMatrix& a, double tolerance = 1e-11,
                    std::span<const double> smallest = {});

  std::size_t rank() const { return rank_; }
  bool fullRank() const { return rank_ == factor_.size(); }
  // Whether a pivot was negative beyond the tolerance: no information matrix.
  bool indefinite() const { return indefinite_; }
  bool dependent(std::size_t j) const { return dependent_[j]; }

  // x with A x = b over the independent columns, 0 at the dependent ones.
  std::vector<double> solve(std::span<const double> b) const;
  // b' A^-1 b over the independent columns, as a sum of squares.
  double quadraticForm(std::span<const double> b) const;
  // The inverse over the independent columns, rows and columns of 0 for the dependent ones.
  SquareMatrix inverse() const;
  // The logarithm of the determinant of A over the independent columns.
  double logDeterminant() const;
  // c with column j = sum of c[k] column k over the independent columns before j, for a dependent
  // column; c is 0 elsewhere.
  std::vector<double> combination(std::size_t j) const;

 private:
  std::vector<double> forward(std::span<const double> b) const;
  void backward(std::vector<double>& x) const;

  SquareMatrix factor_;        // L, lower triangle; rows of dependent columns hold their projection
  std::vector<double> scale_;  // diagonal of S, 0 for columns of zeros
  std::vector<char> dependent_;
  std::size_t rank_ = 0;
  bool indefinite_ = false;
};

}  // namespace survmeth::numerics

#endif  // NUMERICS_CHOLESKY_H_
