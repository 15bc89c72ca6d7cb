// Basis functions of one covariate. Each learns its knots or centres from data once and then gives
// the same functions for any other data.
#ifndef MODEL_BASES_H_
#define MODEL_BASES_H_

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace survmeth::model {

// Natural cubic spline of df columns: cubic between the knots, linear beyond the boundary knots.
// The cubic B-splines over the knots, without the first, on the space where the second derivatives
// vanish at both boundary knots; that space has the basis which Householder's QR of the two
// conditions gives.
//
// Source Hastie in Chambers & Hastie, Statistical Models in S (1992), ch. 7; de Boor, A Practical
//        Guide to Splines (1978)
struct NaturalSpline {
  std::vector<double> knots;              // inner, ascending
  double low = 0, high = 0;               // boundary knots
  std::vector<std::vector<double>> null;  // of each column, its weights of the B-splines

  std::size_t columns() const { return knots.size() + 1; }
  bool operator==(const NaturalSpline&) const = default;
};

// The df - 1 inner knots of a natural spline: the quantiles 1 / df .. (df - 1) / df of x.
std::vector<double> naturalKnots(std::span<const double> x, std::size_t df);

// In   x       finite, at least two different values: their range are the boundary knots
//      knots   ascending, between the boundary knots
NaturalSpline naturalSplineAt(std::span<const double> x, std::vector<double> knots);

// Restricted cubic spline by k knots, k - 1 columns: x itself, and k - 2 truncated cubics that are
// linear beyond the outer knots, over the square of the outer knots' distance.
//
// Source Harrell, Regression Modeling Strategies (2001), 2.4.4 and 2.4.5
struct RestrictedSpline {
  std::vector<double> knots;  // 3 or more, ascending
  std::size_t columns() const { return knots.size() - 1; }
  bool operator==(const RestrictedSpline&) const = default;
};

// Knots at Harrell's quantiles for 3 to 7 knots; below 100 values the outer ones at the fifth
// smallest and largest.
RestrictedSpline learnRestrictedSpline(std::span<const double> x, std::size_t knots);

// Polynomials 1 .. degree, orthogonal and of unit length over the data that taught them; or plain
// powers.
//
// Source Kennedy & Gentle, Statistical Computing (1980), 343-344
struct Polynomial {
  bool raw = false;
  std::size_t degree = 1;
  std::vector<double> centre;  // alpha of the recurrence, one for each degree
  std::vector<double> norm;    // squared lengths of degrees -1 .. degree; that of -1 is 1
  std::size_t columns() const { return degree; }
  bool operator==(const Polynomial&) const = default;
};

// In   x   with more different values than the degree
Polynomial learnPolynomial(std::span<const double> x, std::size_t degree, bool raw);

// The columns of a basis at x, each of x.size() numbers.
std::vector<std::vector<double>> evaluated(const NaturalSpline& basis, std::span<const double> x);
std::vector<std::vector<double>> evaluated(const RestrictedSpline& basis,
                                           std::span<const double> x);
std::vector<std::vector<double>> evaluated(const Polynomial& basis, std::span<const double> x);

// The quantile at p that interpolates between order statistics at 1 + p (n - 1) (type 7).
double quantile(std::span<const double> sorted, double p);

}  // namespace survmeth::model

#endif  // MODEL_BASES_H_
