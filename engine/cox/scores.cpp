#include "engine/cox/scores.h"

#include <algorithm>

#include "engine/cox/stratumSums.h"
#include "numerics/hot.h"
#include "numerics/pairs.h"

namespace survmeth::engine::cox {
namespace {

using numerics::firsts;
using numerics::Pair;
using numerics::pairAt;
using numerics::putPair;
using numerics::seconds;
constexpr std::size_t kBlock = ForwardScores::kBlock;

SURVMETH_HOT void meansOf(const double* sums, const double* scale, const double* increment,
                          std::size_t rows, double* mean, double* grows) {
  for (std::size_t i = 0; i < rows; ++i) {
    mean[i] = sums[i] * scale[i];
    grows[i] = mean[i] * increment[i];
  }
}

SURVMETH_HOT void scoresOf(const double* x, const double* mean, const double* sum,
                           const double* event, const double* risk, const double* cumulative,
                           std::size_t rows, double* score) {
  for (std::size_t i = 0; i < rows; ++i) {
    score[i] = event[i] * (x[i] - mean[i]) - risk[i] * (x[i] * cumulative[i] - sum[i]);
  }
}

// Sums up to each row on top of `running`, of kColumns columns at once, two rows of two columns at
// a time; in place, if they are kept. A last column without a partner is its own.
template <std::size_t kColumns, bool kKept>
void prefixSums(double* values, std::size_t begin, std::size_t stop, double* running) {
  constexpr std::size_t kPairs = (kColumns + 1) / 2;
  Pair sums[kPairs];
  for (std::size_t q = 0; q < kPairs; ++q) {
    sums[q] = Pair{running[2 * q], running[std::min(2 * q + 1, kColumns - 1)]};
  }
  std::size_t i = begin;
  for (; i + 1 < stop; i += 2) {
    for (std::size_t q = 0; q < kPairs; ++q) {
      double* a = values + 2 * q * kBlock + i;
      double* b = values + std::min(2 * q + 1, kColumns - 1) * kBlock + i;
      const Pair left = pairAt(a);
      const Pair right = pairAt(b);
      const Pair first = sums[q] + firsts(left, right);
      sums[q] = first + seconds(left, right);
      if constexpr (kKept) {
        putPair(firsts(first, sums[q]), a);
        putPair(seconds(first, sums[q]), b);
      }
    }
  }
  for (std::size_t c = 0; c < kColumns; ++c) {
    running[c] = sums[c / 2][c % 2];
    if (i < stop) running[c] += values[c * kBlock + i];
    if (kKept && i < stop) values[c * kBlock + i] = running[c];
  }
}

using PrefixSums = void (*)(double*, std::size_t, std::size_t, double*);
template <bool kKept>
constexpr PrefixSums kPrefixSums[] = {
    prefixSums<1, kKept>, prefixSums<2, kKept>, prefixSums<3, kKept>, prefixSums<4, kKept>,
    prefixSums<5, kKept>, prefixSums<6, kKept>, prefixSums<7, kKept>, prefixSums<8, kKept>,
    prefixSums<9, kKept>, prefixSums<10, kKept>};
static_assert(sizeof kPrefixSums<true> / sizeof *kPrefixSums<true> == kAbreast);

}  // namespace

ForwardScores::ForwardScores(const Problem& problem, const Hazards& hazards, Ties ties)
    : problem_(problem),
      hazards_(hazards),
      ties_(ties),
      carried_(problem.columns(), 0.0),
      wholeBefore_(problem.columns()),
      othersBefore_(problem.columns()),
      othersBehind_(problem.columns()),
      sums_(kBlock * kAbreast),
      means_(kBlock * kAbreast),
      grows_(kBlock * kAbreast) {}

void ForwardScores::work(std::size_t block, double* scores) {
  const std::size_t rows = problem_.x.rowsOf(block);
  findRows(block);
  findGroups(block);
  byColumns(problem_.columns(), [&](std::size_t j, std::size_t columns) {
    sumsToEnd(problem_, hazards_, block, j, columns, nullptr, sums_.data());
    for (std::size_t c = 0; c < columns; ++c) {
      const double* sums = sums_.data() + c * kBlock;
      double* mean = means_.data() + c * kBlock;
      double* grows = grows_.data() + c * kBlock;
      meansOf(sums, scale_, increment_, rows, mean, grows);
      addGroups(sums, j + c, mean, grows);
    }
    runForward(block, j, columns, scores != nullptr);
    if (scores == nullptr) return;
    const double* cumulative = hazards_.cumulative.data() + block * kBlock;
    for (std::size_t c = 0; c < columns; ++c) {
      scoresOf(problem_.x.column(block, j + c), means_.data() + c * kBlock,
               grows_.data() + c * kBlock, event_, risk_, cumulative, rows,
               scores + (j + c) * kBlock);
    }
  });
}

void ForwardScores::findRows(std::size_t block) {
  const risk::Arrangement& a = problem_.arrangement;
  const std::size_t from = block * kBlock;
  const std::size_t rows = problem_.x.rowsOf(block);
  for (std::size_t i = 0; i < rows; ++i) event_[i] = a.event[from + i];
  std::copy_n(hazards_.risk.data() + from, rows, risk_);
  for (std::size_t i = 0; i < rows && a.weighted; ++i) risk_[i] /= a.weight[from + i];
}

void ForwardScores::findGroups(std::size_t block) {
  const risk::Arrangement& a = problem_.arrangement;
  const std::size_t from = block * kBlock;
  const std::size_t stop = from + problem_.x.rowsOf(block);
  std::fill(scale_, scale_ + kBlock, 0.0);
  std::fill(increment_, increment_ + kBlock, 0.0);
  groups_.clear();
  const auto first = std::lower_bound(a.firstEvent.begin(), a.firstEvent.end(), from);
  auto k = static_cast<std::size_t>(first - a.firstEvent.begin());
  // Events that fail together up to the row before the block, or beyond it.
  if (continuedRows(problem_, block) > 0 && k > 0 &&
      a.firstEvent[k - 1] + a.events[k - 1] >= from && a.events[k - 1] > 1) {
    addGroup(block, k - 1);
  }
  for (; k < a.times() && a.firstEvent[k] < stop; ++k) {
    if (a.events[k] > 1) {
      addGroup(block, k);
      continue;
    }
    const std::size_t row = a.firstEvent[k] - from;
    scale_[row] = 1.0 / hazards_.all(k);
    increment_[row] = hazards_.increment[k];
  }
}

void ForwardScores::addGroup(std::size_t block, std::size_t k) {
  const risk::Arrangement& a = problem_.arrangement;
  const std::size_t from = block * kBlock;
  const std::size_t stop = from + problem_.x.rowsOf(block);
  const std::size_t first = a.firstEvent[k];
  const std::size_t last = first + a.events[k];  // one past the last event
  const std::size_t end = a.stratumRow[a.timeStratum[k] + std::size_t{1}];
  Group group{};
  group.starts = first >= from;
  group.begin = group.starts ? first - from : 0;
  group.stop = std::min(last, stop) - from;
  group.follows = last < stop && last < end;
  if (last == end) {
    group.others = Group::Others::kNone;
  } else if (last < stop) {
    group.others = Group::Others::kInBlock;
    group.othersRow = last - from;
  } else {
    group.others = group.starts ? Group::Others::kBehind : Group::Others::kBefore;
    sumsToEnd(problem_, hazards_, last, group.starts ? othersBehind_ : othersBefore_);
  }
  if (!group.starts) sumsToEnd(problem_, hazards_, first, wholeBefore_);
  const TieMoments m = tieMoments(problem_, hazards_, ties_, k);
  group.once = 1.0 / hazards_.all(k);
  group.u = m.u / a.eventWeight[k];
  group.uf = m.uf / a.eventWeight[k];
  group.u2 = m.u2;
  group.u2f = m.u2f;
  group.u2ff = m.u2ff;
  groups_.push_back(group);
}

void ForwardScores::addGroups(const double* sums, std::size_t j, double* mean,
                              double* grows) const {
  for (const Group& group : groups_) {
    const double whole = group.starts ? sums[group.begin] : wholeBefore_[j];
    double others = 0.0;
    if (group.others == Group::Others::kInBlock) others = sums[group.othersRow];
    if (group.others == Group::Others::kBefore) others = othersBefore_[j];
    if (group.others == Group::Others::kBehind) others = othersBehind_[j];
    // Multiplied one after the other: the square of 1 / D0 may be below the smallest number.
    const double o = others * group.once;
    const double f = (whole - others) * group.once;
    const double own = (group.u2f * o + group.u2ff * f) * group.once;
    const double all = (group.u2 * o + group.u2f * f) * group.once;
    std::fill(mean + group.begin, mean + group.stop, group.u * o + group.uf * f);
    if (group.starts) grows[group.begin] += own;
    if (group.follows) grows[group.stop] += all - own;
  }
}

// From what B grows by to B itself, or to what is carried on alone.
void ForwardScores::runForward(std::size_t block, std::size_t j, std::size_t columns, bool kept) {
  const risk::Arrangement& a = problem_.arrangement;
  const std::size_t from = block * kBlock;
  const std::size_t stop = from + problem_.x.rowsOf(block);
  double running[kAbreast];
  std::copy_n(carried_.data() + j, columns, running);
  for (std::size_t begin = from; begin < stop;) {
    if (begin == a.stratumRow[a.rowStratum[begin]]) std::fill(running, running + columns, 0.0);
    const std::size_t end =
        std::min<std::size_t>(stop, a.stratumRow[a.rowStratum[begin] + std::size_t{1}]);
    const PrefixSums add = kept ? kPrefixSums<true>[columns - 1] : kPrefixSums<false>[columns - 1];
    add(grows_.data(), begin - from, end - from, running);
    begin = end;
  }
  std::copy_n(running, columns, carried_.data() + j);
}

}  // namespace survmeth::engine::cox
