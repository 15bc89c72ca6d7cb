#include "model/bases.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace survmeth::model {
namespace {

constexpr std::size_t kOrder = 4;  // of cubic splines

std::vector<double> sorted(std::span<const double> x) {
  std::vector<double> order(x.begin(), x.end());
  std::sort(order.begin(), order.end());
  return order;
}

// The knots with the boundary ones four times each.
std::vector<double> allKnots(const NaturalSpline& basis) {
  std::vector<double> knots(kOrder, basis.low);
  knots.insert(knots.end(), basis.knots.begin(), basis.knots.end());
  knots.insert(knots.end(), kOrder, basis.high);
  return knots;
}

// B-splines of `order` (1 .. 4) that do not vanish at x, by Cox and de Boor's recurrence: those of
// index first .. first + order - 1, x in [knots[interval], knots[interval + 1]).
std::array<double, kOrder> bSplines(const std::vector<double>& knots, std::size_t interval,
                                    std::size_t order, double x) {
  std::array<double, kOrder> values{1, 0, 0, 0};
  for (std::size_t k = 1; k < order; ++k) {
    double saved = 0;
    for (std::size_t j = 0; j < k; ++j) {
      const double right = knots[interval + j + 1], left = knots[interval + j + 1 - k];
      const double share = values[j] / (right - left);
      values[j] = saved + (right - x) * share;
      saved = (x - left) * share;
    }
    values[k] = saved;
  }
  return values;
}

// The interval of x among the inner intervals; x at the upper boundary is in the last.
std::size_t intervalOf(const std::vector<double>& knots, double x) {
  const std::size_t last = knots.size() - kOrder - 1;
  const auto after = std::upper_bound(knots.begin() + kOrder, knots.begin() + last + 1, x);
  return static_cast<std::size_t>(after - knots.begin()) - 1;
}

// Derivatives 0, 1 or 2 of all cubic B-splines but the first, at one x within the boundary.
// Differentiation lowers the order: B' = (k - 1) (B_left / width - B_right / width).
std::vector<double> splineRow(const std::vector<double>& knots, double x, std::size_t derivative) {
  const std::size_t count = knots.size() - kOrder;
  const std::size_t interval = intervalOf(knots, x);
  const std::size_t lowest = kOrder - derivative;
  const std::array<double, kOrder> low = bSplines(knots, interval, lowest, x);
  // Coefficients over the B-splines of the present order, index interval - order + 1 first.
  std::vector<double> row(count + derivative, 0.0);
  for (std::size_t j = 0; j < lowest; ++j) row[interval + 1 - lowest + j] = low[j];
  for (std::size_t order = lowest + 1; order <= kOrder; ++order) {
    std::vector<double> next(row.size(), 0.0);
    const double factor = static_cast<double>(order - 1);
    for (std::size_t i = 0; i + order < knots.size(); ++i) {
      const double left = knots[i + order - 1] - knots[i], right = knots[i + order] - knots[i + 1];
      double value = 0;
      if (left > 0) value += row[i] / left;
      if (right > 0 && i + 1 < row.size()) value -= row[i + 1] / right;
      next[i] = factor * value;
    }
    row = std::move(next);
  }
  return {row.begin() + 1, row.begin() + static_cast<std::ptrdiff_t>(count)};
}

double dot(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
  return sum;
}

// The vector of Householder's reflection that takes x to a multiple of the unit vector `at`, with
// the sign that does not cancel.
std::vector<double> householder(std::vector<double> x, std::size_t at) {
  std::fill(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(at), 0.0);
  const double length = std::sqrt(dot(x, x));
  x[at] += x[at] < 0 ? -length : length;
  return x;
}

void reflect(const std::vector<double>& direction, std::vector<double>& x) {
  const double square = dot(direction, direction);
  if (square == 0) return;
  const double factor = 2 * dot(direction, x) / square;
  for (std::size_t i = 0; i < x.size(); ++i) x[i] -= factor * direction[i];
}

double truncatedCube(double x) { return x <= 0 ? 0 : x * x * x; }  // missing stays missing

}  // namespace

double quantile(std::span<const double> sorted, double p) {
  const double at = p * static_cast<double>(sorted.size() - 1);
  const double low = std::floor(at);
  const auto i = static_cast<std::size_t>(low);
  if (i + 1 >= sorted.size()) return sorted.back();
  const double share = at - low;
  return share == 0 ? sorted[i] : (1 - share) * sorted[i] + share * sorted[i + 1];
}

NaturalSpline naturalSplineAt(std::span<const double> x, std::vector<double> knots) {
  NaturalSpline basis;
  const auto [low, high] = std::minmax_element(x.begin(), x.end());
  basis.low = *low;
  basis.high = *high;
  basis.knots = std::move(knots);
  const std::vector<double> all = allKnots(basis);
  std::vector<double> first = splineRow(all, basis.low, 2);
  std::vector<double> second = splineRow(all, basis.high, 2);
  const std::vector<double> one = householder(first, 0);
  reflect(one, second);
  const std::vector<double> two = householder(second, 1);
  // Columns 3, 4, ... of the product of both reflections span the space of the conditions.
  for (std::size_t j = 2; j < first.size(); ++j) {
    std::vector<double> unit(first.size(), 0.0);
    unit[j] = 1;
    reflect(two, unit);
    reflect(one, unit);
    basis.null.push_back(std::move(unit));
  }
  return basis;
}

