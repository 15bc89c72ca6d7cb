#include "engine/cox/means.h"

#include <algorithm>

#include "engine/cox/stratumSums.h"
#include "numerics/hot.h"

namespace survmeth::engine::cox {
namespace {

using numerics::SquareMatrix;

SURVMETH_HOT void scaleRows(const double* sums, const double* scale, std::size_t rows,
                            double* out) {
  for (std::size_t i = 0; i < rows; ++i) out[i] = sums[i] * scale[i];
}

SURVMETH_HOT void gatherRows(const double* sums, const double* scale, const std::uint32_t* row,
                             std::size_t count, double* out) {
  for (std::size_t m = 0; m < count; ++m) out[m] = sums[row[m]] * scale[m];
}

// out[k] = 1 / (others[k] + failing[k]).
SURVMETH_HOT void reciprocals(const double* others, const double* failing, std::size_t count,
                              double* out) {
  for (std::size_t k = 0; k < count; ++k) out[k] = 1.0 / (others[k] + failing[k]);
}

}  // namespace

MeanTerms meanTerms(const TieMoments& moments) {
  if (moments.u2 == 0.0) return {1.0, 0.0, 0.0};
  const double mean = moments.u2f / moments.u2;
  return {mean, moments.u2, std::max(0.0, moments.u2ff - mean * moments.u2f)};
}

BackwardMeans::BackwardMeans(const Problem& problem, const Hazards& hazards, Ties ties,
                             std::span<const double> factor, std::size_t stop)
    : problem_(problem),
      hazards_(hazards),
      ties_(ties),
      factor_(factor),
      sums_(kBlock * kAbreast),
      means_(problem.columns() * kBlock, 0.0),
      others_(problem.columns(), 0.0),
      extra_(problem.columns(), 0.0) {
  const std::vector<std::uint32_t>& first = problem.arrangement.firstEvent;
  const std::size_t rows = stop * kBlock;
  time_ =
      static_cast<std::size_t>(std::lower_bound(first.begin(), first.end(), rows) - first.begin());
  holdBehind(rows);
}

// Where the events of the next time reach across the end of the blocks: the sum over the rows behind
// them.
void BackwardMeans::holdBehind(std::size_t stop) {
  const risk::Arrangement& a = problem_.arrangement;
  if (time_ == 0 || a.events[time_ - 1] == 1 || ties_ == Ties::kBreslow) return;
  const std::size_t row = a.firstEvent[time_ - 1] + a.events[time_ - 1];
  const std::size_t end = a.stratumRow[a.timeStratum[time_ - 1] + std::size_t{1}];
  if (row < stop || row == end) return;
  held_ = true;
  sumsToEnd(problem_, hazards_, row, others_);
}

void BackwardMeans::subtract(std::size_t block, SquareMatrix& information) {
  const std::size_t p = problem_.columns();
  if (!findSingles(block)) {
    findActions(block);
    placeMeans(problem_.x.rowsOf(block));
  }
  byColumns(p, [&](std::size_t j, std::size_t columns) {
    if (dense_ && actions_.empty()) {
      sumsToEnd(problem_, hazards_, block, j, columns, scale_, means_.data() + j * kBlock);
      return;
    }
    sumsToEnd(problem_, hazards_, block, j, columns, nullptr, sums_.data());
    for (std::size_t c = 0; c < columns; ++c) formMeans(sums_.data() + c * kBlock, j + c);
  });
  const std::size_t rows = std::min(count_, kBlock);
  numerics::addWeightedGram(means_.data(), weight_, rows, -1.0, information);
  if (count_ <= kBlock) return;
  for (std::size_t j = 0; j < p; ++j) {
    for (std::size_t k = 0; k <= j; ++k) {
      information(j, k) -= weight_[kBlock] * extra_[j] * extra_[k];
    }
  }
}

bool BackwardMeans::tied(std::size_t k) const {
  return problem_.arrangement.events[k] > 1 && ties_ != Ties::kBreslow;
}

// The usual block, whose events all fail alone; false, with nothing done, where one has company.
bool BackwardMeans::findSingles(std::size_t block) {
  const risk::Arrangement& a = problem_.arrangement;
  const std::size_t from = block * kBlock;
  const std::size_t stop = time_;
  if (held_) return false;
  std::size_t begin = stop;
  while (begin > 0 && a.firstEvent[begin - 1] >= from) {
    if (tied(--begin)) return false;
  }
  // Those that fail together before the block may want a sum from within it.
  if (begin > 0 && tied(begin - 1) && a.firstEvent[begin - 1] + a.events[begin - 1] >= from) {
    return false;
  }
  actions_.clear();
  time_ = begin;
  count_ = singles_ = stop - begin;
  double scale[kBlock];
  reciprocals(hazards_.others.data() + begin, hazards_.failing.data() + begin, count_, scale);
  spreadOut(problem_.x.rowsOf(block));
  for (std::size_t m = 0; m < singles_; ++m) {
    // Side by side they come in descending order.
    const std::size_t k = begin + m;
    const std::size_t row = a.firstEvent[k] - from;
    const std::size_t slot = dense_ ? row : singles_ - 1 - m;
    weight_[slot] = factor_.empty() ? a.eventWeight[k] : factor_[k] * a.eventWeight[k];
    scale_[slot] = scale[m];
    if (!dense_) row_[slot] = static_cast<std::uint32_t>(row);
  }
  if (dense_) count_ = problem_.x.rowsOf(block);
  return true;
}

void BackwardMeans::findActions(std::size_t block) {
  const risk::Arrangement& a = problem_.arrangement;
  const std::size_t from = block * kBlock;
  actions_.clear();
  while (time_ > 0) {
    const std::size_t k = time_ - 1;
    const bool together = tied(k);
    if (together && !held_) {
      const std::size_t row = a.firstEvent[k] + a.events[k];
      if (row == a.stratumRow[a.timeStratum[k] + std::size_t{1}]) {
        actions_.push_back({Kind::kHoldNothing, 0, 0.0, 0.0, 0.0, 0.0, 0});
      } else if (row >= from) {
        actions_.push_back({Kind::kHold, row - from, 0.0, 0.0, 0.0, 0.0, 0});
      } else {
        return;
      }
      held_ = true;
    }
    if (a.firstEvent[k] < from) return;
    addTerms(k, together, a.firstEvent[k] - from);
    held_ = false;
    --time_;
  }
}

void BackwardMeans::addTerms(std::size_t k, bool together, std::size_t row) {
  const double times = factor_.empty() ? 1.0 : factor_[k];
  const double scale = 1.0 / hazards_.all(k);
  if (!together) {
    const double weight = times * problem_.arrangement.eventWeight[k];
    actions_.push_back({Kind::kSingle, row, scale, 1.0, weight, 0.0, 0});
    return;
  }
  const MeanTerms terms = meanTerms(tieMoments(problem_, hazards_, ties_, k));
  if (terms.weight == 0.0) return;
  actions_.push_back(
      {Kind::kTied, row, scale, terms.mean, times * terms.weight, times * terms.failingWeight, 0});
}

// Whether the means stand at their rows, or side by side where that saves more of their outer products
// than it takes to bring them there; at their rows, all weights are 0 for now.
void BackwardMeans::spreadOut(std::size_t rows) {
  dense_ = 3 * count_ > rows && (rows - std::min(rows, count_)) * problem_.columns() < 16 * rows;
  if (!dense_) return;
  std::fill(scale_, scale_ + kBlock, 0.0);
  std::fill(weight_, weight_ + kBlock + 1, 0.0);
}

void BackwardMeans::placeMeans(std::size_t rows) {
  singles_ = 0;
  count_ = 0;
  for (const Action& action : actions_) {
    if (action.kind == Kind::kSingle) ++singles_;
    if (action.kind == Kind::kTied) count_ += 2;
  }
  count_ += singles_;
  spreadOut(rows);
  std::size_t single = 0;
  std::size_t tied = singles_;
  for (Action& action : actions_) {
    if (action.kind == Kind::kSingle) {
      const std::size_t slot = dense_ ? action.row : single;
      weight_[slot] = action.weight;
      scale_[slot] = action.scale;
      row_[single++] = static_cast<std::uint32_t>(action.row);
    } else if (action.kind == Kind::kTied) {
      action.slot = dense_ ? action.row : tied;
      weight_[action.slot] = action.weight;
      weight_[action.slot + 1] = action.failingWeight;
      tied += 2;
    }
  }
  if (dense_) count_ = weight_[kBlock] == 0.0 ? rows : kBlock + 1;
  // Those of one event are formed all at once.
  std::erase_if(actions_, [](const Action& action) { return action.kind == Kind::kSingle; });
}

void BackwardMeans::formMeans(const double* sums, std::size_t j) {
  double* means = means_.data() + j * kBlock;
  const auto put = [&](std::size_t slot, double value) {
    (slot < kBlock ? means[slot] : extra_[j]) = value;
  };
  if (dense_) {
    scaleRows(sums, scale_, std::min(count_, kBlock), means);
  } else {
    gatherRows(sums, scale_, row_, singles_, means);
  }
  double& others = others_[j];
  for (const Action& action : actions_) {
    switch (action.kind) {
      case Kind::kHoldNothing:
        others = 0.0;
        break;
      case Kind::kHold:
        others = sums[action.row];
        break;
      case Kind::kSingle:
        break;
      case Kind::kTied: {
        const double failing = sums[action.row] - others;
        put(action.slot, (others + action.mean * failing) * action.scale);
        put(action.slot + 1, failing * action.scale);
        break;
      }
    }
  }
}

}  // namespace survmeth::engine::cox
