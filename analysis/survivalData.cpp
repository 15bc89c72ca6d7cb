// Checks the columns and gathers each group's counts by time.
#include "analysis/survivalData.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "analysis/checks.h"
#include "numerics/order.h"

namespace survmeth {

using engine::Refusal;
using engine::Role;
namespace {

void check(const SurvivalData& data) {
  const std::size_t n = data.time.size();
  requireRows(n, 2, Role::kTime, "at least two rows are needed");
  require(data.event.size() == n && (data.weight.empty() || data.weight.size() == n) &&
              (data.group.empty() || data.group.size() == n),
          Role::kTime, "the columns differ in length");
  require(data.groups >= 1, Role::kGroup, "at least one group is needed");
  requireTimes(data.time);
  requireWeights(data.weight);
  requireCodes(data.group, data.groups, Role::kGroup, "group");
}

}  // namespace

Tally::Tally(const SurvivalData& data) : data_(data) {
  check(data);
  const std::size_t n = data.time.size();

  const double total = std::accumulate(data.weight.begin(), data.weight.end(), 0.0);
  if (total > 0) {
    // Half the precision's last place at the sum: sums of multiples of it are exact.
    const double quantum =
        std::ldexp(1.0, std::ilogb(total) + 2 - std::numeric_limits<double>::digits);
    const bool whole = quantum <= 1 && std::all_of(data.weight.begin(), data.weight.end(),
                                                   [](double w) { return w == std::trunc(w); });
    quantum_ = whole ? 0 : quantum;
  }

  starts_.assign(data.groups + 1, 0);
  std::vector<double> totals(data.groups, 0.0);
  std::vector<bool> anyWeight(data.groups, data.weight.empty());
  const auto groupOf = [&data](std::size_t i) { return data.group.empty() ? 0 : data.group[i]; };
  for (std::size_t i = 0; i < n; ++i) {
    ++starts_[groupOf(i) + 1];
    totals[groupOf(i)] += weightOf(i);
    if (!data.weight.empty() && data.weight[i] > 0) anyWeight[groupOf(i)] = true;
  }
  for (std::size_t g = 0; g < data.groups; ++g) {
    if (starts_[g + 1] == 0) throw Refusal(Role::kGroup, Refusal::kNone, "a group has no rows", g);
    if (!anyWeight[g])
      throw Refusal(Role::kGroup, Refusal::kNone, "a group's weights are all 0", g);
    if (!(totals[g] > 0)) {
      throw Refusal(Role::kGroup, Refusal::kNone,
                    "a group's weights vanish beside the largest weights", g);
    }
  }
  std::partial_sum(starts_.begin(), starts_.end(), starts_.begin());
  rows_.resize(n);
  std::vector<std::size_t> next(starts_.begin(), starts_.end() - 1);
  for (std::size_t i = 0; i < n; ++i) rows_[next[groupOf(i)]++] = static_cast<std::uint32_t>(i);
}

double Tally::weightOf(std::size_t row) const {
  if (data_.weight.empty()) return 1;
  const double weight = data_.weight[row];
  return quantum_ > 0 ? std::nearbyint(weight / quantum_) * quantum_ : weight;
}

std::vector<TimeCounts> Tally::counts(std::size_t group) const {
  std::vector<std::uint32_t> kept;
  std::vector<double> times;
  kept.reserve(rows(group));
  times.reserve(rows(group));
  for (std::size_t k = starts_[group]; k < starts_[group + 1]; ++k) {
    if (weightOf(rows_[k]) == 0) continue;
    kept.push_back(rows_[k]);
    times.push_back(data_.time[rows_[k]] + 0.0);
  }
  std::vector<TimeCounts> counts;
  counts.reserve(kept.size());
  for (const std::uint32_t at : numerics::ascendingOrder(times)) {
    if (counts.empty() || counts.back().time != times[at]) counts.push_back({times[at], 0, 0});
    TimeCounts& here = counts.back();
    (data_.event[kept[at]] != 0 ? here.events : here.censored) += weightOf(kept[at]);
  }
  return counts;
}

}  // namespace survmeth
