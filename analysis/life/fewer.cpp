// Fewer rows that say the same: parts of one subject's follow-up joined, rows that differ in nothing
// pooled.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <tuple>
#include <utility>
#include <vector>

#include "analysis/life/rows.h"
#include "numerics/bits.h"

namespace survmeth::analysis {
namespace {

template <class Value>
std::vector<Value> chosen(const std::vector<Value>& values, const std::vector<std::uint32_t>& at) {
  std::vector<Value> result;
  result.reserve(values.empty() ? 0 : at.size());
  for (std::size_t i = 0; i < at.size() && !values.empty(); ++i) result.push_back(values[at[i]]);
  return result;
}

// What pooled rows share.
struct Cell {
  double time;
  std::uint32_t group, stratum, event;
  bool operator==(const Cell&) const = default;
};

// Distinct cells and where they are, by open addressing.
class Cells {
 public:
  // The index of the cell, which is added where it is new.
  std::size_t find(const Cell& cell) {
    if (2 * cells_.size() >= slots_.size()) grow();
    std::size_t at = slotOf(cell);
    while (slots_[at] != kFree && !(cells_[slots_[at]] == cell)) at = (at + 1) & mask();
    if (slots_[at] == kFree) {
      slots_[at] = static_cast<std::uint32_t>(cells_.size());
      cells_.push_back(cell);
    }
    return slots_[at];
  }
  const std::vector<Cell>& cells() const { return cells_; }

 private:
  static constexpr std::uint32_t kFree = static_cast<std::uint32_t>(-1);

  std::size_t mask() const { return slots_.size() - 1; }
  std::size_t slotOf(const Cell& cell) const {
    // Multiplications by odd constants, of which the high bits depend on all below.
    std::uint64_t hash = numerics::bitCast<std::uint64_t>(cell.time) * 0x9E3779B97F4A7C15u;
    hash ^= (std::uint64_t{cell.group} << 33 ^ std::uint64_t{cell.stratum} << 1 ^ cell.event) +
            (hash >> 29);
    hash *= 0xBF58476D1CE4E5B9u;
    return static_cast<std::size_t>(hash >> 32) & mask();
  }
  void grow() {
    slots_.assign(slots_.empty() ? 1024 : 2 * slots_.size(), kFree);
    for (std::uint32_t i = 0; i < cells_.size(); ++i) {
      std::size_t at = slotOf(cells_[i]);
      while (slots_[at] != kFree) at = (at + 1) & mask();
      slots_[at] = i;
    }
  }

  std::vector<Cell> cells_;
  std::vector<std::uint32_t> slots_;
};

}  // namespace

bool poolRows(LifeRows& rows) {
  const std::size_t n = rows.event.size();
  const auto weight = rows.weight.numbers;
  const auto codeOf = [](const std::vector<std::uint32_t>& codes, std::size_t i) {
    return codes.empty() ? 0 : codes[i];
  };
  Cells found;
  std::vector<double> sums;
  for (std::size_t i = 0; i < n; ++i) {
    if (!weight.empty() && weight[i] == 0) continue;
    const std::size_t at = found.find({rows.time.numbers[i] + 0.0, codeOf(rows.groups.codes, i),
                                       codeOf(rows.strata.codes, i), rows.event[i]});
    if (at == sums.size()) {
      if (4 * at >= n) return false;
      sums.push_back(0);
    }
    sums[at] += weight.empty() ? 1 : weight[i];
  }
  const std::vector<Cell>& cells = found.cells();
  std::vector<double> time;
  std::vector<std::uint32_t> event, group, stratum;
  for (const Cell& cell : cells) {
    time.push_back(cell.time);
    event.push_back(cell.event);
    if (!rows.groups.codes.empty()) group.push_back(cell.group);
    if (!rows.strata.codes.empty()) stratum.push_back(cell.stratum);
  }
  rows.time = frame::numberColumn(rows.time.name, std::move(time));
  rows.weight = frame::numberColumn(rows.weight.name, std::move(sums));
  rows.event = std::move(event);
  rows.groups.codes = std::move(group);
  rows.strata.codes = std::move(stratum);
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
