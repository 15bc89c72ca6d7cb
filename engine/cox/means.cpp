#include "engine/cox/means.h"

#include <algorithm>

#include "numerics/hot.h"

namespace survmeth::engine::cox {
namespace {

using numerics::BlockedColumns;
using numerics::SquareMatrix;
constexpr std::size_t kRows = BlockedColumns::kBlock;

// Sums of risk * x from each row to the segment's end, on top of `part`, of kColumns columns at
// once: each is a chain of additions that waits for itself.
template <std::size_t kColumns>
void suffixSums(const double* risk, const double* x, std::size_t begin, std::size_t stop,
                double* part, double* sums) {
  double running[kColumns];
  for (std::size_t c = 0; c < kColumns; ++c) running[c] = part[c];
  for (std::size_t i = stop; i-- > begin;) {
    for (std::size_t c = 0; c < kColumns; ++c) {
      running[c] += risk[i] * x[c * kRows + i];
      sums[c * kRows + i] = running[c];
    }
  }
  for (std::size_t c = 0; c < kColumns; ++c) part[c] = running[c];
}

using SuffixSums = void (*)(const double*, const double*, std::size_t, std::size_t, double*,
                            double*);
constexpr SuffixSums kSuffixSums[] = {suffixSums<1>, suffixSums<2>, suffixSums<3>, suffixSums<4>,
                                      suffixSums<5>, suffixSums<6>, suffixSums<7>, suffixSums<8>};

SURVMETH_HOT void scaleRows(const double* sums, double top, const double* scale, std::size_t begin,
                            std::size_t stop, double* out) {
  for (std::size_t i = begin; i < stop; ++i) out[i] = (sums[i] + top) * scale[i];
}

}  // namespace

MeanTerms meanTerms(const TieMoments& moments) {
  if (moments.u2 == 0.0) return {1.0, 0.0, 0.0};
  const double mean = moments.u2f / moments.u2;
  return {mean, moments.u2, std::max(0.0, moments.u2ff - mean * moments.u2f)};
}

BackwardMeans::BackwardMeans(const Problem& problem, const Hazards& hazards, Ties ties,
                             std::span<const double> factor)
    : problem_(problem),
      hazards_(hazards),
      ties_(ties),
      factor_(factor),
      sums_(kBlock * kGroup),
      means_(problem.columns() * kBlock),
      base_(problem.columns(), 0.0),
      lost_(problem.columns(), 0.0),
      top_(problem.columns(), 0.0),
      others_(problem.columns(), 0.0),
      extra_(problem.columns(), 0.0),
      time_(problem.arrangement.times()),
      stratum_(problem.arrangement.strata()) {}

void BackwardMeans::subtract(std::size_t block, SquareMatrix& information) {
  const std::size_t p = problem_.columns();
  findSegments(block);
  findActions(block);
  dense_ = onlySingles_ && 3 * count_ > problem_.x.rowsOf(block);
  if (dense_) spreadSingles(problem_.x.rowsOf(block));
  // Groups of like size: ten columns are five and five.
  const std::size_t groups = (p + kGroup - 1) / kGroup;
  for (std::size_t group = 0; group < groups; ++group) {
    const std::size_t j = group * p / groups;
    const std::size_t columns = (group + 1) * p / groups - j;
    sumColumns(block, j, columns);
    for (std::size_t c = 0; c < columns; ++c) formMeans(sums_.data() + c * kBlock, j + c);
  }
  const std::size_t rows = std::min(count_, kBlock);
  numerics::addWeightedGram(means_.data(), weight_, rows, -1.0, information);
  if (rows == count_) return;
  for (std::size_t j = 0; j < p; ++j) {
    for (std::size_t k = 0; k <= j; ++k) {
      information(j, k) -= weight_[kBlock] * extra_[j] * extra_[k];
    }
  }
}

void BackwardMeans::findSegments(std::size_t block) {
  const risk::Arrangement& a = problem_.arrangement;
  segments_.clear();
  const std::size_t from = block * kBlock;
  std::size_t stop = from + problem_.x.rowsOf(block);
  while (stop > from) {
    while (stratum_ > 0 && a.stratumRow[stratum_ - 1] >= stop) --stratum_;
    const std::size_t begin = std::max<std::size_t>(from, a.stratumRow[stratum_ - 1]);
    segments_.push_back({begin - from, stop - from, stop == a.stratumRow[stratum_]});
    stop = begin;
  }
  const Segment& top = segments_.front();
  continued_ = top.last ? top.stop : top.begin;
}

void BackwardMeans::findActions(std::size_t block) {
  const risk::Arrangement& a = problem_.arrangement;
  const std::size_t from = block * kBlock;
  actions_.clear();
  count_ = 0;
  onlySingles_ = true;
  while (time_ > 0) {
    const std::size_t k = time_ - 1;
    const bool tied = a.events[k] > 1 && ties_ != Ties::kBreslow;
    if (tied && !held_) {
      const std::size_t row = a.firstEvent[k] + a.events[k];
      if (row == a.stratumRow[a.timeStratum[k] + 1]) {
        actions_.push_back({Kind::kHoldNothing, 0, 0.0, 0.0});
      } else if (row >= from) {
        actions_.push_back({Kind::kHold, row - from, 0.0, 0.0});
      } else {
        return;
      }
      held_ = true;
      onlySingles_ = false;
    }
    if (a.firstEvent[k] < from) return;
    addTerms(k, tied, a.firstEvent[k] - from);
    held_ = false;
    --time_;
  }
}

void BackwardMeans::addTerms(std::size_t k, bool tied, std::size_t row) {
  const double times = factor_.empty() ? 1.0 : factor_[k];
  const double scale = 1.0 / hazards_.all(k);
  if (!tied) {
    actions_.push_back({Kind::kSingle, row, scale, 1.0});
    weight_[count_++] = times * problem_.arrangement.eventWeight[k];
    return;
  }
  const MeanTerms terms = meanTerms(tieMoments(problem_, hazards_, ties_, k));
  onlySingles_ = false;
  if (terms.weight == 0.0) return;
  actions_.push_back({Kind::kTied, row, scale, terms.mean});
  weight_[count_++] = times * terms.weight;
  weight_[count_++] = times * terms.failingWeight;
}

// Scales and weights from the events to the rows where they stand.
void BackwardMeans::spreadSingles(std::size_t rows) {
  double weight[kBlock] = {};
  std::fill(scale_, scale_ + kBlock, 0.0);
  for (std::size_t m = 0; m < actions_.size(); ++m) {
    scale_[actions_[m].row] = actions_[m].scale;
    weight[actions_[m].row] = weight_[m];
  }
  std::copy(weight, weight + kBlock, weight_);
  count_ = rows;
}

void BackwardMeans::sumColumns(std::size_t block, std::size_t j, std::size_t columns) {
  const double* risk = hazards_.risk.data() + block * kBlock;
  const double* x = problem_.x.column(block, j);
  for (std::size_t c = j; c < j + columns; ++c) top_[c] = base_[c];
  for (const Segment& segment : segments_) {
    if (segment.last) {
      for (std::size_t c = j; c < j + columns; ++c) base_[c] = lost_[c] = 0.0;
    }
    double* part = lost_.data() + j;
    kSuffixSums[columns - 1](risk, x, segment.begin, segment.stop, part, sums_.data());
    for (std::size_t c = j; c < j + columns; ++c) {
      // What rounding takes from the base goes into the next part.
      const double sum = base_[c] + lost_[c];
      const double added = sum - base_[c];
      lost_[c] = (base_[c] - (sum - added)) + (lost_[c] - added);
      base_[c] = sum;
    }
  }
}

void BackwardMeans::formMeans(const double* sums, std::size_t j) {
  if (dense_) {
    double* means = means_.data() + j * kBlock;
    scaleRows(sums, 0.0, scale_, 0, continued_, means);
    scaleRows(sums, top_[j], scale_, continued_, count_, means);
    return;
  }
  double& others = others_[j];
  double formed[kBlock + 1];
  double* means = formed;
  for (const Action& action : actions_) {
    switch (action.kind) {
      case Kind::kHoldNothing:
        others = 0.0;
        break;
      case Kind::kHold:
        others = sumAt(sums, j, action.row);
        break;
      case Kind::kSingle:
        *means++ = sumAt(sums, j, action.row) * action.scale;
        break;
      case Kind::kTied: {
        const double failing = sumAt(sums, j, action.row) - others;
        *means++ = (others + action.mean * failing) * action.scale;
        *means++ = failing * action.scale;
        break;
      }
    }
  }
  std::copy_n(formed, std::min(count_, kBlock), means_.data() + j * kBlock);
  if (count_ > kBlock) extra_[j] = formed[kBlock];
}

void subtractMeans(const Problem& problem, const Hazards& hazards, Ties ties,
                   std::span<const double> factor, SquareMatrix& information) {
  const risk::Arrangement& a = problem.arrangement;
  const std::size_t p = problem.columns();
  std::vector<std::size_t> place(a.times());
  std::vector<double> weight;
  std::vector<MeanTerms> terms(a.times());
  for (std::size_t k = 0; k < a.times(); ++k) {
    terms[k] = meanTerms(tieMoments(problem, hazards, ties, k));
    place[k] = weight.size();
    const double times = factor.empty() ? 1.0 : factor[k];
    if (terms[k].weight != 0.0) weight.push_back(times * terms[k].weight);
    if (terms[k].failingWeight != 0.0) weight.push_back(times * terms[k].failingWeight);
  }
  BlockedColumns means(weight.size(), p);
  std::vector<double> value(a.rows());
  std::vector<double> others(a.times());
  std::vector<double> failing(a.times());
  for (std::size_t j = 0; j < p; ++j) {
    for (std::size_t i = 0; i < a.rows(); ++i) value[i] = hazards.risk[i] * problem.x(i, j);
    problem.sums.overRiskSets(value, others, failing);
    for (std::size_t k = 0; k < a.times(); ++k) {
      const double whole = hazards.all(k);
      std::size_t to = place[k];
      if (terms[k].weight != 0.0) {
        means(to++, j) = (others[k] + terms[k].mean * failing[k]) / whole;
      }
      if (terms[k].failingWeight != 0.0) means(to, j) = failing[k] / whole;
    }
  }
  for (std::size_t block = 0; block < means.blocks(); ++block) {
    numerics::addWeightedGram(means.column(block, 0), weight.data() + block * kRows,
                              means.rowsOf(block), -1.0, information);
  }
}

}  // namespace survmeth::engine::cox
