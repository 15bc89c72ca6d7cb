#include "analysis/life/cells.h"

#include <algorithm>
#include <array>
#include <limits>
#include <tuple>

#include "numerics/bits.h"
#include "numerics/hot.h"

namespace survmeth::analysis {
namespace {

// How many cells there may be at one time; nothing where that is beyond 64 bits.
std::optional<std::uint64_t> cellsOfTime(const std::vector<CellCodes>& codes) {
  std::uint64_t count = 1;
  for (const CellCodes& each : codes) {
    const std::uint64_t more = std::max<std::uint64_t>(each.count, 1);
    if (count > std::numeric_limits<std::uint64_t>::max() / more) return {};
    count *= more;
  }
  return count;
}

// What the rows of a cell share.
struct Cell {
  double time;
  std::uint64_t code;  // its number among those of a time
  bool operator==(const Cell&) const = default;
};

// Distinct cells and where they are, by open addressing.
class DistinctCells {
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
    hash ^= cell.code * 0x94D049BB133111EBu + (hash >> 29);
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

// The largest of times that are all whole numbers from 0 on and below `end`, and the first place of
// each; otherwise -1 and nothing. Every sum is of integers, so that compilers find vectors.
SURVMETH_HOT std::int64_t wholeTimes(const double* __restrict times, std::size_t n, double end,
                                     std::uint32_t each, std::uint32_t* __restrict places) {
  std::size_t outside = 0;
  for (std::size_t i = 0; i < n; ++i) {
    outside += times[i] >= 0 ? 0u : 1u;
    outside += times[i] < end ? 0u : 1u;
  }
  if (outside > 0) return -1;
  std::int32_t latest = 0;
  std::size_t others = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const auto whole = static_cast<std::int32_t>(times[i]);
    others += static_cast<double>(whole) == times[i] ? 0u : 1u;
    latest = whole > latest ? whole : latest;
    places[i] = static_cast<std::uint32_t>(whole) * each;
  }
  return others > 0 ? -1 : latest;
}

enum class Found { kFewCells, kManyCells, kOtherTimes };

// The places of cells in a table of all that there may be, for times that are whole numbers.
class Places {
 public:
  Places(std::span<const double> times, const std::vector<CellCodes>& codes, std::uint64_t ofTime)
      : times_(times), codes_(codes), each_(ofTime) {}

  // Those of rows `begin` and following, and the length of a table that has them; 0 where a time is
  // another number, or so late that the table would be longer than `most`.
  std::size_t find(std::size_t begin, std::size_t most, std::span<std::uint32_t> places) const {
    const std::uint64_t end = most / each_;
    const std::int64_t latest =
        wholeTimes(times_.data() + begin, places.size(), static_cast<double>(end),
                   static_cast<std::uint32_t>(each_), places.data());
    if (latest < 0) return 0;
    std::uint32_t step = 1;
    for (const CellCodes& of : codes_) {
      const std::span<const std::uint32_t> own = of.codes.subspan(begin, places.size());
      for (std::size_t i = 0; i < places.size(); ++i) places[i] += own[i] * step;
      step *= static_cast<std::uint32_t>(std::max<std::size_t>(of.count, 1));
    }
    return static_cast<std::size_t>((static_cast<std::uint64_t>(latest) + 1) * each_);
  }

 private:
  std::span<const double> times_;
  const std::vector<CellCodes>& codes_;
  std::uint64_t each_;  // cells of a time
};

// Of times that are whole numbers and not far apart. kManyCells where they are more than a quarter
// of the rows.
Found sumWholeTimes(std::span<const double> time, const Places& places,
                    std::span<const double> weights, Cells& cells) {
  constexpr std::size_t kBlock = 1024;
  const std::size_t n = time.size(), most = std::min<std::size_t>(n, 1u << 30);
  std::array<std::uint32_t, kBlock> block, newPlaces, newRows;
  std::vector<double> table;
  std::vector<std::uint32_t> used;
  for (std::size_t begin = 0; begin < n; begin += kBlock) {
    const std::span<std::uint32_t> at(block.data(), std::min(kBlock, n - begin));
    const std::size_t length = places.find(begin, most, at);
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
    cells.firstRow.insert(cells.firstRow.end(), newRows.begin(), newRows.begin() + count);
    if (4 * used.size() >= n + 4) return Found::kManyCells;
  }
  for (const std::uint32_t place : used) cells.weight.push_back(table[place]);
  return Found::kFewCells;
}

// The same of any times.
Found sumTimes(std::span<const double> time, const std::vector<CellCodes>& codes,
               std::span<const double> weights, Cells& cells) {
  const std::size_t n = time.size();
  DistinctCells found;
  for (std::size_t i = 0; i < n; ++i) {
    if (!weights.empty() && weights[i] == 0) continue;
    Cell cell{time[i] + 0.0, 0};
    for (const CellCodes& of : codes) cell.code = cell.code * of.count + of.codes[i];
    const std::size_t at = found.find(cell);
    if (at == cells.weight.size()) {
      if (4 * at >= n) return Found::kManyCells;
      cells.weight.push_back(0);
      cells.firstRow.push_back(static_cast<std::uint32_t>(i));
    }
    cells.weight[at] += weights.empty() ? 1 : weights[i];
  }
  return Found::kFewCells;
}

}  // namespace

std::optional<Cells> cellsOf(std::span<const double> time, const std::vector<CellCodes>& codes,
                             std::span<const double> weight) {
  const std::optional<std::uint64_t> ofTime = cellsOfTime(codes);
  if (!ofTime) return {};
  Cells cells;
  Found found = sumWholeTimes(time, Places(time, codes, *ofTime), weight, cells);
  if (found == Found::kOtherTimes) {
    cells = {};  // of the rows before the time that is another number
    found = sumTimes(time, codes, weight, cells);
  }
  if (found != Found::kFewCells) return {};
  cells.time.reserve(cells.firstRow.size());
  for (const std::uint32_t row : cells.firstRow) cells.time.push_back(time[row] + 0.0);
  return cells;
}

}  // namespace survmeth::analysis
