#include "engine/cox/determinant.h"

#include "numerics/cholesky.h"

namespace survmeth::engine::cox {
namespace {

using numerics::SquareMatrix;

// Sums of risk times a value over the risk sets, those that fail by themselves.
struct Moments {
  std::vector<double> others, failing;
};

class Trace {
 public:
  Trace(const Problem& problem, const Hazards& hazards, Ties ties,
        std::span<const std::size_t> active, const SquareMatrix& inverse)
      : problem_(problem),
        hazards_(hazards),
        efron_(ties == Ties::kEfron),
        active_(active),
        inverse_(inverse),
        value_(problem.arrangement.rows()) {
    for (const std::size_t j : active) {
      first_.push_back(momentsOf([&](std::size_t i) { return problem.x(i, j); }));
    }
  }

  // Half the trace with the derivative by each active coefficient.
  std::vector<double> halves() {
    const std::size_t p = active_.size();
    std::vector<double> quadratic(value_.size(), 0.0);
    for (std::size_t i = 0; i < value_.size(); ++i) {
      for (std::size_t a = 0; a < p; ++a) {
        for (std::size_t b = 0; b < p; ++b) {
          quadratic[i] += inverse_(a, b) * problem_.x(i, active_[a]) * problem_.x(i, active_[b]);
        }
      }
    }
    std::vector<double> trace(p, 0.0);
    const Moments square = momentsOf([&](std::size_t i) { return quadratic[i]; });
    for (std::size_t r = 0; r < p; ++r) {
      const Moments product =
          momentsOf([&](std::size_t i) { return quadratic[i] * problem_.x(i, active_[r]); });
      forEach([&](std::size_t k, double share, double whole, double weight) {
        trace[r] += weight * (mean(product, k, share, whole) -
                              mean(square, k, share, whole) * mean(first_[r], k, share, whole));
      });
    }
    for (std::size_t a = 0; a < p; ++a) {
      for (std::size_t b = 0; b <= a; ++b) {
        const Moments product = momentsOf(
            [&](std::size_t i) { return problem_.x(i, active_[a]) * problem_.x(i, active_[b]); });
        forEach([&](std::size_t k, double share, double whole, double weight) {
          const double covariance =
              mean(product, k, share, whole) -
              mean(first_[a], k, share, whole) * mean(first_[b], k, share, whole);
          trace[b] -= 2.0 * weight * turned(a, k, share, whole) * covariance;
          if (b < a) trace[a] -= 2.0 * weight * turned(b, k, share, whole) * covariance;
        });
      }
    }
    for (double& each : trace) each *= 0.5;
    return trace;
  }

 private:
  template <typename Value>
  Moments momentsOf(const Value& value) {
    for (std::size_t i = 0; i < value_.size(); ++i) value_[i] = hazards_.risk[i] * value(i);
    const std::size_t times = problem_.arrangement.times();
    Moments made{std::vector<double>(times), std::vector<double>(times)};
    problem_.sums.overRiskSets(value_, made.others, made.failing, hazards_.scales);
    return made;
  }

  static double mean(const Moments& moments, std::size_t k, double share, double whole) {
    return (moments.others[k] + share * moments.failing[k]) / whole;
  }
  // Element `a` of V xbar.
  double turned(std::size_t a, std::size_t k, double share, double whole) const {
    double sum = 0.0;
    for (std::size_t b = 0; b < active_.size(); ++b) {
      sum += inverse_(a, b) * mean(first_[b], k, share, whole);
    }
    return sum;
  }

  // Calls work(k, share of the failing rows' risk, sum of risks, weight) for each term of each time.
  template <typename Work>
  void forEach(const Work& work) const {
    const risk::Arrangement& a = problem_.arrangement;
    for (std::size_t k = 0; k < a.times(); ++k) {
      const std::size_t terms = efron_ ? a.events[k] : 1;
      for (std::size_t l = 0; l < terms; ++l) {
        const double share = 1.0 - static_cast<double>(l) / static_cast<double>(terms);
        work(k, share, hazards_.others[k] + share * hazards_.failing[k],
             a.eventWeight[k] / static_cast<double>(terms));
      }
    }
  }

  const Problem& problem_;
  const Hazards& hazards_;
  bool efron_;
  std::span<const std::size_t> active_;
  const SquareMatrix& inverse_;
  std::vector<double> value_;
  std::vector<Moments> first_;  // of each active column
};

}  // namespace

bool addDeterminant(const Problem& problem, const Hazards& hazards, Ties ties,
                    std::span<const std::size_t> active, numerics::NewtonPoint& point) {
  const numerics::Cholesky factor(numerics::part(point.information, active), 1e-14);
  if (!factor.fullRank()) return false;
  const SquareMatrix inverse = factor.inverse();
  const std::vector<double> halves = Trace(problem, hazards, ties, active, inverse).halves();
  point.value += 0.5 * factor.logDeterminant();
  for (std::size_t a = 0; a < active.size(); ++a) point.gradient[active[a]] += halves[a];
  return true;
}

}  // namespace survmeth::engine::cox
