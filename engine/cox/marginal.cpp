// Tied events under the exact marginal likelihood: the probability that the rows that failed come
// before all others at risk, in whichever order among themselves.
//
// Source DeLong, Guirguis & So, Biometrika 81 (1994) 607-611: with risks r_i of the failing rows
// and S of the others together it is the integral over u > 0 of S exp(-S u) prod (1 - exp(-r_i u)).
#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/cox/likelihood.h"
#include "numerics/elementary.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::cox {
namespace {

// The logarithm g of the integrand in y = log u, a concave function: its value, and of each row
// a = z / (e^z - 1), z = r u, the derivative of log(1 - e^-z) in log r. Risks are those against S,
// which is 1.
struct Integrand {
  const std::vector<double>& risk;

  double value(double y) const {
    const double u = numerics::exp(y);
    double g = y - u;
    for (const double r : risk) g += numerics::log(-numerics::expm1(-r * u));
    return g;
  }
  static double share(double z) { return z == 0.0 ? 1.0 : z / numerics::expm1(z); }
  double slope(double y) const {
    const double u = numerics::exp(y);
    double sum = 1.0 - u;
    for (const double r : risk) sum += share(r * u);
    return sum;
  }
  double curvature(double y) const {
    const double u = numerics::exp(y);
    double sum = u;
    for (const double r : risk) {
      const double a = share(r * u);
      sum -= a * (1.0 - r * u - a);
    }
    return sum;
  }
};

double modeOf(const Integrand& integrand) {
  // The slope is positive at u = 1 and negative at u = d + 1.
  double low = 0.0;
  double high = numerics::log(static_cast<double>(integrand.risk.size()) + 1.0);
  for (int step = 0; step < 40; ++step) {
    const double middle = 0.5 * (low + high);
    (integrand.slope(middle) > 0.0 ? low : high) = middle;
  }
  return 0.5 * (low + high);
}

// Sums over the points of a trapezoidal rule: the integrand is analytic and falls off at both
// ends, where the rule converges exponentially.
class Integral {
 public:
  Integral(const Integrand& integrand, const std::vector<std::vector<double>>& x, std::size_t p)
      : integrand_(integrand),
        x_(x),
        p_(p),
        share_(x.size(), 0.0),
        bend_(x.size(), 0.0),
        first_(p, 0.0),
        outer_(p) {
    const double mode = modeOf(integrand);
    peak_ = integrand.value(mode);
    // exp(-2 pi (pi / 2) / h) and, for a normal density, exp(-2 (pi sigma / h)^2) are below 1e-20.
    step_ = std::min(0.2, 0.4 / std::sqrt(integrand.curvature(mode)));
    add(mode);
    for (std::size_t m = 1; add(mode + static_cast<double>(m) * step_); ++m) continue;
    for (std::size_t m = 1; add(mode - static_cast<double>(m) * step_); ++m) continue;
  }

  double logValue() const { return peak_ + numerics::log(step_ * total_); }
  double share(std::size_t i) const { return share_[i] / total_; }
  double bend(std::size_t i) const { return bend_[i] / total_; }
  double beyond() const { return beyond_ / total_; }
  double first(std::size_t u) const { return first_[u] / total_; }
  double variance(std::size_t u, std::size_t v) const {
    return outer_(u, v) / total_ - first(u) * first(v);
  }

 private:
  bool add(double y) {
    const double density = numerics::exp(integrand_.value(y) - peak_);
    if (density < 1e-22) return false;
    const double u = numerics::exp(y);
    total_ += density;
    beyond_ += density * (1.0 - u);
    std::vector<double> sum(p_, 0.0);
    for (std::size_t i = 0; i < x_.size(); ++i) {
      const double z = integrand_.risk[i] * u;
      const double a = Integrand::share(z);
      share_[i] += density * a;
      bend_[i] += density * (a * (1.0 - z - a));
      for (std::size_t j = 0; j < p_; ++j) sum[j] += a * x_[i][j];
    }
    for (std::size_t j = 0; j < p_; ++j) {
      first_[j] += density * sum[j];
      for (std::size_t k = 0; k <= j; ++k) outer_(j, k) += density * sum[j] * sum[k];
    }
    return true;
  }

