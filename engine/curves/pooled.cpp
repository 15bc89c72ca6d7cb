#include "engine/curves/pooled.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace survmeth::engine::curves {
namespace {

// Rows by stratum, their order within a stratum kept; rows of weight 0 left out.
std::vector<std::uint32_t> byStratum(std::vector<std::uint32_t> order, const Rows& rows) {
  if (rows.weight.empty() && rows.stratum.empty()) return order;
  std::vector<std::uint32_t> sorted;
  sorted.reserve(order.size());
  for (const std::uint32_t row : order) {
    if (rows.weight.empty() || rows.weight[row] > 0.0) sorted.push_back(row);
  }
  if (rows.stratum.empty()) return sorted;
  std::vector<std::size_t> next(rows.strata + 1, 0);
  for (const std::uint32_t row : sorted) ++next[rows.stratum[row] + std::size_t{1}];
  for (std::size_t s = 0; s < rows.strata; ++s) next[s + 1] += next[s];
  std::vector<std::uint32_t> result(sorted.size());
  for (const std::uint32_t row : sorted) result[next[rows.stratum[row]]++] = row;
  return result;
}

// Whole numbers add up without rounding as long as their sum is one of a double's.
bool exactSums(const std::vector<double>& weights) {
  double sum = 0.0;
  for (const double weight : weights) {
    if (weight != std::trunc(weight)) return false;
    sum += weight;
  }
  return sum < 0x1p53;
}

constexpr const char* kTests = "Tests of equal survival";

}  // namespace

Pooled::Pooled(const Response& response, const Rows& rows, const Groups& groups,
               double tieTolerance)
    : Pooled(checkedCodes(response, rows, groups, tieTolerance, kTests), response, rows, groups) {}

Pooled::Pooled(const risk::TimeCodes& codes, const Response& response, const Rows& rows,
               const Groups& groups)
    : groupCount(groups.size()) {
  if (!rows.weight.empty() && rows.weightKind == WeightKind::kSampling) {
    throw Refusal(Role::kWeight, Refusal::kNone,
                  "Tests of equal survival take no sampling weights");
  }
  if (!rows.cluster.empty()) {
    throw Refusal(Role::kCluster, Refusal::kNone, "Tests of equal survival take no clusters");
  }
  source = byStratum(codes.exitOrder, rows);
  const auto taken = [this](const auto& column, auto& to) {
    to.reserve(column.empty() ? 0 : source.size());
    if (column.empty()) return;
    for (const std::uint32_t row : source) to.push_back(column[row]);
  };
  taken(codes.exit, exit);
  taken(codes.entry, entry);
  taken(rows.stratum, stratum);
  taken(rows.weight, weight);
  exact = exactSums(weight);
  group.reserve(source.size());
  event.reserve(source.size());
  for (const std::uint32_t row : source) {
    group.push_back(groups[row]);
    event.push_back(response.event[row] != 0 ? 1 : 0);
  }
  byExit.resize(source.size());
  std::iota(byExit.begin(), byExit.end(), 0U);
  byEntry = byStratum(codes.entryOrder, rows);
  if (byEntry.empty()) return;
  std::vector<std::uint32_t> number(response.rows());
  for (std::uint32_t i = 0; i < source.size(); ++i) number[source[i]] = i;
  for (std::uint32_t& row : byEntry) row = number[row];
}

PairedRows::PairedRows(const Pooled& pooled) : pooled_(pooled) {
  const auto placesOf = [&](const std::vector<std::uint32_t>& order) {
    Places places(pooled.groupCount);
    for (std::uint32_t at = 0; at < order.size(); ++at) {
      places[pooled.group[order[at]]].push_back(at);
    }
    return places;
  };
  exits_ = placesOf(pooled.byExit);
  entries_ = placesOf(pooled.byEntry);
}

