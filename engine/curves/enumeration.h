// Every arrangement of the groups among the rows of each stratum, in parts that threads share.
#ifndef ENGINE_CURVES_ENUMERATION_H_
#define ENGINE_CURVES_ENUMERATION_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "engine/curves/scores.h"

namespace survmeth::engine::curves {

class Enumeration {
 public:
  // Takes the sums of the scores, of every weighting and group, weighting after weighting.
  using Take = std::function<void(std::span<const std::int64_t>)>;

  // Holds on to the scores.
  Enumeration(const Scores& scores, std::size_t groups);

  // The parts together are all arrangements, each once; at least one part.
  std::size_t parts() const { return starts_.size(); }
  void run(std::size_t part, const Take& take) const;

 private:
  // Rows before `row` have their groups; `left` rows of each group are to be placed in its stratum.
  struct State {
    std::size_t row = 0, stratum = 0;
    std::vector<std::uint64_t> left;
    std::vector<std::int64_t> sums;
  };

  void place(State& state, std::size_t g, std::int64_t sign, std::size_t row) const;
  // From the state on to the `end`, where `reached` takes the state.
  template <class Reached>
  void descend(State& state, std::size_t end, const Reached& reached) const;

  const Scores& scores_;
  std::size_t groups_;
  std::vector<std::vector<std::uint64_t>> size_;  // of each stratum's groups
  std::vector<State> starts_;
};

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_ENUMERATION_H_
