// Weighted least squares by Householder reflections.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "Klikro/utilities.h"

namespace {

double norm(const double* x, std::size_t n) {
  double squares = 0.0;
  for (std::size_t i = 0; i < n; ++i) squares += x[i] * x[i];
  return std::sqrt(squares);
}

// Brings the largest of x's magnitudes into [1/2, 1), so that no sum of squares leaves the range of
// a double, and returns the exponent of two that was taken out. That changes no other bit.
int takeOutExponent(std::vector<double>& x) {
  double largest = 0.0;
  for (const double value : x) largest = std::max(largest, std::fabs(value));
  if (!std::isfinite(largest)) return 0;
  int exponent = 0;
  std::frexp(largest, &exponent);
  exponent = std::clamp(exponent, -1000, 1000);  // within the powers of two that a double holds
  const double factor = std::ldexp(1.0, -exponent);
  for (double& value : x) value *= factor;
  return exponent;
}

// x -= 2 v (v'x) / (v'v), both of length n.
void reflect(const double* v, double vv, double* x, std::size_t n) {
  double product = 0.0;
  for (std::size_t i = 0; i < n; ++i) product += v[i] * x[i];
  const double factor = 2.0 * product / vv;
  for (std::size_t i = 0; i < n; ++i) x[i] -= factor * v[i];
}

}  // namespace

void OLSBasic(int n, int p, matrix* X, matrix* y, matrix* w, int, short, short noIntercept,
              double tolerance, matrix* coefficients, matrix* residuals) {
  const std::size_t rows = n > 0 ? static_cast<std::size_t>(n) : 0;
  const int designCols = p + (noIntercept == kTrue ? 0 : 1);
  const auto design = [&](int i, int j) { return j <= p ? X->vbget(i, j) : 1.0; };

  std::vector<double> root(rows);
  std::vector<double> response(rows);
  for (std::size_t i = 0; i < rows; ++i) {
    root[i] = std::sqrt(w->vbget(static_cast<int>(i) + 1, 1));
    response[i] = y->vbget(static_cast<int>(i) + 1, 1);
  }
  takeOutExponent(root);  // it divides both sides of the equations
  const int responseExponent = takeOutExponent(response);
  for (std::size_t i = 0; i < rows; ++i) response[i] *= root[i];

  // Columns one after the other, each reduced by the reflections of those kept before it:
  // `triangle` holds the kept columns of R, `kept` which columns they are.
  std::vector<std::vector<double>> reflections;
  std::vector<double> squaredNorms;
  std::vector<std::vector<double>> triangle;
  std::vector<int> kept;
  std::vector<int> exponents;
  for (int j = 1; j <= designCols && kept.size() < rows; ++j) {
    std::vector<double> column(rows);
    for (std::size_t i = 0; i < rows; ++i) column[i] = design(static_cast<int>(i) + 1, j);
    const int exponent = takeOutExponent(column);
    for (std::size_t i = 0; i < rows; ++i) column[i] *= root[i];
    const double whole = norm(column.data(), rows);
    for (std::size_t r = 0; r < kept.size(); ++r) {
      reflect(reflections[r].data(), squaredNorms[r], column.data() + r, rows - r);
    }
    const std::size_t at = kept.size();
    const double independent = norm(column.data() + at, rows - at);
    if (!(independent > tolerance * whole)) continue;

    std::vector<double> v(column.begin() + static_cast<std::ptrdiff_t>(at), column.end());
    const double diagonal = v[0] > 0.0 ? -independent : independent;  // no cancellation in v[0]
    v[0] -= diagonal;
    double vv = 0.0;
    for (const double element : v) vv += element * element;
    reflect(v.data(), vv, response.data() + at, rows - at);
    column.resize(at);
    column.push_back(diagonal);
    triangle.push_back(std::move(column));
    reflections.push_back(std::move(v));
    squaredNorms.push_back(vv);
    kept.push_back(j);
    exponents.push_back(exponent);
  }

  for (int j = 1; j <= p + 1; ++j) coefficients->vbset(j, 1, 0.0);
  std::vector<double> solution(kept.size());
  for (std::size_t k = kept.size(); k-- > 0;) {
    double value = response[k];
    for (std::size_t l = k + 1; l < kept.size(); ++l) value -= triangle[l][k] * solution[l];
    solution[k] = value / triangle[k][k];
  }
  for (std::size_t k = 0; k < kept.size(); ++k) {
    solution[k] = std::ldexp(solution[k], responseExponent - exponents[k]);
    coefficients->vbset(kept[k], 1, solution[k]);
  }
  for (int i = 1; i <= n; ++i) {
    double fit = 0.0;
    for (std::size_t k = 0; k < kept.size(); ++k) fit += design(i, kept[k]) * solution[k];
    residuals->vbset(i, 1, y->vbget(i, 1) - fit);
  }
}