StratumRows PairedRows::of(std::uint32_t first, std::uint32_t second) {
  const auto merge = [&](const Places& places, const std::vector<std::uint32_t>& order,
                         std::vector<std::uint32_t>& to) {
    const std::vector<std::uint32_t>& a = places[first];
    const std::vector<std::uint32_t>& b = places[second];
    to.resize(a.size() + b.size());
    std::merge(a.begin(), a.end(), b.begin(), b.end(), to.begin());
    for (std::uint32_t& at : to) at = order[at];
  };
  merge(exits_, pooled_.byExit, byExit_);
  merge(entries_, pooled_.byEntry, byEntry_);
  return {byExit_, byEntry_};
}

StratumRows nextStratum(const Pooled& pooled, StratumRows& rest) {
  const std::uint32_t stratum = pooled.stratumOf(rest.byExit.front());
  // Strata stand in ascending order.
  const auto end =
      std::partition_point(rest.byExit.begin(), rest.byExit.end(),
                           [&](std::uint32_t row) { return pooled.stratumOf(row) == stratum; });
  const auto count = static_cast<std::size_t>(end - rest.byExit.begin());
  const std::size_t entries = rest.byEntry.empty() ? 0 : count;
  const StratumRows rows{rest.byExit.first(count), rest.byEntry.first(entries)};
  rest = {rest.byExit.subspan(count), rest.byEntry.subspan(entries)};
  return rows;
}

std::vector<PooledTime> eventTimes(const Pooled& pooled, const StratumRows& rows) {
  using numerics::DoubleDouble;
  std::vector<PooledTime> times;
  times.reserve(static_cast<std::size_t>(
      std::count_if(rows.byExit.begin(), rows.byExit.end(),
                    [&pooled](std::uint32_t row) { return pooled.event[row] != 0; })));
  DoubleDouble atRisk;
  std::size_t count = 0;
  std::size_t entering = rows.byEntry.size();
  for (std::size_t i = rows.byExit.size(); i > 0;) {
    const std::uint32_t code = pooled.exit[rows.byExit[i - 1]];
    for (; entering > 0 && pooled.entry[rows.byEntry[entering - 1]] >= code; --entering) {
      pooled.add(atRisk, -pooled.weightOf(rows.byEntry[entering - 1]));
      --count;
    }
    DoubleDouble events;
    std::size_t eventRows = 0;
    if (count == 0) atRisk = {};
    for (; i > 0 && pooled.exit[rows.byExit[i - 1]] == code; --i) {
      const std::uint32_t row = rows.byExit[i - 1];
      // Which rows fail no processor foresees: both sums get a term, one of them 0.
      const double weight = pooled.weightOf(row);
      const double failing = weight * pooled.event[row];
      pooled.add(events, failing);
      pooled.add(atRisk, weight - failing);
      eventRows += pooled.event[row];
      ++count;
    }
    if (eventRows > 0) {
      const bool all = eventRows == count;
      const double surviving = all ? 0.0 : atRisk.hi;
      times.push_back({code, all ? events.hi : (atRisk + events).hi, events.hi, surviving});
    }
    atRisk = atRisk + events;
  }
  std::reverse(times.begin(), times.end());
  return times;
}

std::vector<GroupShare> sharesOf(const Pooled& pooled, const StratumRows& rows,
                                 std::span<const PooledTime> times, std::uint32_t group) {
  using numerics::DoubleDouble;
  std::vector<GroupShare> shares(times.size());
  DoubleDouble atRisk;
  std::size_t exits = rows.byExit.size();
  std::size_t entering = rows.byEntry.size();
  for (std::size_t k = times.size(); k-- > 0;) {
    DoubleDouble events;
    for (; exits > 0 && pooled.exit[rows.byExit[exits - 1]] >= times[k].code; --exits) {
      const std::uint32_t row = rows.byExit[exits - 1];
      const double weight = pooled.group[row] == group ? pooled.weightOf(row) : 0.0;
      pooled.add(atRisk, weight);
      pooled.add(events, weight * pooled.event[row]);
    }
    for (; entering > 0 && pooled.entry[rows.byEntry[entering - 1]] >= times[k].code; --entering) {
      const std::uint32_t row = rows.byEntry[entering - 1];
      if (pooled.group[row] == group) pooled.add(atRisk, -pooled.weightOf(row));
    }
    shares[k] = {std::max(atRisk.hi, events.hi), events.hi};
  }
  return shares;
}

}  // namespace survmeth::engine::curves
