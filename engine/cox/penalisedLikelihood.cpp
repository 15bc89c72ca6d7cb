#include "engine/cox/penalisedLikelihood.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "engine/cox/determinant.h"
#include "numerics/cholesky.h"

namespace survmeth::engine::cox {

using numerics::Cholesky;
using numerics::NewtonPoint;
using numerics::SquareMatrix;

PenalisedLikelihood::PenalisedLikelihood(const Problem& problem, Ties ties, const Penalty& penalty,
                                         std::vector<std::size_t> active, int limit,
                                         numerics::Progress& progress)
    : problem_(problem),
      ties_(ties),
      penalty_(penalty),
      active_(std::move(active)),
      limit_(limit),
      progress_(progress),
      square_(problem.columns(), 1.0) {
  for (std::size_t j = 0; j < square_.size() && penalty.standardised; ++j) square_[j] = variance(j);
}

bool PenalisedLikelihood::at(const std::vector<double>& coefficients, NewtonPoint& point) {
  if (!evaluate(problem_, ties_, coefficients, hazards_, point)) return false;
  unpenalised_ = point.value;
  if (penalty_.kind == Penalty::Kind::kDeterminant) {
    return addDeterminant(problem_, hazards_, ties_, active_, point);
  }
  for (const std::size_t j : active_) {
    const double pull = penalty_.theta * square_[j];
    point.value -= 0.5 * pull * coefficients[j] * coefficients[j];
    point.gradient[j] -= pull * coefficients[j];
    point.information(j, j) += pull;
  }
  return true;
}
PenalisedLikelihood::Found PenalisedLikelihood::maximise(std::vector<double> start,
                                                         const std::vector<std::size_t>& free) {
  Found found;
  found.at = std::move(start);
  if (!at(found.at, found.point)) return found;
  found.unpenalised = unpenalised_;
  double previous = std::numeric_limits<double>::infinity();
  for (;; ++found.iterations) {
    progress_.at(std::min(1.0, static_cast<double>(found.iterations) / limit_));
    std::vector<double> gradient;
    for (const std::size_t j : free) gradient.push_back(found.point.gradient[j]);
    const Cholesky scoring(numerics::part(found.point.information, free), 1e-14);
    if (!scoring.fullRank()) return found;
    found.decrement = std::sqrt(scoring.quadraticForm(gradient));
    // Below that the likelihood's own rounding decides.
    if (found.decrement <= 1e-10 || (found.decrement < 1e-8 && found.decrement > 0.5 * previous)) {
      found.converged = true;
      return found;
    }
    if (found.iterations >= limit_) return found;
    std::vector<double> step = scoring.solve(gradient);
    if (penalty_.kind == Penalty::Kind::kDeterminant && found.decrement > 0.05 * previous) {
      const Cholesky second(differences(found, free), 1e-14);
      if (second.fullRank() && !second.indefinite()) step = second.solve(gradient);
    }
    previous = found.decrement;
    if (!climb(step, free, found)) return found;
  }
}

// The sample's, every row counted once.
double PenalisedLikelihood::variance(std::size_t j) const {
  const risk::Arrangement& a = problem_.arrangement;
  const auto n = static_cast<double>(a.rows());
  double sum = 0.0, squares = 0.0;
  const auto value = [&](std::size_t i) {
    return problem_.x(i, j) + (problem_.centre(a.rowStratum[i], j) - problem_.centre(0, j));
  };
  for (std::size_t i = 0; i < a.rows(); ++i) sum += value(i);
  for (std::size_t i = 0; i < a.rows(); ++i) {
    const double away = value(i) - sum / n;
    squares += away * away;
  }
  return squares / (n - 1.0);
}

// Minus the second derivatives of the penalised likelihood, from central differences.
SquareMatrix PenalisedLikelihood::differences(const Found& found,
                                              const std::vector<std::size_t>& free) {
  SquareMatrix second(free.size());
  NewtonPoint above, below;
  for (std::size_t m = 0; m < free.size(); ++m) {
    const double width = 1e-4 / std::sqrt(found.point.information(free[m], free[m]));
    std::vector<double> there = found.at;
    there[free[m]] = found.at[free[m]] + width;
    const bool isAbove = at(there, above);
    there[free[m]] = found.at[free[m]] - width;
    if (!at(there, below) || !isAbove) return SquareMatrix(free.size());
    for (std::size_t l = 0; l < free.size(); ++l) {
      second(l, m) = (below.gradient[free[l]] - above.gradient[free[l]]) / (2.0 * width);
    }
  }
  for (std::size_t m = 0; m < free.size(); ++m) {
    for (std::size_t l = 0; l < m; ++l) {
      second(m, l) = second(l, m) = 0.5 * (second(m, l) + second(l, m));
    }
  }
  return second;
}

// The longest of the step and its halves that raises the value, within its rounding.
bool PenalisedLikelihood::climb(const std::vector<double>& step,
                                const std::vector<std::size_t>& free, Found& found) {
  const double least = found.point.value - 1e-13 * (1.0 + std::fabs(found.point.value));
  NewtonPoint next;
  double length = 1.0;
  for (int halving = 0; halving <= 30; ++halving, length *= 0.5) {
    std::vector<double> there = found.at;
    for (std::size_t m = 0; m < free.size(); ++m) there[free[m]] += length * step[m];
    if (!at(there, next) || !(next.value >= least)) continue;
    found.at = std::move(there);
    found.point = std::move(next);
    found.unpenalised = unpenalised_;
    return true;
  }
  return false;
}

std::vector<std::size_t> activeOf(const Fit& fit) {
  std::vector<std::size_t> active;
  for (std::size_t j = 0; j < fit.column.size(); ++j) {
    if (fit.column[j] != Column::kAliased) active.push_back(j);
  }
  return active;
}

std::vector<std::size_t> columnsWithout(const std::vector<std::size_t>& columns,
                                        const std::vector<std::size_t>& left) {
  std::vector<std::size_t> rest;
  for (const std::size_t j : columns) {
    if (std::find(left.begin(), left.end(), j) == left.end()) rest.push_back(j);
  }
  return rest;
}

}  // namespace survmeth::engine::cox
