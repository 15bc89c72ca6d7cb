#include "engine/states/estimate.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "engine/risk/arrangement.h"
#include "engine/states/path.h"
#include "engine/states/process.h"
#include "engine/states/robust.h"
#include "numerics/doubleDouble.h"
#include "numerics/runningSum.h"
#include "numerics/sizes.h"

namespace survmeth::engine::states {
namespace {

using numerics::DoubleDouble;

class Estimation {
 public:
  Estimation(const Histories& histories, const Options& options)
      : h_(histories),
        options_(options),
        none_(histories.rows(), 0),
        codes_({histories.entry, histories.exit, none_, 1}, 0.0),
        atRisk_(histories.states),
        rows_(histories.states, 0),
        path_(histories.states),
        place_(histories.states * histories.states, 0) {}

  Estimates run() {
    if (!std::isnan(options_.horizon) &&
        (!(options_.horizon > options_.start) || !std::isfinite(options_.horizon))) {
      throw Refusal(Role::kValue, Refusal::kNone, "the horizon is not after the start");
    }
    findTransitions();
    const bool sampling = !h_.weight.empty() && h_.weightKind == WeightKind::kSampling;
    result_.robust = options_.robust || sampling || !h_.cluster.empty();
    result_.states.resize(h_.states);
    result_.initial = initial();
    Process process(result_.initial, options_.start);
    bool horizon = !std::isnan(options_.horizon);
    for (std::size_t begin = 0, end = 0; begin < codes_.exitOrder.size(); begin = end) {
      const std::uint32_t code = codes_.exit[codes_.exitOrder[begin]];
      while (end < codes_.exitOrder.size() && codes_.exit[codes_.exitOrder[end]] == code) ++end;
      enterBefore(code);
      const double time = codes_.time[code];
      if (time > options_.start && findJumps(begin, end)) {
        if (horizon && time > options_.horizon) {
          endAt(process);
          horizon = false;
        }
        process.moveTo(time);
        take(process, time);
      }
      for (std::size_t i = begin; i < end; ++i) leave(codes_.exitOrder[i]);
    }
    if (horizon) endAt(process);
    if (!codes_.exitOrder.empty()) result_.followed = h_.exit[codes_.exitOrder.back()];
    if (!std::isnan(options_.horizon)) {
      result_.extended = result_.followed < options_.horizon && anyLeft(process);
    }
    if (result_.robust) setRobust();
    return std::move(result_);
  }

 private:
  double weightOf(std::uint32_t row) const { return h_.weight.empty() ? 1.0 : h_.weight[row]; }
  // Whether anybody is in a state that is left at all.
  bool anyLeft(const Process& process) const {
    return std::any_of(h_.from.begin(), h_.from.end(),
                       [&](std::uint32_t state) { return process.probability(state) > 0.0; });
  }

  void findTransitions() {
    std::vector<double> events(numerics::product(h_.states, h_.states), 0.0);
    for (std::uint32_t i = 0; i < h_.rows(); ++i) {
      if (h_.to[i] == kNowhere || !(weightOf(i) > 0.0) || !(h_.exit[i] > options_.start)) continue;
      events[h_.from[i] * h_.states + h_.to[i]] += weightOf(i);
    }
    for (std::uint32_t from = 0; from < h_.states; ++from) {
      for (std::uint32_t to = 0; to < h_.states; ++to) {
        const std::size_t at = from * h_.states + to;
        if (!(events[at] > 0.0)) continue;
        place_[at] = result_.transitions.size();
        result_.transitions.push_back({from, to, events[at], {}, {}, {}});
      }
    }
    sums_.resize(result_.transitions.size());
    jumping_.assign(result_.transitions.size(), 0.0);
  }

  std::vector<double> initial() const {
    std::vector<double> shares(h_.states, 0.0);
    if (!options_.initial.empty()) {
      double sum = 0.0;
      bool fine = options_.initial.size() == h_.states;
      for (const double share : options_.initial) {
        fine = fine && share >= 0.0;
        sum += share;
      }
      if (!fine || !(std::fabs(sum - 1.0) < 1e-9)) {
        throw Refusal(Role::kValue, Refusal::kNone,
                      "the initial probabilities are not one of each state, of sum 1");
      }
      return options_.initial;
    }
    double all = 0.0;
    for (std::uint32_t i = 0; i < h_.rows(); ++i) {
      if (!(h_.entry[i] <= options_.start && options_.start < h_.exit[i])) continue;
      shares[h_.from[i]] += weightOf(i);
      all += weightOf(i);
    }
    if (!(all > 0.0)) {
      throw Refusal(Role::kRequest, Refusal::kNone, "nobody is at risk at the start");
    }
    for (double& share : shares) share /= all;
    return shares;
  }

