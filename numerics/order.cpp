#include "numerics/order.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

namespace survmeth::numerics {
namespace {

constexpr int kBits = 11;
constexpr std::size_t kDigits = std::size_t{1} << kBits;
constexpr int kPasses = 6;  // 6 times 11 bits cover 64
// Below this many values the counts of a pass cost more than comparisons.
constexpr std::size_t kFew = 512;

struct Entry {
  std::uint64_t key;
  std::uint32_t position;
};

// An unsigned number that is ordered as the double is: the sign bit turned for positive numbers,
// every bit for negative ones. Adding 0 makes -0 and 0 one.
std::uint64_t orderedKey(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value + 0.0);
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

double valueOf(std::uint64_t key) {
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  return std::bit_cast<double>((key & kSign) != 0 ? key ^ kSign : ~key);
}

std::size_t digit(std::uint64_t key, int pass) {
  return static_cast<std::size_t>(key >> (pass * kBits)) & (kDigits - 1);
}

// Stable passes over the digits `from` .. kPasses - 1.
void radixPasses(std::vector<Entry>& entries, int from) {
  const std::size_t n = entries.size();
  std::vector<std::array<std::uint32_t, kDigits>> counts(kPasses);
  for (const Entry& entry : entries) {
    for (int pass = from; pass < kPasses; ++pass) ++counts[pass][digit(entry.key, pass)];
  }
  std::vector<Entry> sorted(n);
  for (int pass = from; pass < kPasses; ++pass) {
    std::array<std::uint32_t, kDigits>& starts = counts[pass];
    if (starts[digit(entries.front().key, pass)] == n) continue;
    std::uint32_t next = 0;
    for (std::uint32_t& start : starts) next += std::exchange(start, next);
    for (const Entry& entry : entries) sorted[starts[digit(entry.key, pass)]++] = entry;
    entries.swap(sorted);
  }
}

// Sorts by insertion what is nearly sorted; false, with equal keys still in their order, after
// more than four moves a value.
bool insertionSorted(std::vector<Entry>& entries) {
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

std::vector<Entry> sortedEntries(std::span<const double> values) {
  const std::size_t n = values.size();
  std::vector<Entry> entries(n);
  for (std::size_t i = 0; i < n; ++i) {
    entries[i] = {orderedKey(values[i]), static_cast<std::uint32_t>(i)};
  }
  if (n < kFew) {
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry& a, const Entry& b) { return a.key < b.key; });
  } else {
    // The upper digits tell nearly all numbers of a sample apart; the lower ones are sorted by
    // only where they do not.
    radixPasses(entries, kPasses / 2);
    if (!insertionSorted(entries)) radixPasses(entries, 0);
  }
  return entries;
}

std::vector<std::uint32_t> positionsOf(const std::vector<Entry>& entries) {
  std::vector<std::uint32_t> order(entries.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = entries[i].position;
  return order;
}

}  // namespace

std::vector<std::uint32_t> ascendingOrder(std::span<const double> values) {
  return positionsOf(sortedEntries(values));
}

std::vector<std::uint32_t> ascendingOrder(std::span<const double> values,
                                          std::vector<double>& sorted) {
  const std::vector<Entry> entries = sortedEntries(values);
  sorted.resize(entries.size());
  for (std::size_t i = 0; i < sorted.size(); ++i) sorted[i] = valueOf(entries[i].key);
  return positionsOf(entries);
}

}  // namespace survmeth::numerics
