// The stable ascending order of a run of keys, which every sort of the library is made of.
#ifndef KLIKRO_ORDER_H_
#define KLIKRO_ORDER_H_

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace klikro {

struct RankedRow {
  std::uint64_t rank;  // unsigned integer that orders as the key does
  std::uint32_t row;   // 0-based position in the run
};

// Both zeros rank alike, NaN ranks after every number in either direction.
inline std::uint64_t rankOf(double key, bool descending) {
  if (std::isnan(key)) return ~std::uint64_t{0};
  const double canonical = key + 0.0;  // -0 + 0 is +0
  std::uint64_t bits;
  std::memcpy(&bits, &canonical, sizeof bits);
  constexpr std::uint64_t sign = std::uint64_t{1} << 63;
  bits = (bits & sign) != 0 ? ~bits : bits | sign;
  return descending ? ~bits : bits;
}

inline bool inOrder(const RankedRow& a, const RankedRow& b) {
  return a.rank != b.rank ? a.rank < b.rank : a.row < b.row;
}

// Puts the rows in order whose ranks share their leading bits, wherever those bits did not decide.
inline void finishSort(std::vector<RankedRow>& rows, int sharedShift) {
  constexpr std::size_t insertionUpTo = 16;
  for (std::size_t i = 1; i < rows.size(); ++i) {
    if (!(rows[i].rank < rows[i - 1].rank)) continue;
    const std::uint64_t shared = rows[i].rank >> sharedShift;
    std::size_t begin = i - 1;
    while (begin > 0 && rows[begin - 1].rank >> sharedShift == shared) --begin;
    std::size_t end = i + 1;
    while (end < rows.size() && rows[end].rank >> sharedShift == shared) ++end;
    if (end - begin <= insertionUpTo) {
      for (std::size_t k = i; k < end; ++k) {
        const RankedRow row = rows[k];
        std::size_t at = k;
        for (; at > begin && row.rank < rows[at - 1].rank; --at) rows[at] = rows[at - 1];
        rows[at] = row;
      }
    } else {
      std::sort(rows.begin() + static_cast<std::ptrdiff_t>(begin),
                rows.begin() + static_cast<std::ptrdiff_t>(end), inOrder);
    }
    i = end - 1;
  }
}

// Least-significant-digit radix sort by the leading half of the rank, which tells apart all but a
// few of the keys that occur: stable and linear. The few are put in order by comparisons, at worst
// in O(n log n).
inline void radixSort(std::vector<RankedRow>& rows) {
  constexpr int digitBits = 11;
  constexpr std::size_t digits = std::size_t{1} << digitBits;
  constexpr int passes = 3;
  constexpr int lowest = 64 - passes * digitBits;
  std::vector<std::array<std::uint32_t, digits>> counts(passes);
  for (auto& pass : counts) pass.fill(0);
  for (const RankedRow& row : rows) {
    for (int pass = 0; pass < passes; ++pass) {
      ++counts[pass][(row.rank >> (lowest + pass * digitBits)) & (digits - 1)];
    }
  }
  std::vector<RankedRow> other(rows.size());
  for (int pass = 0; pass < passes; ++pass) {
    auto& starts = counts[pass];
    const int shift = lowest + pass * digitBits;
    // Every key has the same digit here: nothing would move.
    if (starts[(rows.front().rank >> shift) & (digits - 1)] == rows.size()) continue;
    std::uint32_t start = 0;
    for (auto& count : starts) start += std::exchange(count, start);
    for (const RankedRow& row : rows) other[starts[(row.rank >> shift) & (digits - 1)]++] = row;
    rows.swap(other);
  }
  finishSort(rows, lowest);
}

// The order of keys whose ranks nowhere rise: from the last to the first, equal ones as they stand.
inline std::vector<std::uint32_t> turnedRound(const double* keys, std::size_t count,
                                              bool descending) {
  std::vector<std::uint32_t> order;
  order.reserve(count);
  for (std::size_t end = count; end > 0;) {
    const std::uint64_t rank = rankOf(keys[end - 1], descending);
    std::size_t begin = end - 1;
    while (begin > 0 && rankOf(keys[begin - 1], descending) == rank) --begin;
    for (std::size_t i = begin; i < end; ++i) order.push_back(static_cast<std::uint32_t>(i));
    end = begin;
  }
  return order;
}

// The order of keys that take a few values only, as codes and labels do: each value's rows in turn.
// Empty where there are more values.
inline std::vector<std::uint32_t> orderOfFewValues(const double* keys, std::size_t count,
                                                   bool descending) {
  struct Value {
    std::uint64_t rank;
    std::uint32_t rows;
  };
  constexpr std::size_t most = 8;
  std::array<Value, most> values;
  std::size_t known = 0;
  std::vector<std::uint8_t> codes(count);
  std::size_t code = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint64_t rank = rankOf(keys[i], descending);
    if (known == 0 || values[code].rank != rank) {
      code = 0;
      while (code < known && values[code].rank != rank) ++code;
      if (code == known) {
        if (known == most) return {};
        values[known++] = {rank, 0};
      }
    }
    codes[i] = static_cast<std::uint8_t>(code);
    ++values[code].rows;
  }
  std::array<std::uint32_t, most> next{};
  for (std::size_t v = 0; v < known; ++v) {
    for (std::size_t other = 0; other < known; ++other) {
      if (values[other].rank < values[v].rank) next[v] += values[other].rows;
    }
  }
  std::vector<std::uint32_t> order(count);
  for (std::size_t i = 0; i < count; ++i) order[next[codes[i]]++] = static_cast<std::uint32_t>(i);
  return order;
}

// order[k] is the 0-based position of the k-th smallest of keys[count]; equal keys keep their
// order, NaN comes last, `descending` turns the numbers round. Empty when the keys are in order
// already. Cost O(n log n) at most.
inline std::vector<std::uint32_t> sortedOrder(const double* keys, std::size_t count,
                                              bool descending) {
  bool rises = false;
  bool falls = false;
  for (std::size_t i = 1; i < count && !(rises && falls); ++i) {
    const std::uint64_t before = rankOf(keys[i - 1], descending);
    const std::uint64_t rank = rankOf(keys[i], descending);
    rises = rises || rank > before;
    falls = falls || rank < before;
  }
  if (!falls) return {};
  if (!rises) return turnedRound(keys, count, descending);
  std::vector<std::uint32_t> order = orderOfFewValues(keys, count, descending);
  if (!order.empty()) return order;

  std::vector<RankedRow> rows(count);
  for (std::size_t i = 0; i < count; ++i) {
    rows[i] = {rankOf(keys[i], descending), static_cast<std::uint32_t>(i)};
  }
  // Below this length the digit tables cost more than comparisons do.
  constexpr std::size_t radixFrom = 2048;
  if (count < radixFrom) {
    std::sort(rows.begin(), rows.end(), inOrder);
  } else {
    radixSort(rows);
  }
  order.resize(count);
  for (std::size_t k = 0; k < count; ++k) order[k] = rows[k].row;
  return order;
}

// values[k] := values[order[k]] for a run; `scratch` is reused between calls.
template <typename T>
void applyOrder(const std::vector<std::uint32_t>& order, T* values, std::vector<T>& scratch) {
  scratch.assign(values, values + order.size());
  for (std::size_t k = 0; k < order.size(); ++k) values[k] = scratch[order[k]];
}

}  // namespace klikro

#endif  // KLIKRO_ORDER_H_
