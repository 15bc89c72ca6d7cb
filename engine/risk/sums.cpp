#include "engine/risk/sums.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "engine/risk/parts.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::risk {

// The row's last time at which it is at risk without failing is end - event - 1.
Sums::Sums(const Arrangement& arrangement) : arrangement_(arrangement) {
  for (std::size_t k = 0; k < arrangement.times(); ++k) {
    if (arrangement.events[k] > 1) tied_.push_back(static_cast<std::uint32_t>(k));
  }
  if (!arrangement.lateEntry()) return;
  std::vector<std::vector<Stay>> byBit(32);
  for (std::uint32_t i = 0; i < arrangement.rows(); ++i) {
    const std::uint32_t a = arrangement.first[i];
    const std::uint32_t stop = arrangement.end[i] - arrangement.event[i];
    if (stop <= a) continue;
    if (a == arrangement.stratumTime[arrangement.rowStratum[i]]) {
      fromStart_.push_back(i);
    } else if (stop == a + 1) {
      once_.push_back({i, a, a});
    } else {
      const int width = std::bit_width(a ^ (stop - 1));
      byBit[static_cast<std::size_t>(width) - 1].push_back({i, a, stop - 1});
    }
  }
  for (unsigned bit = 0; bit < 32; ++bit) {
    if (!byBit[bit].empty()) places_.push_back({bit, std::move(byBit[bit])});
  }
}

void Sums::overRiskSets(std::span<const double> value, std::span<double> others,
                        std::span<double> failing, const Scales& scales) const {
  const Arrangement& a = arrangement_;
  if (!scales.empty()) {
    sumScaled(value, others, failing, scales);
    return;
  }
  if (!a.lateEntry()) {
    sumWithoutEntry(value, others, failing);
    return;
  }
  sumFromStart(value, others, failing);
  for (const Stay& stay : once_) others[stay.from] += value[stay.row];
  std::vector<double> starting;
  for (const Place& place : places_) {
    starting.assign(a.times(), 0.0);
    for (const Stay& stay : place.stays) {
      starting[stay.from] += value[stay.row];
      starting[stay.to] += value[stay.row];
    }
    // Blocks of 2^(bit + 1) times; the sums run from both sides towards the middle's edges.
    const std::size_t half = std::size_t{1} << place.bit;
    for (std::size_t middle = half; middle < a.times(); middle += 2 * half) {
      double sum = 0.0;
      for (std::size_t k = middle - half; k < middle; ++k) others[k] += (sum += starting[k]);
      sum = 0.0;
      for (std::size_t k = std::min(middle + half, a.times()); k-- > middle;) {
        others[k] += (sum += starting[k]);
      }
    }
  }
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

// The rows that are at risk from the first time on, and those that fail.
void Sums::sumFromStart(std::span<const double> value, std::span<double> others,
                        std::span<double> failing) const {
  const Arrangement& a = arrangement_;
  std::size_t next = fromStart_.size();
  for (std::size_t s = a.strata(); s-- > 0;) {
    numerics::RunningSum sum;
    double current = 0.0;
    for (std::size_t k = a.stratumTime[s + 1]; k-- > a.stratumTime[s];) {
      const std::size_t stop = a.firstEvent[k] + a.events[k];
      for (; next > 0 && fromStart_[next - 1] >= stop; --next) {
        current = sum.add(value[fromStart_[next - 1]]);
      }
      others[k] = current;
      double fail = value[stop - 1];
      for (std::size_t row = stop - 1; row > a.firstEvent[k]; --row) fail += value[row - 1];
      failing[k] = fail;
    }
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
  for (const Stay& stay : once_) raise(stay.from, value[stay.row]);
  std::vector<double> starting;
  for (const Place& place : places_) {
    starting.assign(a.times(), kNone);
    for (const Stay& stay : place.stays) {
      starting[stay.from] = std::max(starting[stay.from], value[stay.row]);
      starting[stay.to] = std::max(starting[stay.to], value[stay.row]);
    }
    const std::size_t half = std::size_t{1} << place.bit;
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
  const bool late = a.lateEntry();
  inParts(a.rows(), [&](std::size_t i) {
    const std::size_t event = a.event[i];
    // A time that exists, whatever it is multiplied with.
    const double mine = own[std::max<std::size_t>(a.end[i], 1) - 1];
    // A product, where a decision would be guessed wrong for every third row.
    sum[i] = static_cast<double>(event) * mine;
    if (!late) sum[i] += before[a.rowStratum[i] + a.end[i] - event];
  });
  for (const std::uint32_t i : fromStart_) {
    sum[i] += before[a.rowStratum[i] + a.end[i] - std::size_t{a.event[i]}];
  }
  for (const Stay& stay : once_) sum[stay.row] += at[stay.from];
  for (const Place& place : places_) {
    const std::size_t half = std::size_t{1} << place.bit;
    for (std::size_t middle = half; middle < a.times(); middle += 2 * half) {
      double running = 0.0;
      for (std::size_t k = middle; k-- > middle - half;) before[k] = (running += at[k]);
      running = 0.0;
      const std::size_t stop = std::min(middle + half, a.times());
      for (std::size_t k = middle; k < stop; ++k) before[k] = (running += at[k]);
    }
    for (const Stay& stay : place.stays) sum[stay.row] += before[stay.from] + before[stay.to];
  }
}

}  // namespace survmeth::engine::risk
