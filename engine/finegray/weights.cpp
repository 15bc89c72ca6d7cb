#include "engine/finegray/weights.h"

#include <algorithm>

#include "numerics/doubleDouble.h"

namespace survmeth::engine::finegray {

CensoringCurves::CensoringCurves(const Response& anyEvent, const Rows& rows, const Groups& groups,
                                 CensoringTies ties, double tieTolerance)
    : ties_(ties), sample_(anyEvent, rows, groups, tieTolerance) {
  censoring_.resize(sample_.times());
  for (std::size_t g = 0; g < sample_.groups(); ++g) {
    double curve = 1.0;
    for (std::size_t k = sample_.first[g]; k < sample_.first[g + 1]; ++k) {
      const double n = censorable(k);
      if (sample_.censored[k] > 0.0) {
        // The last ones leave nobody, whatever rounding says of shares.
        const double stay = n - sample_.censored[k];
        curve *= std::max(stay, 0.0) / n;
      }
      censoring_[k] = curve;
    }
  }
  if (!anyEvent.entry.empty()) findEntries(anyEvent, rows, groups);
}

void CensoringCurves::findEntries(const Response& response, const Rows& rows,
                                  const Groups& groups) {
  const auto weightOf = [&](std::uint32_t row) {
    return rows.weight.empty() ? 1.0 : rows.weight[row];
  };
  std::vector<std::vector<std::uint32_t>> members(groups.size());
  for (std::uint32_t i = 0; i < response.rows(); ++i) {
    if (weightOf(i) > 0.0) members[groups[i]].push_back(i);
  }
  firstEntry_ = {0};
  for (std::vector<std::uint32_t>& byEntry : members) {
    std::vector<std::uint32_t> byExit = byEntry;
    std::stable_sort(byEntry.begin(), byEntry.end(), [&](std::uint32_t a, std::uint32_t b) {
      return response.entry[a] < response.entry[b];
    });
    std::stable_sort(byExit.begin(), byExit.end(), [&](std::uint32_t a, std::uint32_t b) {
      return response.exit[a] < response.exit[b];
    });
    numerics::DoubleDouble present;
    std::size_t leaving = 0;
    std::vector<double> stay;  // 1 - e / n
    for (std::size_t i = 0; i < byEntry.size();) {
      const double time = response.entry[byEntry[i]];
      numerics::DoubleDouble entering;
      for (; i < byEntry.size() && response.entry[byEntry[i]] == time; ++i) {
        entering = entering + weightOf(byEntry[i]);
      }
      for (; leaving < byExit.size() && response.exit[byExit[leaving]] <= time; ++leaving) {
        present = present - weightOf(byExit[leaving]);
      }
      const double before = std::max(present.hi, 0.0);
      present = present + entering;
      entry_.push_back(time);
      stay.push_back(before / (before + entering.hi));
    }
    const std::size_t first = firstEntry_.back();
    entered_.resize(entry_.size());
    double curve = 1.0;
    for (std::size_t k = entry_.size(); k-- > first;) {
      curve *= stay[k - first];
      entered_[k] = curve;
    }
    firstEntry_.push_back(entry_.size());
  }
}

double CensoringCurves::before(std::size_t group, double time) const {
  const auto begin = sample_.time.begin() + static_cast<std::ptrdiff_t>(sample_.first[group]);
  const auto end = sample_.time.begin() + static_cast<std::ptrdiff_t>(sample_.first[group + 1]);
  const auto at = std::lower_bound(begin, end, time);
  if (at == end) return 0.0;
  double curve =
      at == begin ? 1.0 : censoring_[static_cast<std::size_t>(at - 1 - sample_.time.begin())];
  if (!entry_.empty()) {
    const auto firstEntry = entry_.begin() + static_cast<std::ptrdiff_t>(firstEntry_[group]);
    const auto lastEntry = entry_.begin() + static_cast<std::ptrdiff_t>(firstEntry_[group + 1]);
    const auto entry = std::lower_bound(firstEntry, lastEntry, time);
    if (entry != lastEntry) curve *= entered_[static_cast<std::size_t>(entry - entry_.begin())];
  }
  return curve;
}

}  // namespace survmeth::engine::finegray
