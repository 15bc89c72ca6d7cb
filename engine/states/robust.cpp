#include "engine/states/robust.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "numerics/sizes.h"
#include "numerics/squareMatrix.h"

namespace survmeth::engine::states {
namespace {

using numerics::product;
using numerics::SquareMatrix;

// The order of places by a number below `count`, those of one number in their order.
template <class Of>
std::vector<std::uint32_t> ordered(std::size_t places, std::size_t count, const Of& of) {
  std::vector<std::uint32_t> next(count + 1, 0), result(places);
  for (std::size_t i = 0; i < places; ++i) ++next[of(i) + 1];
  for (std::size_t i = 0; i < count; ++i) next[i + 1] += next[i];
  for (std::size_t i = 0; i < places; ++i) result[next[of(i)]++] = static_cast<std::uint32_t>(i);
  return result;
}

}  // namespace

// Sums over the clusters: squares of influences, products of influences with weights at risk in
// each state (rows), and of these weights.
struct Robust::Moments {
  explicit Moments(std::size_t k) : uu(k), yu(k), yy(k), rows(k, 0) {}

  void step(Path& path, std::size_t s) {
    const std::size_t k = uu.size();
    for (std::size_t j = 0; j < k; ++j) path.apply(s, &uu(0, j), k, &yu(0, j), k);
    for (std::size_t h = 0; h < k; ++h) path.apply(s, &yu(h, 0), 1, &yy(h, 0), 1);
    for (std::size_t i = 0; i < k; ++i) path.apply(s, &uu(i, 0), 1, &yu(0, i), k);
  }
  // A cluster's influence changes by d.
  void change(const double* u, const double* y, const std::vector<double>& d) {
    const std::size_t k = uu.size();
    for (std::size_t i = 0; i < k; ++i) {
      for (std::size_t j = 0; j < k; ++j) {
        uu(i, j) += u[i] * d[j] + d[i] * u[j] + d[i] * d[j];
        yu(i, j) += y[i] * d[j];
      }
    }
  }
  // A row of the cluster comes to be at risk in a state, or leaves.
  void atRisk(const double* u, double* y, std::uint32_t state, double weight, int by) {
    const std::size_t k = uu.size();
    for (std::size_t j = 0; j < k; ++j) {
      yu(state, j) += weight * u[j];
      yy(state, j) += weight * y[j];
      yy(j, state) += weight * y[j];
    }
    yy(state, state) += weight * weight;
    y[state] += weight;
    rows[state] += static_cast<std::size_t>(by);
    if (rows[state] > 0) return;
    for (std::size_t j = 0; j < k; ++j) yu(state, j) = yy(state, j) = yy(j, state) = 0.0;
  }
  // Influences on all states sum to 0: of a state that most are in the others have it better.
  double variance(std::size_t state, double probability) const {
    if (probability <= 0.5) return std::max(uu(state, state), 0.0);
    double sum = 0.0;
    for (std::size_t i = 0; i < uu.size(); ++i) {
      for (std::size_t j = 0; j < uu.size(); ++j) {
        if (i != state && j != state) sum += uu(i, j);
      }
    }
    return std::max(sum, 0.0);
  }

