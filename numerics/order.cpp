#include "numerics/order.h"

#include <algorithm>
#include <array>
#include <utility>

#include "numerics/radix.h"

namespace survmeth::numerics {
namespace radix {
namespace {

// Stable passes over the digits `from` .. kPasses - 1.
void radixPasses(LargeArray<Entry>& entries, int from) {
  const std::size_t n = entries.size();
  std::vector<std::array<std::uint32_t, kDigits>> counts(kPasses);
  for (const Entry& entry : entries) {
    for (int pass = from; pass < kPasses; ++pass) ++counts[pass][digit(entry.key, pass)];
  }
  LargeArray<Entry> sorted(n);
  for (int pass = from; pass < kPasses; ++pass) {
    std::array<std::uint32_t, kDigits>& starts = counts[pass];
    if (starts[digit(entries.front().key, pass)] == n) continue;
    std::uint32_t next = 0;
    for (std::uint32_t& start : starts) next += std::exchange(start, next);
    for (const Entry& entry : entries) sorted[starts[digit(entry.key, pass)]++] = entry;
    entries.swap(sorted);
  }
}

}  // namespace

bool insertionSorted(LargeArray<Entry>& entries) {
  std::size_t moves = 4 * entries.size();
  for (std::size_t i = 1; i < entries.size(); ++i) {
    if (entries[i - 1].key <= entries[i].key) continue;
    const Entry entry = entries[i];
    std::size_t to = i;
    for (; to > 0 && entries[to - 1].key > entry.key; --to) entries[to] = entries[to - 1];
    entries[to] = entry;
    if (i - to > moves) return false;
    moves -= i - to;
  }
  return true;
}

void sort(LargeArray<Entry>& entries) {
  if (entries.size() < kFew) {
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry& a, const Entry& b) { return a.key < b.key; });
    return;
  }
  // The upper digits tell nearly all numbers of a sample apart; the lower ones are sorted by only
  // where they do not.
  radixPasses(entries, kPasses / 2);
  if (!insertionSorted(entries)) radixPasses(entries, 0);
}

}  // namespace radix

std::vector<std::uint32_t> ascendingOrder(std::span<const double> values) {
  const std::size_t n = values.size();
  LargeArray<radix::Entry> entries(n);
  for (std::size_t i = 0; i < n; ++i) {
    entries[i] = {radix::orderedKey(values[i]), static_cast<std::uint32_t>(i)};
  }
  radix::sort(entries);
  std::vector<std::uint32_t> order(n);
  for (std::size_t i = 0; i < n; ++i) order[i] = entries[i].position;
  return order;
}

}  // namespace survmeth::numerics
