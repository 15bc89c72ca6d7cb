// The actuarial life table of one stratum.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "survival/life/life.h"
#include "survival/life/stratum.h"

namespace {

// Consecutive intervals share their bounds: interval k = 1..size() is bounds[k - 1]..bounds[k].
// Kept apart from the caller's block, which may be a row too short.
class Intervals {
 public:
  int size() const { return bounds_.empty() ? 0 : static_cast<int>(bounds_.size()) - 1; }
  double lower(int k) const { return bounds_[static_cast<std::size_t>(k) - 1]; }
  double upper(int k) const { return bounds_[static_cast<std::size_t>(k)]; }
  double width(int k) const { return upper(k) - lower(k); }

  // From 0 past the last time, with one more where the first time is not at 0.
  static Intervals ofWidth(double width, double first, double last) {
    Intervals list;
    if (!(width > 0.0) || !std::isfinite(width)) return list;
    // A last time that is a multiple of the width but for rounding counts as one.
    constexpr double roundingSlack = 1e-11;
    const double count = std::floor(last / width + roundingSlack) + 1.0 + (first > 0.0 ? 1.0 : 0.0);
    if (!(count >= 1.0 && count <= survival::kMostIntervals)) return list;
    list.bounds_.resize(static_cast<std::size_t>(count) + 1);
    list.bounds_[0] = 0.0;
    for (std::size_t k = 1; k < list.bounds_.size(); ++k) {
      list.bounds_[k] = list.bounds_[k - 1] + width;
    }
    return list;
  }

  static Intervals between(const matrix* bounds, int count) {
    Intervals list;
    if (count < 1 || count > survival::kMostIntervals) return list;
    list.bounds_.reserve(static_cast<std::size_t>(count) + 1);
    if (bounds->vbget(1, 1) > 0.0) list.bounds_.push_back(0.0);
    for (int i = 1; i <= count; ++i) list.bounds_.push_back(bounds->vbget(i, 1));
    return list;
  }