  // Rows of weight 0 take no part.
  void enterBefore(std::uint32_t code) {
    for (;
         entering_ < codes_.entryOrder.size() && codes_.entry[codes_.entryOrder[entering_]] < code;
         ++entering_) {
      const std::uint32_t row = codes_.entryOrder[entering_];
      if (!(weightOf(row) > 0.0)) continue;
      atRisk_[h_.from[row]] = atRisk_[h_.from[row]] + weightOf(row);
      ++rows_[h_.from[row]];
    }
  }
  void leave(std::uint32_t row) {
    if (!(weightOf(row) > 0.0)) return;
    const std::uint32_t state = h_.from[row];
    atRisk_[state] = --rows_[state] == 0 ? DoubleDouble() : atRisk_[state] - weightOf(row);
  }

  // The transitions of rows begin .. end of the order; false where there are none.
  bool findJumps(std::size_t begin, std::size_t end) {
    happening_.clear();
    for (std::size_t i = begin; i < end; ++i) {
      const std::uint32_t row = codes_.exitOrder[i];
      if (h_.to[row] == kNowhere || !(weightOf(row) > 0.0)) continue;
      const std::size_t at = place_[h_.from[row] * h_.states + h_.to[row]];
      if (jumping_[at] == 0.0) happening_.push_back(at);
      jumping_[at] += weightOf(row);
    }
    std::sort(happening_.begin(), happening_.end());
    jumps_.from.clear();
    jumps_.to.clear();
    jumps_.events.clear();
    for (const std::size_t at : happening_) {
      jumps_.from.push_back(result_.transitions[at].from);
      jumps_.to.push_back(result_.transitions[at].to);
      jumps_.events.push_back(jumping_[at]);
      jumping_[at] = 0.0;
    }
    return !happening_.empty();
  }

  void take(Process& process, double time) {
    result_.time.push_back(time);
    for (std::size_t j = 0; j < h_.states; ++j) result_.states[j].atRisk.push_back(atRisk_[j].hi);
    leaving_.assign(h_.states, 0.0);
    for (std::size_t e = 0; e < happening_.size(); ++e)
      leaving_[jumps_.from[e]] += jumps_.events[e];
    stay_.assign(h_.states, 1.0);
    jumpers_.resize(happening_.size());
    for (std::size_t e = 0; e < happening_.size(); ++e) {
      const std::uint32_t h = jumps_.from[e];
      // Not below those who leave, by rounding.
      const double n = std::max(atRisk_[h].hi, leaving_[h]);
      jumpers_[e] = n;
      stay_[h] = (n - leaving_[h]) / n;
      Sum& sum = sums_[happening_[e]];
      Transition& transition = result_.transitions[happening_[e]];
      transition.time.push_back(time);
      transition.hazard.push_back(sum.hazard.add(jumps_.events[e] / n));
      transition.hazardVariance.push_back(sum.variance.add(jumps_.events[e] / n / n));
    }
    if (result_.robust) {
      for (std::size_t e = 0; e < happening_.size(); ++e) {
        const std::uint32_t from = jumps_.from[e];
        path_.add(from, jumps_.to[e], jumps_.events[e] / jumpers_[e], stay_[from],
                  process.probability(from), jumpers_[e]);
      }
      path_.endStep();
    }
    process.jump(jumps_, jumpers_, stay_);
    for (std::size_t j = 0; j < h_.states; ++j) {
      result_.states[j].probability.push_back(process.probability(j));
      result_.states[j].variance.push_back(process.variance(j));
    }
  }

  void setRobust() {
    Robust robust(h_, options_, result_, path_);
    robust.setVariances(result_);
    if (!result_.stays.empty()) robust.setStayErrors(options_.horizon, result_);
    for (Transition& each : result_.transitions) robust.setVariances(each);
  }

  void endAt(Process process) {
    process.moveTo(options_.horizon);
    for (std::size_t j = 0; j < h_.states; ++j) result_.stays.push_back(process.stay(j));
  }

  const Histories& h_;
  const Options& options_;
  std::vector<std::uint32_t> none_;
  risk::TimeCodes codes_;
  std::vector<DoubleDouble> atRisk_;  // of each state
  std::vector<std::size_t> rows_;
  std::size_t entering_ = 0;
  Path path_;                       // where errors are robust
  std::vector<std::size_t> place_;  // of from and to: the transition
  struct Sum {
    numerics::RunningSum hazard, variance;
  };
  std::vector<Sum> sums_;  // of each transition
  std::vector<double> jumping_;
  std::vector<std::size_t> happening_;
  Jumps jumps_;
  std::vector<double> jumpers_;         // of each jump: at risk of it
  std::vector<double> leaving_, stay_;  // of each state
  Estimates result_;
};

}  // namespace

Estimates estimate(const Histories& histories, const Options& options) {
  return Estimation(histories, options).run();
}

}  // namespace survmeth::engine::states
