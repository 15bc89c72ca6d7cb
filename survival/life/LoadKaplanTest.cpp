// The distinct times of all strata, as row 1 of the strata grid.
//
// What the row holds in the end is defined by an exchange sort: pass a compares cell a with every
// later cell b, exchanges them where a holds the larger value, and closes the gap where they are
// equal, adding 1 to the cell past the new end. Those cells are part of the result, so they are
// computed too, without the quadratic work:
//
// Take the input as slots 1..n. Running the passes for one slot after the other instead of one
// pass after the other changes nothing, and is an insertion of the slot's value into the distinct
// values of the slots before it. So a slot goes exactly when its value stands among these; it
// goes in the pass that is the value's rank there; and before pass a, a slot that is not reached
// yet holds the larger of its own value and the (a - 1)-th of the distinct values before it. A
// NaN is neither exchanged nor removed and changes nothing for the others.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "Klikro/Klikro"
#include "Klikro/order.h"
#include "survival/life/life.h"

namespace {

using Index = std::uint32_t;
constexpr Index kNone = std::numeric_limits<Index>::max();

// A set of 0..size - 1 that counts and selects its members by rank, each in O(log size).
class RankedSet {
 public:
  explicit RankedSet(std::size_t size) : tree_(size + 1, 0) {
    while (highest_ * 2 <= size) highest_ *= 2;
  }

  void insert(Index member) { add(member, 1); }
  void erase(Index member) { add(member, static_cast<Index>(-1)); }

  // How many members are at most `value`.
  Index countUpTo(Index value) const {
    Index count = 0;
    for (std::size_t i = std::size_t{value} + 1; i > 0; i -= i & (~i + 1)) count += tree_[i];
    return count;
  }

  // The rank-th smallest member, rank = 1.. .
  Index select(Index rank) const {
    std::size_t at = 0;
    for (std::size_t step = highest_; step > 0; step /= 2) {
      if (at + step < tree_.size() && tree_[at + step] < rank) {
        at += step;
        rank -= tree_[at];
      }
    }
    return static_cast<Index>(at);
  }

 private:
  void add(Index member, Index change) {
    for (std::size_t i = std::size_t{member} + 1; i < tree_.size(); i += i & (~i + 1)) {
      tree_[i] += change;
    }
  }

  std::vector<Index> tree_;
  std::size_t highest_ = 1;
};

// The times, each with the rank of its value among the distinct ones.
struct Slots {
  explicit Slots(std::vector<double> times)
      : values(std::move(times)), codes(values.size(), kNone) {
    const std::vector<Index> order = klikro::sortedOrder(values.data(), values.size(), false);
    for (std::size_t k = 0; k < values.size(); ++k) {
      const Index slot = order.empty() ? static_cast<Index>(k) : order[k];
      if (std::isnan(values[slot])) break;  // they stand last
      if (distinct.empty() || distinct.back() != values[slot]) {
        distinct.push_back(values[slot]);
        firsts.push_back(slot);
      }
      codes[slot] = static_cast<Index>(distinct.size() - 1);
    }
  }

  std::size_t size() const { return values.size(); }
  bool isNumber(std::size_t slot) const { return codes[slot] != kNone; }
  bool isFirst(std::size_t slot) const { return isNumber(slot) && firsts[codes[slot]] == slot; }

  std::vector<double> values;
  std::vector<Index> codes;      // kNone for NaN
  std::vector<double> distinct;  // ascending
  std::vector<Index> firsts;     // the first slot of each distinct value
};

struct Removal {
  Index pass;
  Index slot;
};

// In the order in which they happen. `seen` starts empty and ends with every distinct value.
std::vector<Removal> removalsOf(const Slots& slots, RankedSet& seen) {
  std::vector<Removal> bySlot;
  std::vector<Index> starts(slots.distinct.size() + 2, 0);
  for (std::size_t slot = 0; slot < slots.size(); ++slot) {
    if (!slots.isNumber(slot)) continue;
    if (slots.isFirst(slot)) {
      seen.insert(slots.codes[slot]);
    } else {
      const Index pass = seen.countUpTo(slots.codes[slot]);
      bySlot.push_back({pass, static_cast<Index>(slot)});
      ++starts[pass + 1];
    }
  }
  for (std::size_t pass = 1; pass < starts.size(); ++pass) starts[pass] += starts[pass - 1];
  std::vector<Removal> removals(bySlot.size());
  for (const Removal& removal : bySlot) removals[starts[removal.pass]++] = removal;
  return removals;
}

// Row 1 of the grid, from times that all have a cell there. Returns the number of rows that stay.
std::size_t load(const Slots& slots, matrix* grid) {
  RankedSet before(slots.distinct.size());  // the distinct values of the slots before `last`
  const std::vector<Removal> removals = removalsOf(slots, before);
  std::vector<char> alive(slots.size(), 1);

  const auto put = [&](std::size_t cell, double value) {
    grid->vbset(1, static_cast<int>(cell), value);
  };
  std::size_t end = slots.size();
  std::size_t last = end - 1;
  if (slots.isFirst(last)) before.erase(slots.codes[last]);
  for (const Removal& removal : removals) {
    double standing = slots.values[last];
    if (removal.slot != last && removal.pass > 1 && slots.isNumber(last)) {
      standing = std::max(standing, slots.distinct[before.select(removal.pass - 1)]);
    }
    put(end--, standing + 1.0);
    alive[removal.slot] = 0;
    if (alive[last]) continue;
    while (!alive[last]) --last;
    if (slots.isFirst(last)) before.erase(slots.codes[last]);
  }

  std::size_t cell = 0;
  std::size_t next = 0;
  for (std::size_t slot = 0; slot < slots.size(); ++slot) {
    if (!alive[slot]) continue;
    put(++cell, slots.isNumber(slot) ? slots.distinct[next++] : slots.values[slot]);
  }
  return end;
}

// The exchange sort itself, for a grid that is too short for the times: cells past its end read
// as -1 and keep nothing, so values get lost on the way.
int exchangeSort(int n, const matrix* times, matrix* grid) {
  const auto cell = [&](int i) { return grid->vbget(1, i); };
  for (int i = 1; i <= n; ++i) grid->vbset(1, i, times->vbget(i, 1));
  for (int a = 1; a < n; ++a) {
    for (int b = a + 1; b <= n;) {
      const double first = cell(a);
      const double second = cell(b);
      if (first == second) {
        --n;
        for (int i = b; i <= n; ++i) grid->vbset(1, i, cell(i + 1));
        grid->vbset(1, n + 1, cell(n + 1) + 1.0);
        continue;
      }
      if (first > second) {
        grid->vbset(1, a, second);
        grid->vbset(1, b, first);
      }
      ++b;
    }
  }
  return n;
}

}  // namespace

int cLoadKaplanTest(int* n, matrix* times, matrix* grid) {
  if (*n < 1) return 0;
  const int cells = grid->rows() > 0 ? grid->cols() : 0;
  if (*n > cells) {
    // One cell past the end behaves as any number of them.
    *n = exchangeSort(cells + 1, times, grid);
    return 0;
  }
  std::vector<double> values(static_cast<std::size_t>(*n));
  for (int i = 1; i <= *n; ++i) values[static_cast<std::size_t>(i) - 1] = times->vbget(i, 1);
  *n = static_cast<int>(load(Slots(std::move(values)), grid));
  return 0;
}
