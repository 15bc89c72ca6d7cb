// Checks the columns and gathers each group's counts by time.
#include "analysis/survivalData.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "analysis/invalidRequest.h"

namespace survmeth {
namespace {

void checkShape(const SurvivalData& data) {
  const std::size_t n = data.time.size();
  if (data.event.size() != n || (!data.weight.empty() && data.weight.size() != n) ||
      (!data.group.empty() && data.group.size() != n)) {
    throw InvalidRequest("time", "the columns differ in length");
  }
  if (n < 2) throw InvalidRequest("time", "at least two rows are needed");
  // Flat arrays of the entry points are counted in int, twelve elements a row.
  if (n > static_cast<std::size_t>(std::numeric_limits<int>::max() / 12 - 2)) {
    throw InvalidRequest("time", "there are too many rows");
  }
  if (data.groups < 1) throw InvalidRequest("group", "at least one group is needed");
}

void checkValues(const SurvivalData& data) {
  for (std::size_t i = 0; i < data.time.size(); ++i) {
    if (!std::isfinite(data.time[i]) || data.time[i] < 0) {
      throw InvalidRequest("time", "a time is negative or not finite", i);
    }
    const double weight = data.weight.empty() ? 1 : data.weight[i];
    if (!std::isfinite(weight) || weight < 0) {
      throw InvalidRequest("weight", "a weight is negative or not finite", i);
    }
    if (!data.group.empty() && data.group[i] >= data.groups) {
      throw InvalidRequest("group", "a group code is out of range", i);
    }
  }
}

}  // namespace

Tally::Tally(const SurvivalData& data) : data_(data) {
  checkShape(data);
  checkValues(data);
  const std::size_t n = data.time.size();

  if (!data.weight.empty()) {
    const double total = std::accumulate(data.weight.begin(), data.weight.end(), 0.0);
    if (!std::isfinite(total)) throw InvalidRequest("weight", "the weights' sum is not finite");
    // Half the precision's last place at the sum: sums of multiples of it are exact.
    const double quantum =
        std::ldexp(1.0, std::ilogb(total) + 2 - std::numeric_limits<double>::digits);
    const bool whole = quantum <= 1 && std::all_of(data.weight.begin(), data.weight.end(),
                                                   [](double w) { return w == std::trunc(w); });
    quantum_ = whole ? 0 : quantum;
  }

  starts_.assign(data.groups + 1, 0);
  std::vector<double> totals(data.groups, 0.0);
  const auto groupOf = [&data](std::size_t i) { return data.group.empty() ? 0 : data.group[i]; };
  for (std::size_t i = 0; i < n; ++i) {
    ++starts_[groupOf(i) + 1];
    totals[groupOf(i)] += weightOf(i);
  }
  for (std::size_t g = 0; g < data.groups; ++g) {
    if (starts_[g + 1] == 0) throw InvalidRequest("group", "a group has no rows", g);
    if (!(totals[g] > 0)) throw InvalidRequest("group", "a group's weights are all 0", g);
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
  std::vector<TimeCounts> rows;
  rows.reserve(this->rows(group));
  for (std::size_t k = starts_[group]; k < starts_[group + 1]; ++k) {
    const std::size_t i = rows_[k];
    const double weight = weightOf(i);
    if (weight == 0) continue;
    const bool event = data_.event[i] != 0;
    rows.push_back({data_.time[i] + 0.0, event ? weight : 0, event ? 0 : weight});
  }
  std::sort(rows.begin(), rows.end(),
            [](const TimeCounts& a, const TimeCounts& b) { return a.time < b.time; });
  std::size_t last = 0;
  for (std::size_t i = 1; i < rows.size(); ++i) {
    if (rows[i].time == rows[last].time) {
      rows[last].events += rows[i].events;
      rows[last].censored += rows[i].censored;
    } else {
      rows[++last] = rows[i];
    }
  }
  rows.resize(std::min(rows.size(), last + 1));
  return rows;
}

}  // namespace survmeth
