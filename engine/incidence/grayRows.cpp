#include "engine/incidence/grayRows.h"

namespace survmeth::engine::incidence {

GrayRows::GrayRows(const Ordered& ordered) : groups(ordered.groups.size()) {
  const Rows& with = ordered.rows;
  const std::vector<std::uint32_t>& order = ordered.codes.exitOrder;
  const bool stratified = !with.stratum.empty();
  const bool weighted = !with.weight.empty();
  const auto stratumOf = [&](std::uint32_t row) {
    return stratified ? with.stratum[row] : std::uint32_t{0};
  };
  const auto takesPart = [&](std::uint32_t row) { return !weighted || with.weight[row] > 0.0; };
  first.assign((stratified ? with.strata : 1) + 1, 0);
  for (const std::uint32_t row : order) {
    if (takesPart(row)) ++first[stratumOf(row) + std::size_t{1}];
  }
  for (std::size_t s = 0; s + 1 < first.size(); ++s) first[s + 1] += first[s];
  rows.resize(first.back());
  weight.resize(weighted ? first.back() : 0);
  std::vector<std::size_t> next(first.begin(), first.end() - 1);
  for (const std::uint32_t row : order) {
    if (!takesPart(row)) continue;
    const std::size_t at = next[stratumOf(row)]++;
    rows[at] = {ordered.codes.exit[row], ordered.groups[row], ordered.response.event[row]};
    if (weighted) weight[at] = with.weight[row];
  }
}

GrayRows::GrayRows(const GrayRows& all, std::uint32_t one, std::uint32_t other)
    : first{0}, groups(all.groups) {
  for (std::size_t s = 0; s < all.strata(); ++s) {
    for (std::size_t i = all.first[s]; i < all.first[s + 1]; ++i) {
      if (all.rows[i].group != one && all.rows[i].group != other) continue;
      rows.push_back(all.rows[i]);
      if (!all.weight.empty()) weight.push_back(all.weight[i]);
    }
    first.push_back(rows.size());
  }
}

GrayStratum GrayRows::stratum(std::size_t s) const {
  const std::size_t count = first[s + 1] - first[s];
  const std::span<const double> weights(weight);
  return {std::span(rows).subspan(first[s], count),
          weights.empty() ? weights : weights.subspan(first[s], count)};
}

}  // namespace survmeth::engine::incidence