  const Integrand& integrand_;
  const std::vector<std::vector<double>>& x_;
  std::size_t p_;
  double peak_ = 0.0, step_ = 0.0, total_ = 0.0, beyond_ = 0.0;
  std::vector<double> share_, bend_, first_;
  numerics::SquareMatrix outer_;
};

constexpr double kSure = 300.0;

// The rows at risk that do not fail: the logarithm of their risk and each one's share of it.
struct Others {
  Others(const Hazards& hazards, const std::vector<std::uint32_t>& rows) : share(rows.size()) {
    for (std::size_t m = 0; m < rows.size(); ++m) share[m] = hazards.predictor[rows[m]];
    const double most = *std::max_element(share.begin(), share.end());
    for (double& each : share) each -= most;
    numerics::expArray(share, share);
    numerics::RunningSum sum;
    for (const double each : share) sum.add(each);
    for (double& each : share) each /= sum.value();
    log = most + numerics::log(sum.value());
  }
  std::vector<double> share;
  double log = 0.0;
};

void addTime(const Problem& problem, const Hazards& hazards, std::size_t k,
             numerics::NewtonPoint& point) {
  const risk::Arrangement& a = problem.arrangement;
  const std::size_t p = problem.columns();
  const std::size_t d = a.events[k];
  const std::uint32_t from = a.firstEvent[k];
  // The rows' predictors and covariates are in the point as if they were ordinary events.
  for (std::size_t i = 0; i < d; ++i) {
    point.value -= hazards.predictor[from + i] - hazards.reference(problem, k);
    for (std::size_t j = 0; j < p; ++j) point.gradient[j] -= problem.x(from + i, j);
  }
  const std::vector<std::uint32_t> rows = othersAtRisk(a, k);
  if (rows.empty()) return;

  // Covariates are taken from the others' mean, which changes nothing: the others' first moment is
  // then 0 and their second one their covariance.
  const Others others(hazards, rows);
  std::vector<double> mean(p, 0.0);
  for (std::size_t m = 0; m < rows.size(); ++m) {
    for (std::size_t j = 0; j < p; ++j) mean[j] += others.share[m] * problem.x(rows[m], j);
  }
  numerics::SquareMatrix covariance(p);
  std::vector<double> away(p);
  for (std::size_t r = 0; r < rows.size(); ++r) {
    for (std::size_t j = 0; j < p; ++j) {
      away[j] = problem.x(rows[r], j) - mean[j];
      for (std::size_t m = 0; m <= j; ++m) covariance(j, m) += others.share[r] * away[j] * away[m];
    }
  }
  std::vector<double> risk(d);
  std::vector<std::vector<double>> x(d, std::vector<double>(p));
  for (std::size_t i = 0; i < d; ++i) {
    // Against the others' risk. Beyond 1e130 of it a row fails first as good as surely, below 1e-130
    // the probability is its share of the risk times what it would be with any such share.
    const double eta = hazards.predictor[from + i] - others.log;
    const double bounded = std::clamp(eta, -kSure, kSure);
    risk[i] = numerics::exp(bounded);
    if (eta < bounded) point.value += eta - bounded;
    for (std::size_t j = 0; j < p; ++j) x[i][j] = problem.x(from + i, j) - mean[j];
  }
  const Integrand integrand{risk};
  const Integral integral(integrand, x, p);
  point.value += integral.logValue();
  for (std::size_t j = 0; j < p; ++j) {
    point.gradient[j] += integral.first(j);
    for (std::size_t m = 0; m <= j; ++m) {
      double second = integral.beyond() * covariance(j, m) + integral.variance(j, m);
      for (std::size_t i = 0; i < d; ++i) second += integral.bend(i) * x[i][j] * x[i][m];
      point.information(j, m) -= second;
      if (m < j) point.information(m, j) -= second;
    }
  }
}

}  // namespace

void addMarginalTies(const Problem& problem, const Hazards& hazards, numerics::NewtonPoint& point) {
  for (std::size_t k = 0; k < problem.arrangement.times(); ++k) {
    if (problem.arrangement.events[k] > 1) addTime(problem, hazards, k, point);
  }
}

}  // namespace survmeth::engine::cox
