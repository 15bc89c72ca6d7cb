#include "engine/risk/sums.h"

#include <algorithm>
#include <limits>

#include "engine/risk/parts.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::risk {

Sums::Sums(const Arrangement& arrangement) : arrangement_(arrangement), stays_(arrangement) {
  for (std::size_t k = 0; k < arrangement.times(); ++k) {
    if (arrangement.events[k] > 1) tied_.push_back(static_cast<std::uint32_t>(k));
  }
}

void Sums::overRiskSets(std::span<const double> value, std::span<double> others,
                        std::span<double> failing, const Scales& scales) const {
  if (!scales.empty()) {
    sumScaled(value, others, failing, scales);
  } else if (arrangement_.lateEntry()) {
    stays_.overRiskSets(value, others, failing);
  } else {
    sumWithoutEntry(value, others, failing);
  }
}

void Sums::overRiskSets(std::span<const double> factor, const numerics::BlockedColumns& x,
                        std::size_t column, std::size_t columns, std::span<double> others,
                        std::span<double> failing) const {
  stays_.overRiskSets(factor, x, column, columns, others, failing);
}

void Sums::sumWithoutEntry(std::span<const double> value, std::span<double> others,
                           std::span<double> failing) const {
  const Arrangement& a = arrangement_;
  std::size_t tie = tied_.size();
  for (std::size_t s = a.strata(); s-- > 0;) {
    if (a.stratumTime[s] == a.stratumTime[s + 1]) continue;
    numerics::RunningSum sum;
    double before = 0.0;
    std::size_t row = a.stratumRow[s + 1];
    // An event that has its time for itself is the last row of that time to be met, so that what
    // the rows before it leave there is overwritten and nothing has to be decided.
    const auto addDownTo = [&](std::size_t stop) {
      while (row > stop) {
        --row;
        const std::size_t k = a.end[row] - std::size_t{1};
        others[k] = before;
        failing[k] = value[row];
        before = sum.add(value[row]);
      }
    };
    for (; tie > 0 && tied_[tie - 1] >= a.stratumTime[s]; --tie) {
      const std::size_t k = tied_[tie - 1];
      addDownTo(a.firstEvent[k] + a.events[k]);
      others[k] = before;
      double fail = 0.0;
      while (row > a.firstEvent[k]) {
        fail += value[--row];
        before = sum.add(value[row]);
      }
      failing[k] = fail;
    }
    addDownTo(a.firstEvent[a.stratumTime[s]]);
  }
}

std::vector<double> Sums::largestInRiskSets(std::span<const double> value) const {
  constexpr double kNone = -std::numeric_limits<double>::infinity();
  const Arrangement& a = arrangement_;
  std::vector<double> largest(a.times(), kNone);
  for (std::size_t s = 0; s < a.strata(); ++s) {
    double current = kNone;
    std::size_t row = a.stratumRow[s + 1];
    for (std::size_t k = a.stratumTime[s + 1]; k-- > a.stratumTime[s];) {
      for (; row > a.firstEvent[k]; --row) {
        // Those that fail are at risk now, whenever they came.
        if (a.event[row - 1] != 0) largest[k] = std::max(largest[k], value[row - 1]);
        if (a.firstTime(row - 1) == a.stratumTime[s]) current = std::max(current, value[row - 1]);
      }
      largest[k] = std::max(largest[k], current);
    }
  }
  const auto raise = [&](std::size_t k, double by) { largest[k] = std::max(largest[k], by); };
  stays_.forThoseAtOneTime([&](std::size_t row, std::size_t k) { raise(k, value[row]); });
  std::vector<double> starting;
  for (const unsigned bit : stays_.places()) {
    starting.assign(a.times(), kNone);
    stays_.forThoseAcross(bit, [&](std::size_t row, std::size_t from, std::size_t to) {
      starting[from] = std::max(starting[from], value[row]);
      starting[to] = std::max(starting[to], value[row]);
    });
    const std::size_t half = std::size_t{1} << bit;
    for (std::size_t middle = half; middle < a.times(); middle += 2 * half) {
      double running = kNone;
      for (std::size_t k = middle - half; k < middle; ++k) {
        raise(k, running = std::max(running, starting[k]));
      }
      running = kNone;
      for (std::size_t k = std::min(middle + half, a.times()); k-- > middle;) {
        raise(k, running = std::max(running, starting[k]));
      }
    }
  }
  return largest;
}

void Sums::overTimes(std::span<const double> at, std::span<const double> own, std::span<double> sum,
                     const Scales& scales) const {
  const Arrangement& a = arrangement_;
  if (a.times() == 0) {
    std::fill(sum.begin(), sum.end(), 0.0);
    return;
  }
  if (!scales.empty()) {
    sumTimesScaled(at, own, sum, scales);
    return;
  }
  // Sums up to each time from the stratum's first on, with a 0 before it.
  std::vector<double> before(a.times() + a.strata());
  for (std::size_t s = 0; s < a.strata(); ++s) {
    double* upTo = before.data() + s;
    numerics::RunningSum running;
    upTo[a.stratumTime[s]] = 0.0;
    for (std::size_t k = a.stratumTime[s]; k < a.stratumTime[s + 1]; ++k) {
      upTo[k + 1] = running.add(at[k]);
    }
  }
  if (a.lateEntry()) {
    stays_.overTimes(at, own, before, sum);
    return;
  }
  inParts(a.rows(), [&](std::size_t i) {
    const std::size_t event = a.event[i];
    // A time that exists, whatever it is multiplied with.
    const double mine = own[std::max<std::size_t>(a.end[i], 1) - 1];
    // A product, where a decision would be guessed wrong for every third row.
    sum[i] = static_cast<double>(event) * mine;
    sum[i] += before[a.rowStratum[i] + a.end[i] - event];
  });
}

}  // namespace survmeth::engine::risk