  SquareMatrix uu, yu, yy;
  std::vector<std::size_t> rows;  // at risk in each state
};

Robust::Robust(const Histories& histories, const Options& options, const Estimates& estimates,
               Path& path)
    : h_(histories), time_(estimates.time), startTime_(options.start), path_(path) {
  if (options.initial.empty()) start_ = estimates.initial;
  clusterOf_.resize(h_.rows());
  if (!h_.cluster.empty()) {
    clusters_ = h_.clusters;
    std::copy(h_.cluster.begin(), h_.cluster.end(), clusterOf_.begin());
  } else if (!h_.subject.empty()) {
    clusters_ = h_.subjects;
    std::copy(h_.subject.begin(), h_.subject.end(), clusterOf_.begin());
  } else {
    clusters_ = h_.rows();
    std::iota(clusterOf_.begin(), clusterOf_.end(), 0u);
  }
  const auto stepsUntil = [&](double time) {
    return static_cast<std::uint32_t>(std::upper_bound(time_.begin(), time_.end(), time) -
                                      time_.begin());
  };
  std::vector<Stay> stays;
  for (std::uint32_t row = 0; row < h_.rows(); ++row) {
    if (!(weightOf(row) > 0.0)) continue;
    const std::uint32_t first = stepsUntil(h_.entry[row]);
    const std::uint32_t end = stepsUntil(h_.exit[row]);
    if (first < end) stays.push_back({row, clusterOf_[row], first, end - 1});
  }
  const std::size_t steps = time_.size();
  for (const std::uint32_t i :
       ordered(stays.size(), steps, [&](std::size_t at) { return stays[at].last; })) {
    stays_.push_back(stays[i]);
  }
  byFirst_ = ordered(stays_.size(), steps, [&](std::size_t at) { return stays_[at].first; });
}

double Robust::weightOf(std::uint32_t row) const {
  return h_.weight.empty() ? 1.0 : h_.weight[row];
}

bool Robust::jumps(const Stay& stay) const {
  return h_.to[stay.row] != kNowhere && h_.exit[stay.row] == time_[stay.last];
}

double Robust::push(const Stay& stay) const {
  return weightOf(stay.row) * path_.left(stay.last, h_.from[stay.row]).push;
}

// Of each cluster on the probabilities at the start.
std::vector<double> Robust::initial() const {
  const std::size_t k = h_.states;
  std::vector<double> influence(product(clusters_, k), 0.0);
  if (start_.empty()) return influence;
  const auto atStart = [&](std::uint32_t row) {
    return h_.entry[row] <= startTime_ && startTime_ < h_.exit[row];
  };
  double all = 0.0;
  for (std::uint32_t row = 0; row < h_.rows(); ++row) all += atStart(row) ? weightOf(row) : 0.0;
  for (std::uint32_t row = 0; row < h_.rows(); ++row) {
    if (!atStart(row)) continue;
    double* of = &influence[clusterOf_[row] * k];
    const double share = weightOf(row) / all;
    for (std::size_t j = 0; j < k; ++j) of[j] -= share * start_[j];
    of[h_.from[row]] += share;
  }
  return influence;
}

void Robust::setVariances(Estimates& estimates) {
  const std::size_t k = h_.states;
  path_.summarise();
  std::vector<double> u = initial();
  std::vector<double> y(product(clusters_, k), 0.0);
  std::vector<std::size_t> until(clusters_, 0);  // steps that u has taken
  Moments moments(k);
  std::vector<double> change(k, 0.0);
  const std::vector<double> none(k, 0.0);
  for (std::size_t c = 0; c < clusters_; ++c) {
    std::copy_n(&u[c * k], k, change.begin());
    moments.change(none.data(), none.data(), change);
  }
  const auto advance = [&](std::uint32_t cluster, std::size_t to) {
    path_.advance(until[cluster], to, &u[cluster * k], &y[cluster * k]);
    until[cluster] = to;
  };
  std::size_t coming = 0, jumping = 0, going = 0;
  for (std::size_t s = 0; s < time_.size(); ++s) {
    for (; coming < byFirst_.size() && stays_[byFirst_[coming]].first == s; ++coming) {
      const Stay& stay = stays_[byFirst_[coming]];
      advance(stay.cluster, s);
      moments.atRisk(&u[stay.cluster * k], &y[stay.cluster * k], h_.from[stay.row],
                     weightOf(stay.row), 1);
    }
    moments.step(path_, s);
    for (; jumping < stays_.size() && stays_[jumping].last == s; ++jumping) {
      const Stay& stay = stays_[jumping];
      advance(stay.cluster, s + 1);
      if (!jumps(stay)) continue;
      change.assign(k, 0.0);
      change[h_.to[stay.row]] = push(stay);
      change[h_.from[stay.row]] = -push(stay);
      moments.change(&u[stay.cluster * k], &y[stay.cluster * k], change);
      for (std::size_t j = 0; j < k; ++j) u[stay.cluster * k + j] += change[j];
    }
    for (std::size_t j = 0; j < k; ++j) {
      State& state = estimates.states[j];
      state.variance[s] = moments.variance(j, state.probability[s]);
    }
    for (; going < jumping; ++going) {
      const Stay& stay = stays_[going];
      moments.atRisk(&u[stay.cluster * k], &y[stay.cluster * k], h_.from[stay.row],
                     -weightOf(stay.row), -1);
    }
  }
}

void Robust::setStayErrors(double horizon, Estimates& estimates) {
  const std::size_t k = h_.states;
  const auto steps = static_cast<std::size_t>(
      std::upper_bound(time_.begin(), time_.end(), horizon) - time_.begin());
  std::vector<double> influence(product(clusters_, k), 0.0);
  // Of a change of the probability of a state (rows) after a step on the times in states, and of
  // the weight at risk in a state at all later steps.
  std::vector<double> answer(product(k, k), 0.0), drift(product(k, k), 0.0);
  const auto add = [&](const Stay& stay, const std::vector<double>& by, std::uint32_t state,
                       double weight) {
    for (std::size_t j = 0; j < k; ++j) {
      influence[stay.cluster * k + j] += weight * by[state * k + j];
    }
  };
  const auto wait = [&](double length) {
    for (std::size_t j = 0; j < k; ++j) answer[j * k + j] += length;
  };
  std::size_t going = stays_.size();
  std::size_t coming = byFirst_.size();
  double behind = horizon;
  for (std::size_t s = steps; s-- > 0;) {
    wait(behind - time_[s]);
    behind = time_[s];
    for (; going > 0 && stays_[going - 1].last >= s; --going) {
      const Stay& stay = stays_[going - 1];
      if (stay.last > s) continue;  // beyond the horizon: nothing of it has been counted yet
      add(stay, drift, h_.from[stay.row], weightOf(stay.row));
      if (!jumps(stay)) continue;
      add(stay, answer, h_.to[stay.row], push(stay));
      add(stay, answer, h_.from[stay.row], -push(stay));
    }
    path_.pullBack(s, answer, drift);
    for (; coming > 0 && stays_[byFirst_[coming - 1]].first >= s; --coming) {
      const Stay& stay = stays_[byFirst_[coming - 1]];
      if (stay.first > s) continue;
      add(stay, drift, h_.from[stay.row], -weightOf(stay.row));
    }
  }
  wait(behind - startTime_);
  const std::vector<double> first = initial();
  std::vector<double> variance(k, 0.0);
  for (std::size_t c = 0; c < clusters_; ++c) {
    for (std::size_t j = 0; j < k; ++j) {
      double sum = influence[c * k + j];
      for (std::size_t h = 0; h < k; ++h) sum += first[c * k + h] * answer[h * k + j];
      variance[j] += sum * sum;
    }
  }
  for (std::size_t j = 0; j < k; ++j) {
    estimates.stays[j].standardError = std::sqrt(variance[j]);
  }
}

void Robust::setVariances(Transition& transition) const {
  const std::vector<double>& time = transition.time;
  const std::vector<double> pushed = transition.hazardVariance;  // the sum of d / n^2
  // Of each cluster: what its rows have apart from those at risk, and their weight.
  struct Cluster {
    double own = 0.0, atRisk = 0.0;
  };
  std::vector<Cluster> of(clusters_);
  double squares = 0.0, mixed = 0.0, weights = 0.0;
  const auto change = [&](std::uint32_t cluster, double own, double atRisk) {
    Cluster& each = of[cluster];
    squares -= each.own * each.own;
    mixed -= each.own * each.atRisk;
    weights -= each.atRisk * each.atRisk;
    each.own += own;
    each.atRisk += atRisk;
    squares += each.own * each.own;
    mixed += each.own * each.atRisk;
    weights += each.atRisk * each.atRisk;
  };
  std::size_t coming = 0, going = 0;
  for (std::size_t i = 0; i < time.size(); ++i) {
    const auto s = static_cast<std::uint32_t>(
        std::lower_bound(time_.begin(), time_.end(), time[i]) - time_.begin());
    const double before = i == 0 ? 0.0 : pushed[i - 1];
    const auto leave = [&](const Stay& stay, double until) {
      if (h_.from[stay.row] != transition.from) return;
      change(stay.cluster, -weightOf(stay.row) * until, -weightOf(stay.row));
    };
    // Those that come and go between two times of the transition do both.
    for (;;) {
      const bool more = coming < byFirst_.size() && stays_[byFirst_[coming]].first <= s;
      if (going < stays_.size() && stays_[going].last < s &&
          (!more || stays_[going].last < stays_[byFirst_[coming]].first)) {
        leave(stays_[going++], before);
      } else if (more) {
        const Stay& stay = stays_[byFirst_[coming++]];
        if (h_.from[stay.row] != transition.from) continue;
        change(stay.cluster, weightOf(stay.row) * before, weightOf(stay.row));
      } else {
        break;
      }
    }
    const double n = path_.left(s, transition.from).atRisk;
    for (; going < stays_.size() && stays_[going].last == s; ++going) {
      const Stay& stay = stays_[going];
      leave(stay, pushed[i]);
      if (h_.from[stay.row] == transition.from && h_.to[stay.row] == transition.to && jumps(stay)) {
        change(stay.cluster, weightOf(stay.row) / n, 0.0);
      }
    }
    // Of own - atRisk pushed.
    transition.hazardVariance[i] =
        std::max(squares - (2.0 * mixed - weights * pushed[i]) * pushed[i], 0.0);
  }
}

}  // namespace survmeth::engine::states