std::vector<double> naturalKnots(std::span<const double> x, std::size_t df) {
  const std::vector<double> order = sorted(x);
  std::vector<double> knots;
  for (std::size_t i = 1; i < df; ++i) {
    knots.push_back(quantile(order, static_cast<double>(i) / static_cast<double>(df)));
  }
  return knots;
}

std::vector<std::vector<double>> evaluated(const NaturalSpline& basis, std::span<const double> x) {
  const std::vector<double> all = allKnots(basis);
  std::vector<std::vector<double>> columns(basis.columns(), std::vector<double>(x.size()));
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double inside = std::clamp(x[i], basis.low, basis.high);
    std::vector<double> row = splineRow(all, inside, 0);
    if (x[i] != inside) {
      const std::vector<double> slope = splineRow(all, inside, 1);
      for (std::size_t j = 0; j < row.size(); ++j) row[j] += (x[i] - inside) * slope[j];
    }
    for (std::size_t j = 0; j < columns.size(); ++j) columns[j][i] = dot(basis.null[j], row);
  }
  return columns;
}

RestrictedSpline learnRestrictedSpline(std::span<const double> x, std::size_t knots) {
  // Harrell's table 2.3, whose seven are equally spaced.
  static const std::vector<std::vector<double>> kQuantiles = {
      {.10, .5, .90},
      {.05, .35, .65, .95},
      {.05, .275, .5, .725, .95},
      {.05, .23, .41, .59, .77, .95},
      {.025, .025 + .95 / 6, .025 + 1.9 / 6, .5, .975 - 1.9 / 6, .975 - .95 / 6, .975}};
  const std::vector<double> order = sorted(x);
  RestrictedSpline basis;
  for (const double p : kQuantiles[knots - 3]) basis.knots.push_back(quantile(order, p));
  constexpr std::size_t kFew = 100, kFifth = 5;
  if (order.size() < kFew && order.size() >= kFifth) {
    basis.knots.front() = order[kFifth - 1];
    basis.knots.back() = order[order.size() - kFifth];
  }
  return basis;
}

std::vector<std::vector<double>> evaluated(const RestrictedSpline& basis,
                                           std::span<const double> x) {
  const std::vector<double>& t = basis.knots;
  const std::size_t k = t.size();
  const double last = t[k - 1], before = t[k - 2];
  const double scale = (last - t[0]) * (last - t[0]);
  std::vector<std::vector<double>> columns;
  columns.emplace_back(x.begin(), x.end());
  for (std::size_t j = 0; j + 2 < k; ++j) {
    std::vector<double> column(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
      column[i] = (truncatedCube(x[i] - t[j]) + ((before - t[j]) * truncatedCube(x[i] - last) -
                                                 (last - t[j]) * truncatedCube(x[i] - before)) /
                                                    (last - before)) /
                  scale;
    }
    columns.push_back(std::move(column));
  }
  return columns;
}

Polynomial learnPolynomial(std::span<const double> x, std::size_t degree, bool raw) {
  Polynomial basis;
  basis.raw = raw;
  basis.degree = degree;
  if (raw) return basis;
  const auto n = static_cast<double>(x.size());
  std::vector<double> before(x.size(), 0.0), present(x.size(), 1.0);
  basis.norm = {1, n};
  for (std::size_t k = 0; k < degree; ++k) {
    double sum = 0;
    for (std::size_t i = 0; i < x.size(); ++i) sum += x[i] * present[i] * present[i];
    const double centre = sum / basis.norm[k + 1];
    const double ratio = k == 0 ? 0 : basis.norm[k + 1] / basis.norm[k];
    double square = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
      const double next = (x[i] - centre) * present[i] - ratio * before[i];
      before[i] = present[i];
      present[i] = next;
      square += next * next;
    }
    basis.centre.push_back(centre);
    basis.norm.push_back(square);
  }
  return basis;
}

std::vector<std::vector<double>> evaluated(const Polynomial& basis, std::span<const double> x) {
  std::vector<std::vector<double>> columns;
  std::vector<double> before(x.size(), 0.0), present(x.size(), 1.0);
  for (std::size_t k = 0; k < basis.degree; ++k) {
    const double centre = basis.raw ? 0 : basis.centre[k];
    const double ratio = basis.raw || k == 0 ? 0 : basis.norm[k + 1] / basis.norm[k];
    const double length = basis.raw ? 1 : std::sqrt(basis.norm[k + 2]);
    std::vector<double> column(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
      const double next = (x[i] - centre) * present[i] - ratio * before[i];
      before[i] = present[i];
      present[i] = next;
      column[i] = next / length;
    }
    columns.push_back(std::move(column));
  }
  return columns;
}

}  // namespace survmeth::model
