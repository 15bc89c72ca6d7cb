// Fewer rows that say the same: parts of one subject's follow-up joined, rows that differ in nothing
// pooled.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
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

// The cells that rows are in, in the order of first use: the first row of each, and the sum of the
// weights of all.
struct Sums {
  std::vector<std::uint32_t> firstRow;
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

  // Those of rows `begin` and following, and the length of a table that has them; 0 where a time is
  // another number, or so late that the table would be longer than `most`. Four rows at a time and
  // without a branch.
  std::size_t find(std::size_t begin, std::size_t most, std::span<std::uint32_t> places) const {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const std::span<const double> times = times_.subspan(begin, places.size());
    Lanes first, last, parts{};
    first.fill(kInfinity);
    last.fill(-kInfinity);
    inLanes(times.size(), [&](std::size_t lane, std::size_t i) {
      first[lane] = times[i] < first[lane] ? times[i] : first[lane];
      last[lane] = times[i] > last[lane] ? times[i] : last[lane];
    });
    const double latest = *std::max_element(last.begin(), last.end());
    const std::uint64_t end = most / each_;
    if (!(*std::min_element(first.begin(), first.end()) >= 0 &&
          latest < static_cast<double>(end))) {
      return 0;
    }
    const auto each = static_cast<double>(each_);
    inLanes(times.size(), [&](std::size_t lane, std::size_t i) {
      // Of one sign, so that no part goes unseen.
      parts[lane] += times[i] - static_cast<double>(static_cast<std::int32_t>(times[i]));
      places[i] = static_cast<std::uint32_t>(static_cast<std::int32_t>(times[i] * each));
    });
    if (*std::max_element(parts.begin(), parts.end()) > 0) return 0;
    add(event_, begin, 1, places);
    add(group_, begin, 2 * strata_, places);
    add(stratum_, begin, 2, places);
    return static_cast<std::size_t>((static_cast<std::uint64_t>(latest) + 1) * each_);
  }

 private:
  using Lanes = std::array<double, 4>;

  template <class Take>
  static void inLanes(std::size_t n, Take take) {
    constexpr std::size_t kLanes = std::tuple_size_v<Lanes>;
    std::size_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
      for (std::size_t lane = 0; lane < kLanes; ++lane) take(lane, i + lane);
    }
    for (; i < n; ++i) take(0, i);
  }
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
  std::array<std::uint32_t, kBlock> block, newPlaces, newRows;
  std::vector<double> table;
  std::vector<std::uint32_t> used;
  for (std::size_t begin = 0; begin < rows.event.size(); begin += kBlock) {
    const std::span<std::uint32_t> at(block.data(), std::min(kBlock, rows.event.size() - begin));
    const std::size_t length = places.find(begin, n, at);
    if (length == 0) return Found::kOtherTimes;
    if (length > table.size()) table.resize(std::max(2 * table.size(), length));
    std::size_t found = 0;
    const auto sum = [&](auto weightOf) {
      for (std::size_t i = 0; i < at.size(); ++i) {
        const double before = table[at[i]], weight = weightOf(i);
        newPlaces[found] = at[i];  // stays where it is one
        newRows[found] = static_cast<std::uint32_t>(begin + i);
        found += static_cast<std::size_t>(before == 0) & static_cast<std::size_t>(weight > 0);
        table[at[i]] = before + weight;
      }
    };
    if (weights.empty()) {
      sum([](std::size_t) { return 1.0; });
    } else {
      sum([&](std::size_t i) { return weights[begin + i]; });
    }
    const auto count = static_cast<std::ptrdiff_t>(found);
    used.insert(used.end(), newPlaces.begin(), newPlaces.begin() + count);
    sums.firstRow.insert(sums.firstRow.end(), newRows.begin(), newRows.begin() + count);
    if (4 * used.size() >= rows.event.size() + 4) return Found::kManyCells;
  }
  for (const std::uint32_t place : used) sums.weights.push_back(table[place]);
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
      sums.firstRow.push_back(static_cast<std::uint32_t>(i));
    }
    sums.weights[at] += weight.empty() ? 1 : weight[i];
  }
  return Found::kFewCells;
}

}  // namespace

bool poolRows(LifeRows& rows) {
  Sums sums;
  Found found = sumWholeTimes(rows, sums);
  if (found == Found::kOtherTimes) {
    sums = {};  // of the rows before the time that is another number
    found = sumTimes(rows, sums);
  }
  if (found != Found::kFewCells) return false;
  std::vector<double> time;
  for (const std::uint32_t row : sums.firstRow) time.push_back(rows.time.numbers[row] + 0.0);
  rows.time = frame::numberColumn(rows.time.name, std::move(time));
  rows.weight = frame::numberColumn(rows.weight.name, std::move(sums.weights));
  for (auto* codes : {&rows.event, &rows.groups.codes, &rows.strata.codes}) {
    *codes = chosen(*codes, sums.firstRow);
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
