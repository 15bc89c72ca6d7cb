#include "engine/risk/sums.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "numerics/runningSum.h"

namespace survmeth::engine::risk {

// The row's last time at which it is at risk without failing is end - event - 1.
Sums::Sums(const Arrangement& arrangement) : arrangement_(arrangement) {
  for (std::size_t k = 0; k < arrangement.times(); ++k) {
    if (arrangement.events[k] > 1) tied_.push_back(static_cast<std::uint32_t>(k));
  }
  if (!arrangement.lateEntry()) return;
  std::vector<std::vector<std::uint32_t>> byBit(32);
  for (std::uint32_t i = 0; i < arrangement.rows(); ++i) {
    const std::uint32_t a = arrangement.first[i];
    const std::uint32_t stop = arrangement.end[i] - arrangement.event[i];
    if (a == arrangement.stratumTime[arrangement.rowStratum[i]] || stop <= a) continue;
    if (stop == a + 1) {
      once_.push_back(i);
    } else {
      byBit[static_cast<std::size_t>(std::bit_width(a ^ (stop - 1))) - 1].push_back(i);
    }
  }
  for (unsigned bit = 0; bit < 32; ++bit) {
    if (!byBit[bit].empty()) places_.push_back({bit, std::move(byBit[bit])});
  }
}

void Sums::overRiskSets(std::span<const double> value, std::span<double> others,
                        std::span<double> failing) const {
  const Arrangement& a = arrangement_;
  std::size_t tie = tied_.size();
  for (std::size_t s = a.strata(); s-- > 0;) {
    if (a.stratumTime[s] == a.stratumTime[s + 1]) continue;
    if (a.lateEntry()) {
      sumStratum(s, value, others, failing);
      continue;
    }
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
  if (!a.lateEntry()) return;
  for (const std::uint32_t i : once_) others[a.first[i]] += value[i];
  std::vector<double> starting;
  for (const Place& place : places_) {
    starting.assign(a.times(), 0.0);
    for (const std::uint32_t i : place.rows) {
      starting[a.first[i]] += value[i];
      starting[a.end[i] - a.event[i] - 1] += value[i];
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

// One stratum, the rows that are at risk from its first time on, where others are not.
void Sums::sumStratum(std::size_t s, std::span<const double> value, std::span<double> others,
                      std::span<double> failing) const {
  const Arrangement& a = arrangement_;
  numerics::RunningSum sum;
  double current = 0.0;
  std::size_t row = a.stratumRow[s + 1];
  for (std::size_t k = a.stratumTime[s + 1]; k-- > a.stratumTime[s];) {
    const std::size_t stop = a.firstEvent[k] + a.events[k];
    while (row > stop) {
      --row;
      if (a.first[row] == a.stratumTime[s]) current = sum.add(value[row]);
    }
    others[k] = current;
    double fail = 0.0;
    while (row > a.firstEvent[k]) {
      --row;
      fail += value[row];
      // A row that fails is at risk at the times before.
      if (a.first[row] == a.stratumTime[s]) current = sum.add(value[row]);
    }
    failing[k] = fail;
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
  for (const std::uint32_t i : once_) raise(a.first[i], value[i]);
  std::vector<double> starting;
  for (const Place& place : places_) {
    starting.assign(a.times(), kNone);
    for (const std::uint32_t i : place.rows) {
      double& from = starting[a.first[i]];
      from = std::max(from, value[i]);
      double& to = starting[a.end[i] - a.event[i] - 1];
      to = std::max(to, value[i]);
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

void Sums::overTimes(std::span<const double> at, std::span<const double> own,
                     std::span<double> sum) const {
  const Arrangement& a = arrangement_;
  if (a.times() == 0) {
    std::fill(sum.begin(), sum.end(), 0.0);
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
    for (std::size_t i = a.stratumRow[s]; i < a.stratumRow[s + 1]; ++i) {
      const std::size_t event = a.event[i];
      const double whole = upTo[a.end[i] - event];
      // A time that exists, whatever it is multiplied with.
      const double mine = own[std::max<std::size_t>(a.end[i], 1) - 1];
      // A product, where a decision would be guessed wrong for every third row.
      sum[i] = whole + static_cast<double>(event) * mine;
    }
    if (!a.lateEntry()) continue;
    for (std::size_t i = a.stratumRow[s]; i < a.stratumRow[s + 1]; ++i) {
      if (a.first[i] == a.stratumTime[s]) continue;
      sum[i] = a.event[i] != 0 ? own[a.end[i] - std::size_t{1}] : 0.0;
    }
  }
  for (const std::uint32_t i : once_) sum[i] += at[a.first[i]];
  for (const Place& place : places_) {
    const std::size_t half = std::size_t{1} << place.bit;
    for (std::size_t middle = half; middle < a.times(); middle += 2 * half) {
      double running = 0.0;
      for (std::size_t k = middle; k-- > middle - half;) before[k] = (running += at[k]);
      running = 0.0;
      const std::size_t stop = std::min(middle + half, a.times());
      for (std::size_t k = middle; k < stop; ++k) before[k] = (running += at[k]);
    }
    for (const std::uint32_t i : place.rows) {
      sum[i] += before[a.first[i]] + before[a.end[i] - std::size_t{a.event[i]} - 1];
    }
  }
}

}  // namespace survmeth::engine::risk
