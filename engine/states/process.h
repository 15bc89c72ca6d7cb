// Probabilities and times in states with their covariances, from time to time.
#ifndef ENGINE_STATES_PROCESS_H_
#define ENGINE_STATES_PROCESS_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "engine/states/estimate.h"
#include "numerics/squareMatrix.h"

namespace survmeth::engine::states {

// What happens at one time: transitions, each once, by from and to.
struct Jumps {
  std::vector<std::uint32_t> from, to;
  std::vector<double> events;  // weight of each
};

class Process {
 public:
  Process(std::vector<double> initial, double start);

  void moveTo(double time);

  // The jumps of one time; n[e] at risk in the state that jump e leaves, stay[h] the share of those
  // in state h who remain.
  void jump(const Jumps& jumps, const std::vector<double>& n, const std::vector<double>& stay);

  double probability(std::size_t j) const { return p_[j]; }
  double variance(std::size_t j) const;
  Stay stay(std::size_t j) const;

 private:
  std::vector<double> p_;
  double time_;
  std::vector<double> stay_;
  numerics::SquareMatrix pp_, lp_, ll_;  // covariances; lp of times (rows) and probabilities
  std::vector<double> share_;            // of each jump
  std::vector<double> moved_;
};

}  // namespace survmeth::engine::states

#endif  // ENGINE_STATES_PROCESS_H_
