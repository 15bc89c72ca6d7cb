// Tied events under the discrete model: the conditional probability of the rows that failed among
// all sets of as many rows.
#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/cox/likelihood.h"
#include "numerics/elementary.h"

namespace survmeth::engine::cox {
namespace {

// The risk of a drawn row against that of one that is not, theta r : 1. Theta makes the expected
// number of rows drawn independently d, so that the sums over sets of d rows, divided by the
// product of 1 + theta r, are probabilities near the middle of their law: none over- or underflows.
// Both as logarithms.
double thetaFor(const std::vector<double>& eta, double d) {
  const auto [least, most] = std::minmax_element(eta.begin(), eta.end());
  // Odds of 1e-22 for every row, and against every row.
  double low = -*most - 50.0;
  double high = -*least + 50.0;
  std::vector<double> odds(eta.size());
  while (high - low > 1e-3) {
    const double middle = 0.5 * (low + high);
    if (middle == low || middle == high) break;
    for (std::size_t i = 0; i < eta.size(); ++i) odds[i] = -middle - eta[i];
    numerics::expArray(odds, odds);
    double expected = 0.0;
    for (const double against : odds) expected += 1.0 / (1.0 + against);
    (expected < d ? low : high) = middle;
  }
  return 0.5 * (low + high);
}

// Probability of j rows drawn so far with the first and second moments of the sum of their x.
class Draws {
 public:
  Draws(std::size_t d, std::size_t p)
      : p_(p), width_(1 + p + p * (p + 1) / 2), states_((d + 1) * width_, 0.0) {
    states_[0] = 1.0;
  }
  const double* state(std::size_t j) const { return states_.data() + j * width_; }

  // State j when the next row, of covariates x, is drawn with probability `in`, else `out`.
  void update(std::size_t j, const double* x, double in, double out) {
    double* to = states_.data() + j * width_;
    for (std::size_t m = 0; m < width_; ++m) to[m] *= out;
    if (j == 0) return;
    const double* from = to - width_;
    const double* first = from + 1;
    const double* second = first + p_;
    to[0] += in * from[0];
    double* toSecond = to + 1 + p_;
    for (std::size_t a = 0; a < p_; ++a) {
      to[1 + a] += in * (first[a] + from[0] * x[a]);
      for (std::size_t b = 0; b <= a; ++b) {
        *toSecond++ += in * (*second++ + first[a] * x[b] + x[a] * (first[b] + from[0] * x[b]));
      }
    }
  }

 private:
  std::size_t p_, width_;
  std::vector<double> states_;
};

void addTime(const Problem& problem, const Hazards& hazards, std::size_t k,
             numerics::NewtonPoint& point) {
  const risk::Arrangement& a = problem.arrangement;
  const std::size_t p = problem.columns();
  const std::size_t d = a.events[k];
  std::vector<std::uint32_t> rows = othersAtRisk(a, k);
  for (std::uint32_t i = 0; i < d; ++i) rows.push_back(a.firstEvent[k] + i);
  const std::size_t n = rows.size();
  // Logarithms of the risks.
  std::vector<double> eta(n);
  for (std::size_t i = 0; i < n; ++i) {
    eta[i] = hazards.predictor[rows[i]] - hazards.reference(problem, k);
  }

  const double logTheta = n == d ? 0.0 : thetaFor(eta, static_cast<double>(d));
  std::vector<double> in(n);
  double logNormaliser = -static_cast<double>(d) * logTheta;
  std::vector<double> mean(p, 0.0);
  for (std::size_t i = 0; i < n; ++i) {
    const double logOdds = logTheta + eta[i];
    logNormaliser += std::max(0.0, logOdds) + numerics::log1p(numerics::exp(-std::fabs(logOdds)));
    in[i] = n == d ? 1.0 : 1.0 / (1.0 + numerics::exp(-logOdds));
    for (std::size_t j = 0; j < p; ++j) mean[j] += in[i] * problem.x(rows[i], j);
  }
  for (double& value : mean) value /= static_cast<double>(d);

  double logSets = 0.0;
  if (n == d) {
    for (const double each : eta) logSets += each;
    point.value -= logSets;
    for (std::size_t j = 0; j < p; ++j) point.gradient[j] -= static_cast<double>(d) * mean[j];
    return;
  }
  Draws draws(d, p);
  std::vector<double> x(p);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < p; ++j) x[j] = problem.x(rows[i], j) - mean[j];
    const double out = 1.0 / (1.0 + numerics::exp(logTheta + eta[i]));
    // Fewer than d - (n - i - 1) drawn by now can no longer become d.
    const std::size_t least = d > n - i - 1 ? d - (n - i - 1) : 0;
    for (std::size_t j = std::min(i + 1, d) + 1; j-- > least;) {
      draws.update(j, x.data(), in[i], out);
    }
  }
  const double* state = draws.state(d);
  point.value -= numerics::log(state[0]) + logNormaliser;
  const double* second = state + 1 + p;
  for (std::size_t u = 0; u < p; ++u) {
    const double first = state[1 + u] / state[0];
    point.gradient[u] -= static_cast<double>(d) * mean[u] + first;
    for (std::size_t v = 0; v <= u; ++v, ++second) {
      const double covariance = *second / state[0] - first * (state[1 + v] / state[0]);
      point.information(u, v) += covariance;
      if (v < u) point.information(v, u) += covariance;
    }
  }
}

}  // namespace

void addDiscreteTies(const Problem& problem, const Hazards& hazards, numerics::NewtonPoint& point) {
  for (std::size_t k = 0; k < problem.arrangement.times(); ++k) {
    if (problem.arrangement.events[k] > 1) addTime(problem, hazards, k, point);
  }
}

}  // namespace survmeth::engine::cox
