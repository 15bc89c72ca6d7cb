// Histories of subjects that pass through states: a row for each stay in a state.
#ifndef ENGINE_STATES_HISTORY_H_
#define ENGINE_STATES_HISTORY_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "engine/curves/limits.h"
#include "engine/input.h"

namespace survmeth::engine::states {

using curves::kAbsent;

// In `to`: the stay ends without a transition that was seen.
inline constexpr std::uint32_t kNowhere = std::numeric_limits<std::uint32_t>::max();

// In state from during (entry, exit], then in state to.
struct Histories {
  std::span<const double> entry, exit;     // n, finite, entry < exit
  std::span<const std::uint32_t> from;     // n, 0 .. states - 1
  std::span<const std::uint32_t> to;       // n, 0 .. states - 1 or kNowhere, not from
  std::span<const std::uint32_t> subject;  // n, 0 .. subjects - 1; or empty: every row another one
  std::size_t states = 0, subjects = 0;
  std::span<const double> weight;  // n; or empty
  WeightKind weightKind = WeightKind::kFrequencies;
  std::span<const std::uint32_t> cluster = {};  // n, 0 .. clusters - 1; or empty: the subjects
  std::size_t clusters = 0;
  std::size_t rows() const { return exit.size(); }
};

// What is wrong with two rows of a subject that follow each other.
struct Fault {
  enum class Kind {
    kOverlap,  // the second begins before the first ends
    kGap,      // it begins later
    kJump,  // it begins then in another state than the first leads to, or in another one than the
            // first is in where that leads nowhere
  };
  Kind kind;
  std::size_t first, second;  // rows
};

// All faults, by subject, then by time; an overlap or a gap is no jump besides.
//
// Edge Refusal for columns of different length, numbers that are not finite, entries not before
//      their exits, codes out of range, and rows that lead to the state they are in
// Cost O(n log n)
std::vector<Fault> check(const Histories& histories);

}  // namespace survmeth::engine::states

#endif  // ENGINE_STATES_HISTORY_H_
