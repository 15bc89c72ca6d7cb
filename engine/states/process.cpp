#include "engine/states/process.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace survmeth::engine::states {

Process::Process(std::vector<double> initial, double start)
    : p_(std::move(initial)),
      time_(start),
      stay_(p_.size()),
      pp_(p_.size()),
      lp_(p_.size()),
      ll_(p_.size()),
      moved_(p_.size()) {}

void Process::moveTo(double time) {
  const double length = time - time_;
  time_ = time;
  const std::size_t k = p_.size();
  for (std::size_t i = 0; i < k; ++i) {
    stay_[i] += length * p_[i];
    for (std::size_t j = 0; j < k; ++j) {
      ll_(i, j) += length * (lp_(i, j) + lp_(j, i) + length * pp_(i, j));
    }
  }
  for (std::size_t i = 0; i < k; ++i) {
    for (std::size_t j = 0; j < k; ++j) lp_(i, j) += length * pp_(i, j);
  }
}

void Process::jump(const Jumps& jumps, const std::vector<double>& n,
                   const std::vector<double>& stay) {
  const std::size_t k = p_.size();
  const std::size_t count = jumps.from.size();
  share_.resize(count);
  for (std::size_t e = 0; e < count; ++e) share_[e] = jumps.events[e] / n[e];
  // x (I + dA), x standing `step` apart.
  const auto through = [&](double* x, std::size_t step) {
    for (std::size_t h = 0; h < k; ++h) moved_[h] = x[h * step] * stay[h];
    for (std::size_t e = 0; e < count; ++e) {
      moved_[jumps.to[e]] += x[jumps.from[e] * step] * share_[e];
    }
    for (std::size_t h = 0; h < k; ++h) x[h * step] = moved_[h];
  };
  for (std::size_t i = 0; i < k; ++i) {
    through(&pp_(i, 0), 1);
    through(&lp_(i, 0), 1);
  }
  for (std::size_t j = 0; j < k; ++j) through(&pp_(0, j), k);
  // The multinomial covariance of the shares; that of those who remain is minus the others' sum.
  for (std::size_t e = 0; e < count; ++e) {
    const std::uint32_t h = jumps.from[e];
    const double scale = p_[h] * p_[h] / n[e] * share_[e];
    for (std::size_t f = 0; f < count; ++f) {
      if (jumps.from[f] == h) pp_(jumps.to[e], jumps.to[f]) -= scale * share_[f];
    }
    pp_(jumps.to[e], jumps.to[e]) += scale;
    pp_(jumps.to[e], h) -= scale * stay[h];
    pp_(h, jumps.to[e]) -= scale * stay[h];
    pp_(h, h) += scale * stay[h];
  }
  through(p_.data(), 1);
}

double Process::variance(std::size_t j) const { return std::max(pp_(j, j), 0.0); }

Stay Process::stay(std::size_t j) const { return {stay_[j], std::sqrt(std::max(ll_(j, j), 0.0))}; }

}  // namespace survmeth::engine::states
