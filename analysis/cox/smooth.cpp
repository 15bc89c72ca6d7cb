#include "analysis/cox/smooth.h"

#include <algorithm>
#include <cmath>

#include "model/bases.h"
#include "numerics/cholesky.h"

namespace survmeth::analysis {
namespace {

using Columns = std::vector<std::vector<double>>;

Columns withConstant(Columns columns, std::size_t rows) {
  columns.insert(columns.begin(), std::vector<double>(rows, 1.0));
  return columns;
}

}  // namespace

Smooth smoothOf(std::span<const double> x, std::span<const double> y, double variance, double z,
                std::size_t places) {
  constexpr std::size_t kColumns = 3;  // beside the constant
  Smooth smooth;
  if (x.empty()) return smooth;
  const auto [least, most] = std::minmax_element(x.begin(), x.end());
  const std::vector<double> knots = model::naturalKnots(x, kColumns);
  double before = *least;
  for (const double knot : knots) {
    if (!(knot > before)) return smooth;
    before = knot;
  }
  if (!(*most > before)) return smooth;
  const model::NaturalSpline spline = model::naturalSplineAt(x, knots);
  const Columns at = withConstant(model::evaluated(spline, x), x.size());
  const std::size_t p = at.size();
  numerics::SquareMatrix products(p);
  std::vector<double> right(p);
  for (std::size_t i = 0; i < p; ++i) {
    for (std::size_t j = 0; j < p; ++j) products(i, j) = numerics::dot(at[i], at[j]);
    right[i] = numerics::dot(at[i], y);
  }
  const numerics::Cholesky factor(products);
  if (!factor.fullRank()) return smooth;
  const std::vector<double> b = factor.solve(right);
  for (std::size_t k = 0; k < places; ++k) {
    const double share = static_cast<double>(k) / static_cast<double>(places - 1);
    smooth.x.push_back(k + 1 == places ? *most : *least + share * (*most - *least));
  }
  const Columns shown = withConstant(model::evaluated(spline, smooth.x), places);
  std::vector<double> row(p);
  for (std::size_t k = 0; k < places; ++k) {
    for (std::size_t j = 0; j < p; ++j) row[j] = shown[j][k];
    const double fit = numerics::dot(row, b);
    const double half = z * std::sqrt(variance * factor.quadraticForm(row));
    smooth.fit.push_back(fit);
    smooth.lower.push_back(fit - half);
    smooth.upper.push_back(fit + half);
  }
  return smooth;
}

}  // namespace survmeth::analysis
