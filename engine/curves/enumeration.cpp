#include "engine/curves/enumeration.h"

#include <algorithm>

#include "numerics/sizes.h"

namespace survmeth::engine::curves {

Enumeration::Enumeration(const Scores& scores, std::size_t groups)
    : scores_(scores), groups_(groups), size_(scores.strata(), std::vector<std::uint64_t>(groups)) {
  for (std::size_t s = 0; s < scores.strata(); ++s) {
    for (std::size_t i = scores.first[s]; i < scores.first[s + 1]; ++i) {
      ++size_[s][scores.group[i]];
    }
  }
  State state;
  state.left = size_.empty() ? std::vector<std::uint64_t>(groups) : size_[0];
  state.sums.assign(numerics::product(scores.score.size(), groups), 0);
  // Parts by the groups of the first rows, some hundreds of them.
  std::size_t depth = 0;
  for (std::size_t many = 1; many * groups <= 512 && depth < scores.rows(); ++depth) {
    many *= std::max<std::size_t>(groups, 2);
  }
  descend(state, depth, [&](const State& reached) { starts_.push_back(reached); });
}

void Enumeration::place(State& state, std::size_t g, std::int64_t sign, std::size_t row) const {
  for (std::size_t w = 0; w < scores_.score.size(); ++w) {
    state.sums[w * groups_ + g] += sign * scores_.score[w][row];
  }
}

template <class Reached>
void Enumeration::descend(State& state, std::size_t end, const Reached& reached) const {
  if (state.row >= end) {
    reached(state);
    return;
  }
  // A stratum that ends here hands over to the next one, and takes over again on the way back.
  const std::size_t row = state.row;
  const bool over = row == scores_.first[state.stratum + 1];
  std::vector<std::uint64_t> before;
  if (over) {
    before = std::move(state.left);
    state.left = size_[++state.stratum];
  }
  ++state.row;
  for (std::size_t g = 0; g < groups_; ++g) {
    if (state.left[g] == 0) continue;
    --state.left[g];
    place(state, g, 1, row);
    descend(state, end, reached);
    place(state, g, -1, row);
    ++state.left[g];
  }
  state.row = row;
  if (over) {
    --state.stratum;
    state.left = std::move(before);
  }
}

void Enumeration::run(std::size_t part, const Take& take) const {
  State state = starts_[part];
  descend(state, scores_.rows(), [&](const State& reached) { take(reached.sums); });
}

}  // namespace survmeth::engine::curves