 private:
  std::vector<double> bounds_;
};

// Counts, survival, density and hazard of every interval, until nothing is left at risk. Returns
// the number of intervals done.
int firstPass(const survival::Stratum& stratum, const Intervals& intervals, double total,
              matrix* table) {
  const int m = stratum.size();
  double atRisk = total;
  double survival = 1.0;     // at the start of the interval
  double conditional = 1.0;  // of the interval before
  double guarded = 0.0;
  double unguarded = 0.0;
  int next = 1;
  for (int k = 1; k <= intervals.size(); ++k) {
    const int row = k + 1;
    const double upper = intervals.upper(k);
    double events = 0.0;
    double censored = 0.0;
    const auto assign = [&] {
      events += stratum.events(next);
      censored += stratum.censored(next);
      ++next;
    };
    // Only the first row at an upper bound still belongs here; callers' tables count on it.
    if (next <= m && stratum.time(next) <= upper) assign();
    while (next <= m && stratum.time(next) < upper) assign();

    const double effective = atRisk - censored * 0.5;
    table->vbset(row, 1, intervals.lower(k));
    table->vbset(row, 3, atRisk);
    table->vbset(row, 4, events);
    table->vbset(row, 5, censored);
    table->vbset(row, 6, effective);
    if (effective <= 0.0) return k - 1;

    const double width = intervals.width(k);
    const double before = survival;
    if (k > 1) survival = before * conditional;
    conditional = 1.0 - events / effective;
    table->vbset(row, 7, conditional);
    table->vbset(row, 8, survival);
    // The row above, the origin included, is divided by this interval's width: the same number
    // where all are equal.
    table->vbset(row - 1, 9, (before - survival) / width);
    table->vbset(row, 10, 2.0 * (1.0 - conditional) / ((1.0 + conditional) * width));
    table->vbset(row, 11, guarded);
    if (k > 1) table->vbset(row, 12, unguarded);

    const double term = (1.0 - conditional) / (conditional * effective);
    if (conditional > 0.0) guarded += term;
    unguarded += term;
    atRisk = atRisk - events - censored;
  }
  return intervals.size();
}

// Standard errors of density and hazard of interval k.
void writeErrors(int k, double width, matrix* table) {
  const int row = k + 1;
  const double effective = table->vbget(row, 6);
  const double conditional = table->vbget(row, 7);
  const double survival = table->vbget(row, 8);
  const double hazard = table->vbget(row, 10);
  const double dying = 1.0 - conditional;
  if (dying <= 0.0) {
    // No events: callers tell the first interval from later ones by this marker.
    const double marker = k == 1 ? -51.0 : 0.0;
    table->vbset(row, 13, marker);
    table->vbset(row, 14, marker);
    return;
  }
  table->vbset(
      row, 13,
      survival * dying / width * sqr(table->vbget(row, 12) + conditional / (dying * effective)));
  const double half = hazard * width / 2.0;
  table->vbset(row, 14, sqr(hazard * hazard / (dying * effective) * (1.0 - half * half)));
}

// Median residual lifetime at the start of interval k, and its standard error; `fallen` is the
// first later interval that starts with survival below half of interval k's, 0 where none does.
void writeMedian(int k, int fallen, const Intervals& intervals, matrix* table) {
  double median = kMissing;
  double error = kMissing;
  if (fallen > 0) {
    const int j = fallen - 1;
    const double half = table->vbget(k + 1, 8) / 2.0;
    const double above = table->vbget(j + 1, 8);
    const double below = table->vbget(fallen + 1, 8);
    const double density = table->vbget(j + 1, 9);
    const double value = (intervals.lower(j) - intervals.lower(k)) +
                         intervals.width(j) * (above - half) / (above - below);
    const double spread = half / sqr(table->vbget(k + 1, 6)) / density;
    if (value > 0.0 && density > 0.0 && spread > 0.0) {
      median = value;
      error = spread;
    }
  }
  table->vbset(k + 1, 15, median);
  table->vbset(k + 1, 16, error);
}

void secondPass(int nRows, const Intervals& intervals, matrix* table, std::vector<int>& lows) {
  const auto survival = [&](int k) { return table->vbget(k + 1, 8); };
  // The later intervals whose survival is below that of every one between: from the last to the
  // nearest, so that survival rises. The first interval below a level is always one of them.
  lows.clear();
  for (int k = nRows; k >= 1; --k) {
    if (k < nRows || table->vbget(k + 1, 4) != 0.0) {
      const double half = survival(k) / 2.0;
      int fallen = 0;
      if (half > 0.0) {
        const auto end = std::partition_point(lows.begin(), lows.end(),
                                              [&](int low) { return survival(low) < half; });
        if (end != lows.begin()) fallen = *(end - 1);
      }
      writeErrors(k, intervals.width(k), table);
      writeMedian(k, fallen, intervals, table);
    }
    while (!lows.empty() && survival(lows.back()) >= survival(k)) lows.pop_back();
    if (!std::isnan(survival(k))) lows.push_back(k);
  }
}

}  // namespace

int ComputeLife(int offset, int m, int nIntervals, double width, matrix* time, matrix* status,
                matrix* weight, matrix* bounds, short countsFormat, short intervalsByWidth,
                int eventCode, matrix* intervals, double& total, matrix* table, int& nRows) {
  const survival::Stratum stratum(offset, m, countsFormat == kTrue, eventCode, time, status,
                                  weight);
  const auto timeAt = [&](int i) { return time->vbget(survival::indexSum(offset, i), 1); };
  const Intervals list = intervalsByWidth == kTrue
                             ? Intervals::ofWidth(width, timeAt(1), timeAt(stratum.size()))
                             : Intervals::between(bounds, nIntervals);
  // Nothing is allocated from here on: a failed allocation must not leave tables half written.
  std::vector<int> lows;
  lows.reserve(static_cast<std::size_t>(list.size()));
  for (int k = 1; k <= list.size(); ++k) {
    intervals->vbset(k, 1, list.lower(k));
    intervals->vbset(k, 2, list.upper(k));
  }
  total = stratum.total();
  table->vbset(1, 6, total);
  table->vbset(1, 7, 1.0);
  table->vbset(1, 8, 1.0);

  nRows = firstPass(stratum, list, total, table);
  if (nRows >= 2) {
    const double last = list.lower(nRows);
    table->vbset(nRows + 2, 1, last + (last - list.lower(nRows - 1)));
  }
  secondPass(nRows, list, table, lows);
  return 0;
}
