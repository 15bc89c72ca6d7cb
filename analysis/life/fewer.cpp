// Fewer rows that say the same: parts of one subject's follow-up joined, rows that differ in nothing
// pooled.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <tuple>
#include <utility>
#include <vector>

#include "analysis/life/cells.h"
#include "analysis/life/rows.h"
#include "frame/select.h"

namespace survmeth::analysis {
namespace {

template <class Value>
std::vector<Value> chosen(const std::vector<Value>& values, const std::vector<std::uint32_t>& at) {
  std::vector<Value> result;
  result.reserve(values.empty() ? 0 : at.size());
  for (std::size_t i = 0; i < at.size() && !values.empty(); ++i) result.push_back(values[at[i]]);
  return result;
}

}  // namespace

std::optional<PooledRows> pooledRows(const frame::Frame& data, const LifeRequest& request) {
  std::vector<CellCodes> codes;
  const auto take = [&](const std::string& name) {
    const frame::Column& labels = *data.labels(name);
    codes.push_back({labels.codes, labels.levels.size()});
  };
  take(request.event);
  for (const std::string& name : request.group) take(name);
  for (const std::string& name : request.strata) take(name);
  std::optional<Cells> cells = cellsOf(data.numbers(request.time)->numbers, codes, {});
  if (!cells) return {};
  frame::Frame fewer = frame::selectRows(data, cells->firstRow);
  return PooledRows{std::move(fewer), *std::move(cells)};
}

bool poolRows(LifeRows& rows) {
  std::vector<CellCodes> codes{{rows.event, 2}};
  for (const frame::Labels* labels : {&rows.strata, &rows.groups}) {
    if (!labels->codes.empty()) codes.push_back({labels->codes, labels->labels.size()});
  }
  std::optional<Cells> cells = cellsOf(rows.time.numbers, codes, rows.weight.numbers);
  if (!cells) return false;
  rows.time = frame::numberColumn(rows.time.name, std::move(cells->time));
  rows.weight = frame::numberColumn(rows.weight.name, std::move(cells->weight));
  for (auto* each : {&rows.event, &rows.groups.codes, &rows.strata.codes}) {
    *each = chosen(*each, cells->firstRow);
  }
  return true;
}

void joinRows(LifeRows& rows, const std::vector<std::uint32_t>& subject) {
  const auto entry = rows.entry.numbers, exit = rows.time.numbers, weight = rows.weight.numbers;
  std::vector<std::uint32_t> order(exit.size());
  std::iota(order.begin(), order.end(), 0u);
  const auto place = [&](std::uint32_t i) { return std::tuple(subject[i], entry[i], exit[i], i); };
  std::sort(order.begin(), order.end(),
            [&](std::uint32_t a, std::uint32_t b) { return place(a) < place(b); });
  const auto same = [](const std::vector<std::uint32_t>& codes, std::uint32_t a, std::uint32_t b) {
    return codes.empty() || codes[a] == codes[b];
  };
  const auto follows = [&](std::uint32_t a, std::uint32_t b) {
    return subject[a] == subject[b] && exit[a] == entry[b] && rows.event[a] == 0 &&
           same(rows.groups.codes, a, b) && same(rows.strata.codes, a, b) &&
           same(rows.clusters.codes, a, b) && (weight.empty() || weight[a] == weight[b]);
  };
  // The first row of each stretch begins it, the last one says how it ends.
  std::vector<std::uint32_t> first, last;
  for (std::size_t k = 0; k < order.size(); ++k) {
    if (k > 0 && follows(order[k - 1], order[k])) {
      last.back() = order[k];
    } else {
      first.push_back(order[k]);
      last.push_back(order[k]);
    }
  }
  if (first.size() == order.size()) return;
  const auto numbers = [](const frame::Column& column, const std::vector<std::uint32_t>& at) {
    return frame::numberColumn(
        column.name, chosen(std::vector<double>(column.numbers.begin(), column.numbers.end()), at));
  };
  rows.entry = numbers(rows.entry, first);
  rows.time = numbers(rows.time, last);
  if (!weight.empty()) rows.weight = numbers(rows.weight, last);
  rows.event = chosen(rows.event, last);
  rows.groups.codes = chosen(rows.groups.codes, last);
  rows.strata.codes = chosen(rows.strata.codes, last);
  rows.clusters.codes = chosen(rows.clusters.codes, last);
  rows.source = std::move(last);
}

}  // namespace survmeth::analysis
