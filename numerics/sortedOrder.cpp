// The order of many numbers on several threads, with the numbers in that order.
#include <algorithm>
#include <array>
#include <utility>

#include "numerics/order.h"
#include "numerics/radix.h"
#include "numerics/threads.h"

namespace survmeth::numerics {
namespace {

using radix::Entry;
using radix::kDigits;
using radix::kPasses;

// Fewer values are sorted before a thread has started.
constexpr std::size_t kMany = 1 << 16;

// 0 .. size - 1 in as many parts as there are threads: the order is one whatever they are.
class Parts {
 public:
  explicit Parts(std::size_t size) : size_(size), count_(size < kMany ? 1 : threads()) {}
  std::size_t count() const { return count_; }
  template <typename Work>
  void run(const Work& work) const {
    const std::size_t each = size_ / count_;
    const std::size_t rest = size_ % count_;
    const auto begin = [&](std::size_t part) { return each * part + std::min(part, rest); };
    inParallel(count_, [&](std::size_t part) { work(part, begin(part), begin(part + 1)); });
  }

 private:
  std::size_t size_, count_;
};

// Stable passes over the digits `from` .. kPasses - 1. Within a digit the parts keep their order.
void passes(LargeArray<Entry>& entries, int from, const Parts& parts) {
  LargeArray<Entry> sorted(entries.size());
  std::vector<std::array<std::uint32_t, kDigits>> starts(parts.count());
  for (int pass = from; pass < kPasses; ++pass) {
    parts.run([&](std::size_t part, std::size_t begin, std::size_t end) {
      starts[part].fill(0);
      for (std::size_t i = begin; i < end; ++i) ++starts[part][radix::digit(entries[i].key, pass)];
    });
    std::uint32_t next = 0;
    for (std::size_t digit = 0; digit < kDigits; ++digit) {
      for (auto& start : starts) next += std::exchange(start[digit], next);
    }
    parts.run([&](std::size_t part, std::size_t begin, std::size_t end) {
      for (std::size_t i = begin; i < end; ++i) {
        sorted[starts[part][radix::digit(entries[i].key, pass)]++] = entries[i];
      }
    });
    entries.swap(sorted);
  }
}

}  // namespace

std::vector<std::uint32_t> ascendingOrder(std::span<const double> values,
                                          std::vector<double>& sorted) {
  const std::size_t n = values.size();
  const Parts parts(n);
  LargeArray<Entry> entries(n);
  parts.run([&](std::size_t, std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i) {
      entries[i] = {radix::orderedKey(values[i]), static_cast<std::uint32_t>(i)};
    }
  });
  if (parts.count() == 1) {
    radix::sort(entries);
  } else {
    passes(entries, kPasses / 2, parts);
    if (!radix::insertionSorted(entries)) passes(entries, 0, parts);
  }
  std::vector<std::uint32_t> order(n);
  sorted.resize(n);
  parts.run([&](std::size_t, std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i) {
      order[i] = entries[i].position;
      sorted[i] = radix::valueOf(entries[i].key);
    }
  });
  return order;
}

}  // namespace survmeth::numerics
