#include "analysis/groups.h"

#include <string>
#include <vector>

#include "engine/input.h"
#include "text/words.h"

namespace survmeth::analysis {

using engine::Refusal;
using engine::Role;

frame::Labels groupsOf(const frame::Frame& data, const std::vector<std::string>& columns) {
  return columns.size() == 1 ? frame::labelsOf(*data.labels(columns.front()))
                             : frame::crossedLabels(data, columns);
}

void requireSeveral(const frame::Labels& groups, std::size_t most) {
  const std::size_t count = groups.labels.size();
  if (count >= 2 && count <= most) return;
  throw Refusal(Role::kGroup, Refusal::kNone,
                count < 2
                    ? "all complete rows are in the group " + text::quote(groups.labels.front())
                    : "there are " + text::grouped(count) + " groups",
                Refusal::kNone, "2 to " + std::to_string(most) + " groups");
}

void requireFilled(const frame::Labels& groups, std::span<const double> weight) {
  std::vector<double> totals(groups.counts.begin(), groups.counts.end());
  if (!weight.empty()) {
    totals.assign(totals.size(), 0);
    for (std::size_t i = 0; i < weight.size(); ++i) totals[groups.codes[i]] += weight[i];
  }
  for (std::size_t g = 0; g < totals.size(); ++g) {
    if (totals[g] > 0) continue;
    throw Refusal(Role::kGroup, Refusal::kNone,
                  "the group " + text::quote(groups.labels[g]) + " is empty: its rows have " +
                      (groups.counts[g] == 0 ? "missing cells" : "weight 0"),
                  Refusal::kNone, "at least one complete row in each group");
  }
}

}  // namespace survmeth::analysis
