// The life-table estimator against a second implementation that takes each rule by itself.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <utility>
#include <vector>

#include "survival/life/life.h"
#include "tests/support/matrices.h"
#include "tests/survival/life/life_calls.h"

namespace {

using survmeth::test::allSame;
using survmeth::test::elements;
using survmeth::test::kMissingMark;
using survmeth::test::kNo;
using survmeth::test::kUntouched;
using survmeth::test::kYes;
using survmeth::test::LifeCall;
using survmeth::test::LifeTables;
using survmeth::test::runLife;
using Values = std::vector<double>;

constexpr double kU = kUntouched;

struct Reference {
  matrix intervals, table;
  double total = 0.0;
  int nRows = 0;
};

void naive(const LifeCall& call, Reference& out) {
  const int m = static_cast<int>(call.time.size());
  const auto t = [&](int i) { return call.time[static_cast<std::size_t>(i) - 1]; };
  std::vector<std::pair<double, double>> list;
  if (call.intervalsByWidth == kYes) {
    int count = static_cast<int>(std::floor(t(m) / call.width + 1e-11)) + 1;
    if (t(1) > 0) ++count;
    for (int k = 1; k <= count; ++k) {
      const double lower = k == 1 ? 0.0 : list.back().second;
      list.emplace_back(lower, lower + call.width);
    }
  } else {
    if (call.bounds[0] > 0) list.emplace_back(0.0, call.bounds[0]);
    for (std::size_t i = 1; i < call.bounds.size(); ++i) {
      list.emplace_back(call.bounds[i - 1], call.bounds[i]);
    }
  }
  matrix& T = out.table;
  const auto lower = [&](int k) { return list[static_cast<std::size_t>(k) - 1].first; };
  const auto upper = [&](int k) { return list[static_cast<std::size_t>(k) - 1].second; };
  const auto width = [&](int k) { return upper(k) - lower(k); };
  const int length = static_cast<int>(list.size());
  for (int k = 1; k <= length; ++k) {
    out.intervals.vbset(k, 1, lower(k));
    out.intervals.vbset(k, 2, upper(k));
  }
  double atRisk = m;
  if (call.countsFormat == kYes) {
    atRisk = 0.0;
    for (std::size_t i = 0; i < call.time.size(); ++i) atRisk += call.status[i] + call.weight[i];
  }
  out.total = atRisk;
  T.vbset(1, 6, out.total);
  T.vbset(1, 7, 1.0);
  T.vbset(1, 8, 1.0);
  out.nRows = length;
  int next = 1;
  Values S(list.size() + 2), p(list.size() + 2), effective(list.size() + 2);
  for (int k = 1; k <= length; ++k) {
    const auto at = static_cast<std::size_t>(k);
    T.vbset(k + 1, 1, lower(k));
    double events = 0.0, censored = 0.0;
    for (bool first = true; next <= m && (first ? t(next) <= upper(k) : t(next) < upper(k));
         first = false, ++next) {
      const auto i = static_cast<std::size_t>(next) - 1;
      if (call.countsFormat == kYes) {
        events += call.status[i];
        censored += call.weight[i];
      } else {
        (call.status[i] == call.eventCode ? events : censored) += call.weight[i];
      }
    }
    T.vbset(k + 1, 4, events);
    T.vbset(k + 1, 5, censored);
    T.vbset(k + 1, 3, atRisk);
    effective[at] = atRisk - censored * 0.5;
    T.vbset(k + 1, 6, effective[at]);
    if (effective[at] <= 0.0) {
      out.nRows = k - 1;
      break;
    }
    p[at] = 1.0 - events / effective[at];
    S[at] = k == 1 ? 1.0 : S[at - 1] * p[at - 1];
    T.vbset(k + 1, 7, p[at]);
    T.vbset(k + 1, 8, S[at]);
    T.vbset(k, 9, ((k == 1 ? 1.0 : S[at - 1]) - S[at]) / width(k));
    T.vbset(k + 1, 10, 2.0 * (1.0 - p[at]) / ((1.0 + p[at]) * width(k)));
    double guarded = 0.0, unguarded = 0.0;
    for (std::size_t i = 1; i < at; ++i) {
      const double term = (1.0 - p[i]) / (p[i] * effective[i]);
      if (p[i] > 0.0) guarded += term;
      unguarded += term;
    }
    T.vbset(k + 1, 11, guarded);
    if (k > 1) T.vbset(k + 1, 12, unguarded);
    atRisk = atRisk - events - censored;
  }
  if (out.nRows > 1) {
    T.vbset(out.nRows + 2, 1, lower(out.nRows) + (lower(out.nRows) - lower(out.nRows - 1)));
  }
  for (int k = 1; k <= out.nRows; ++k) {
    const auto at = static_cast<std::size_t>(k);
    if (k == out.nRows && T.vbget(k + 1, 4) == 0.0) continue;
    const double q = 1.0 - p[at];
    const double h = T.vbget(k + 1, 10);
    const double w = width(k);
    if (q <= 0.0) {
      T.vbset(k + 1, 13, k == 1 ? -51.0 : 0.0);
      T.vbset(k + 1, 14, k == 1 ? -51.0 : 0.0);
    } else {
      T.vbset(k + 1, 13,
              S[at] * q / w * std::sqrt(T.vbget(k + 1, 12) + p[at] / (q * effective[at])));
      T.vbset(k + 1, 14,
              std::sqrt(h * h / (q * effective[at]) * (1.0 - (h * w / 2.0) * (h * w / 2.0))));
    }
    double median = kMissingMark, error = kMissingMark;
    const double half = S[at] / 2.0;
    for (std::size_t j = at; j + 1 <= static_cast<std::size_t>(out.nRows); ++j) {
      if (!(S[j] >= half && S[j + 1] < half)) continue;
      const int row = static_cast<int>(j);
      const double value = (lower(row) - lower(k)) + width(row) * (S[j] - half) / (S[j] - S[j + 1]);
      const double density = T.vbget(row + 1, 9);
      const double spread = half / std::sqrt(effective[at]) / density;
      if (value > 0.0 && density > 0.0 && spread > 0.0) {
        median = value;
        error = spread;
      }
      break;
    }
    T.vbset(k + 1, 15, median);
    T.vbset(k + 1, 16, error);
  }
}

TEST(LifeTable, AgreesWithASecondImplementation) {
  std::mt19937 random(5);
  const auto pick = [&](unsigned n) { return random() % n; };
  for (int round = 0; round < 4000; ++round) {
    LifeCall call;
    call.lifeTable = kYes;
    const unsigned n = 1 + pick(25);
    const double step = pick(2) == 0 ? 0.1 : 1.0;
    double time = pick(2) == 0 ? 0.0 : step;
    const bool counted = pick(3) == 0;
    call.countsFormat = counted ? kYes : kNo;
    for (unsigned i = 0; i < n; ++i) {
      call.time.push_back(time);
      time += step * pick(4);
      call.status.push_back(pick(counted ? 4 : 2));
      // Sometimes weights that let survival rise or fall below 0.
      call.weight.push_back(pick(12) == 0 ? -1.0 : counted ? pick(3) : 1.0);
    }
    if (pick(2) == 0) {
      call.intervalsByWidth = kYes;
      call.width = step * (1 + pick(6));
    } else {
      double bound = pick(2) == 0 ? 0.0 : step;
      const unsigned bounds = 1 + pick(8);
      for (unsigned i = 0; i < bounds; ++i) {
        call.bounds.push_back(bound);
        bound += step * (1 + pick(5));
      }
    }
    call.fill = pick(2) == 0 ? 0.0 : kU;
    const LifeTables out = runLife(call);
    Reference want{matrix(static_cast<int>(out.intervals.rows()), 2, call.fill),
                   matrix(static_cast<int>(out.table.rows()), 16, call.fill)};
    naive(call, want);
    ASSERT_EQ(want.nRows, out.nRows) << round;
    ASSERT_TRUE(survmeth::test::same(want.total, out.total)) << round;
    ASSERT_TRUE(allSame(elements(want.intervals), out.intervals.elements())) << round;
    ASSERT_TRUE(allSame(elements(want.table), out.table.elements())) << round;
  }
}

}  // namespace
