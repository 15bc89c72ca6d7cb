// Fewer rows that say the same: parts of one subject's follow-up joined, rows that differ in nothing
// pooled.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
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

// The cells that rows are in, in the order of first use, with the sums of their weights.
struct Sums {
  std::vector<Cell> cells;
  std::vector<double> weights;
};

enum class Found { kFewCells, kManyCells, kOtherTimes };

// The places of cells in a table of all that there may be, for times that are whole numbers.
class Places {
 public:
  explicit Places(const LifeRows& rows)
      : times_(rows.time.numbers),
        group_(orNone(rows.groups.codes)),
        stratum_(orNone(rows.strata.codes)),
        event_(rows.event.data()),
        strata_(std::max<std::size_t>(rows.strata.labels.size(), 1)),
        each_(2 * std::max<std::uint64_t>(rows.groups.labels.size(), 1) * strata_) {}

  // Those of rows `begin` and following; false where a time is another number, or so late that the
  // table would be longer than `most`. In loops without a branch.
  bool find(std::size_t begin, std::size_t most, std::span<std::uint32_t> places) const {
    const std::span<const double> taken = times_.subspan(begin, places.size());
    const std::uint64_t last = most / each_;
    const auto end = static_cast<double>(last);
    std::ptrdiff_t inside = 0, whole = 0;
    for (const double time : taken) inside += (time >= 0 ? 1 : 0) & (time < end ? 1 : 0);
    if (inside != static_cast<std::ptrdiff_t>(taken.size())) return false;
    const auto each = static_cast<std::int32_t>(each_);
    for (std::size_t i = 0; i < places.size(); ++i) {
      const auto time = static_cast<std::int32_t>(taken[i]);
      whole += static_cast<double>(time) == taken[i] ? 1 : 0;
      places[i] = static_cast<std::uint32_t>(time * each) + event_[begin + i];
    }
    if (whole != static_cast<std::ptrdiff_t>(taken.size())) return false;
    add(group_, begin, 2 * strata_, places);
    add(stratum_, begin, 2, places);
    return true;
  }
  Cell cellAt(std::uint32_t place) const {
    const auto rest = static_cast<std::uint32_t>(place % each_ / 2);
    const auto strata = static_cast<std::uint32_t>(strata_);
    const std::uint64_t time = place / each_;
    return {static_cast<double>(time), rest / strata, rest % strata, place % 2};
  }
  // Of a table up to the time of this place.
  std::size_t lengthFor(std::uint32_t place) const {
    return static_cast<std::size_t>((place / each_ + 1) * each_);
  }

 private:
  static const std::uint32_t* orNone(const std::vector<std::uint32_t>& codes) {
    return codes.empty() ? nullptr : codes.data();
  }
  static void add(const std::uint32_t* codes, std::size_t begin, std::size_t step,
                  std::span<std::uint32_t> places) {
    if (codes == nullptr) return;
    const auto by = static_cast<std::uint32_t>(step);
    for (std::size_t i = 0; i < places.size(); ++i) places[i] += codes[begin + i] * by;
  }

  std::span<const double> times_;
  const std::uint32_t *group_, *stratum_, *event_;
  std::size_t strata_;
  std::uint64_t each_;  // cells of a time; groups times strata may be beyond 32 bits
};

// Of times that are whole numbers and not far apart. kManyCells where they are more than a quarter
// of the rows.
Found sumWholeTimes(const LifeRows& rows, Sums& sums) {
  constexpr std::size_t kBlock = 1024;
  const std::size_t n = std::min<std::size_t>(rows.event.size(), 1u << 30);
  const std::span<const double> weights = rows.weight.numbers;
  const Places places(rows);
  std::array<std::uint32_t, kBlock> block;
  std::vector<double> table;
  std::vector<std::uint32_t> used;
  for (std::size_t begin = 0; begin < rows.event.size(); begin += kBlock) {
    const std::span<std::uint32_t> at(block.data(), std::min(kBlock, rows.event.size() - begin));
    if (!places.find(begin, n, at)) return Found::kOtherTimes;
    const std::uint32_t last = *std::max_element(at.begin(), at.end());
    if (last >= table.size()) table.resize(std::max(2 * table.size(), places.lengthFor(last)));
    for (std::size_t i = 0; i < at.size(); ++i) {
      const double weight = weights.empty() ? 1.0 : weights[begin + i];
      double& sum = table[at[i]];
      if (sum == 0 && weight > 0) used.push_back(at[i]);
      sum += weight;
    }
    if (4 * used.size() >= rows.event.size() + 4) return Found::kManyCells;
  }
  for (const std::uint32_t place : used) {
    sums.cells.push_back(places.cellAt(place));
    sums.weights.push_back(table[place]);
  }
  return Found::kFewCells;
}

// The same of any times.
Found sumTimes(const LifeRows& rows, Sums& sums) {
  const std::size_t n = rows.event.size();
  const auto weight = rows.weight.numbers;
  const auto codeOf = [](const std::vector<std::uint32_t>& codes, std::size_t i) {
    return codes.empty() ? 0 : codes[i];
  };
  Cells found;
  for (std::size_t i = 0; i < n; ++i) {
    if (!weight.empty() && weight[i] == 0) continue;
    const std::size_t at = found.find({rows.time.numbers[i] + 0.0, codeOf(rows.groups.codes, i),
                                       codeOf(rows.strata.codes, i), rows.event[i]});
    if (at == sums.weights.size()) {
      if (4 * at >= n) return Found::kManyCells;
      sums.weights.push_back(0);
    }
    sums.weights[at] += weight.empty() ? 1 : weight[i];
  }
  sums.cells = found.cells();
  return Found::kFewCells;
}

}  // namespace

bool poolRows(LifeRows& rows) {
  Sums sums;
  Found found = sumWholeTimes(rows, sums);
  if (found == Found::kOtherTimes) found = sumTimes(rows, sums);
  if (found != Found::kFewCells) return false;
  std::vector<double> time;
  std::vector<std::uint32_t> event, group, stratum;
  for (const Cell& cell : sums.cells) {
    time.push_back(cell.time);
    event.push_back(cell.event);
    if (!rows.groups.codes.empty()) group.push_back(cell.group);
    if (!rows.strata.codes.empty()) stratum.push_back(cell.stratum);
  }
  rows.time = frame::numberColumn(rows.time.name, std::move(time));
  rows.weight = frame::numberColumn(rows.weight.name, std::move(sums.weights));
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
