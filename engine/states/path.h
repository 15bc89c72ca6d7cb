// The steps that occupation probabilities take, and what a run of them does to influences on them.
#ifndef ENGINE_STATES_PATH_H_
#define ENGINE_STATES_PATH_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace survmeth::engine::states {

// Each time of transitions: their shares of those at risk, by from, then to.
class Path {
 public:
  explicit Path(std::size_t states) : states_(states) {}

  // A transition of share d / n from a state in which, just before, the probability is p and the
  // share `stay` of those at risk remains. Transitions out of one state follow each other.
  void add(std::uint32_t from, std::uint32_t to, double share, double stay, double p, double n);
  void endStep() { first_.push_back(jumps_.size()); }

  std::size_t states() const { return states_; }
  std::size_t steps() const { return first_.size() - 1; }

  // What step s does to the influence u on the probabilities of a cluster that has the weight y at
  // risk in each state and no transition of its own:
  //
  //   u' = u (I + dA) - sum over h of y(h) p(h) / n(h) (row h of dA)
  //
  // The numbers of u stand `uStride` apart, those of y `yStride`.
  void apply(std::size_t s, double* u, std::size_t uStride, const double* y, std::size_t yStride);

  // Of a state that is left in step s: p / n, and n.
  struct Left {
    double push, atRisk;
  };
  Left left(std::size_t s, std::uint32_t from) const;

  // k before the step, a matrix of numbers that follow the states' probabilities after it by rows,
  // becomes (I + dA) k; `drift` row h gets p(h) / n(h) (row h of dA) k added.
  void pullBack(std::size_t s, std::vector<double>& k, std::vector<double>& drift);

  // Summarises runs of 16, 256, ... steps; needed by advance().
  //
  // Cost O(steps states^2), and memory for steps / 8 times states^2 numbers
  void summarise();

  // Steps begin .. end - 1 for one cluster.
  //
  // Cost O(states^2 log(steps))
  void advance(std::size_t begin, std::size_t end, double* u, const double* y);

 private:
  struct Jump {
    std::uint32_t from, to;
    double share, stay, push, atRisk;
  };
  // Of each run of `size` steps: what comes of each u and of each y by itself, states^2 numbers
  // each, row after row.
  struct Level {
    std::size_t size;
    std::vector<double> maps;
  };
  void applyMap(const double* map, double* u, const double* y);

  std::size_t states_;
  std::vector<Jump> jumps_;
  std::vector<std::size_t> first_{0};
  std::vector<Level> levels_;
  std::vector<double> leaving_, moved_, after_;  // while a step, or a run, is taken
};

}  // namespace survmeth::engine::states

#endif  // ENGINE_STATES_PATH_H_
