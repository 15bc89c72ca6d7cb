// Loops over rows in parts for threads.
#ifndef ENGINE_RISK_PARTS_H_
#define ENGINE_RISK_PARTS_H_

#include <algorithm>
#include <cstddef>

#include "numerics/threads.h"

namespace survmeth::engine::risk {

// Calls work(begin, end) for parts of 0 .. count - 1, on several threads.
template <typename Work>
void inRanges(std::size_t count, const Work& work) {
  constexpr std::size_t kRows = 1 << 14;
  numerics::inParallel((count + kRows - 1) / kRows, [&](std::size_t part) {
    work(part * kRows, std::min(count, (part + 1) * kRows));
  });
}

// Calls work(0) ... work(count - 1), none of which may need another.
template <typename Work>
void inParts(std::size_t count, const Work& work) {
  inRanges(count, [&](std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i) work(i);
  });
}

}  // namespace survmeth::engine::risk

#endif  // ENGINE_RISK_PARTS_H_
