// Sums of values that lie beyond what one unit can hold: the sums of sums.cpp in units that run along.
#include <algorithm>
#include <vector>

#include "engine/risk/sums.h"
#include "numerics/elementary.h"

namespace survmeth::engine::risk {

double scaleFactor(double steps) {
  static const double kOnce = numerics::exp(-kScaleStep);
  static const double kTwice = numerics::exp(-2.0 * kScaleStep);
  if (steps == 0.0) return 1.0;
  if (steps == 1.0) return kOnce;
  // Three steps are below every number beside what has no step at all.
  return steps == 2.0 ? kTwice : 0.0;
}

namespace {

double in(const ScaledSum& sum, double scale) {
  return sum.value() * scaleFactor(scale - sum.scale());
}

}  // namespace

void Sums::sumScaled(std::span<const double> value, std::span<double> others,
                     std::span<double> failing, const Scales& scales) const {
  const Arrangement& a = arrangement_;
  const bool late = a.lateEntry();
  const std::vector<std::uint32_t>& fromStart = stays_.fromStart();
  std::size_t next = late ? fromStart.size() : a.rows();
  const auto rowBefore = [&](std::size_t m) {
    return late ? std::size_t{fromStart[m - 1]} : m - 1;
  };
  for (std::size_t s = a.strata(); s-- > 0;) {
    ScaledSum sum;
    for (std::size_t k = a.stratumTime[s + 1]; k-- > a.stratumTime[s];) {
      const std::size_t stop = a.firstEvent[k] + a.events[k];
      for (; next > 0 && rowBefore(next) >= stop; --next) {
        sum.add(value[rowBefore(next)], scales.row[rowBefore(next)]);
      }
      others[k] = in(sum, scales.time[k]);
      ScaledSum fail;
      for (std::size_t row = stop; row-- > a.firstEvent[k];) fail.add(value[row], scales.row[row]);
      failing[k] = in(fail, scales.time[k]);
    }
    while (next > 0 && rowBefore(next) >= a.stratumRow[s]) --next;
  }
  const auto add = [&](std::size_t k, const ScaledSum& sum) {
    others[k] += in(sum, scales.time[k]);
  };
  stays_.forThoseAtOneTime([&](std::size_t row, std::size_t k) {
    others[k] += value[row] * scaleFactor(scales.time[k] - scales.row[row]);
  });
  std::vector<ScaledSum> starting;
  for (const unsigned bit : stays_.places()) {
    starting.assign(a.times(), {});
    stays_.forThoseAcross(bit, [&](std::size_t row, std::size_t from, std::size_t to) {
      starting[from].add(value[row], scales.row[row]);
      starting[to].add(value[row], scales.row[row]);
    });
    const std::size_t half = std::size_t{1} << bit;
    for (std::size_t middle = half; middle < a.times(); middle += 2 * half) {
      ScaledSum up;
      for (std::size_t k = middle - half; k < middle; ++k) {
        up.add(starting[k].value(), starting[k].scale());
        add(k, up);
      }
      ScaledSum down;
      for (std::size_t k = std::min(middle + half, a.times()); k-- > middle;) {
        down.add(starting[k].value(), starting[k].scale());
        add(k, down);
      }
    }
  }
}

void Sums::sumTimesScaled(std::span<const double> at, std::span<const double> own,
                          std::span<double> sum, const Scales& scales) const {
  const Arrangement& a = arrangement_;
  const auto ofRow = [&](const ScaledSum& total, std::size_t i) {
    return in(total, -scales.row[i]);
  };
  // Sums up to each time from the stratum's first on, with an empty one before it.
  std::vector<ScaledSum> before(a.times() + a.strata());
  const bool late = a.lateEntry();
  const std::vector<std::uint32_t>& fromStart = stays_.fromStart();
  std::size_t start = 0;
  for (std::size_t s = 0; s < a.strata(); ++s) {
    ScaledSum* upTo = before.data() + s;
    for (std::size_t k = a.stratumTime[s]; k < a.stratumTime[s + 1]; ++k) {
      upTo[k + 1] = upTo[k];
      upTo[k + 1].add(at[k], -scales.time[k]);
    }
    for (std::size_t i = a.stratumRow[s]; i < a.stratumRow[s + 1]; ++i) {
      sum[i] = 0.0;
      if (a.event[i] != 0) {
        const std::size_t k = a.end[i] - std::size_t{1};
        sum[i] = own[k] * scaleFactor(scales.time[k] - scales.row[i]);
      }
      if (!late) sum[i] += ofRow(upTo[a.end[i] - std::size_t{a.event[i]}], i);
    }
    for (; start < fromStart.size() && fromStart[start] < a.stratumRow[s + 1]; ++start) {
      const std::size_t i = fromStart[start];
      sum[i] += ofRow(upTo[a.end[i] - std::size_t{a.event[i]}], i);
    }
  }
  stays_.forThoseAtOneTime([&](std::size_t row, std::size_t k) {
    sum[row] += at[k] * scaleFactor(scales.time[k] - scales.row[row]);
  });
  for (const unsigned bit : stays_.places()) {
    const std::size_t half = std::size_t{1} << bit;
    for (std::size_t middle = half; middle < a.times(); middle += 2 * half) {
      ScaledSum down;
      for (std::size_t k = middle; k-- > middle - half;) {
        down.add(at[k], -scales.time[k]);
        before[k] = down;
      }
      ScaledSum up;
      const std::size_t stop = std::min(middle + half, a.times());
      for (std::size_t k = middle; k < stop; ++k) {
        up.add(at[k], -scales.time[k]);
        before[k] = up;
      }
    }
    stays_.forThoseAcross(bit, [&](std::size_t row, std::size_t from, std::size_t to) {
      sum[row] += ofRow(before[from], row) + ofRow(before[to], row);
    });
  }
}

}  // namespace survmeth::engine::risk
