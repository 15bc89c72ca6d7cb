// Rows that end in one of several causes, by group and time: what incidence curves, their means
// and cause-specific hazards are made of.
#ifndef ENGINE_INCIDENCE_CAUSES_H_
#define ENGINE_INCIDENCE_CAUSES_H_

#include <cstdint>
#include <vector>

#include "engine/curves/sample.h"

namespace survmeth::engine::incidence {

using curves::Groups;
using curves::kAbsent;

// The caller's rows, checked, and the order of their times, which curves and tests share.
struct Ordered {
  // Throws a Refusal where risk::check does, further for offsets and group codes out of range.
  //
  // In   tieTolerance   0: only equal times are one
  // Cost O(n) in radix passes
  Ordered(const Response& of, const Rows& with, const Groups& by, double tieTolerance = 0.0);

  Response response;
  Rows rows;
  Groups groups;
  risk::TimeCodes codes;
};

struct Causes {
  // Cost O(n); memory of a number for each time and cause
  explicit Causes(const Ordered& ordered);
  Causes(const Response& response, const Rows& rows, const Groups& groups,
         double tieTolerance = 0.0)
      : Causes(Ordered(response, rows, groups, tieTolerance)) {}

  std::size_t causes() const { return events.size(); }

  curves::Sample sample;                    // all causes are its event
  std::vector<std::uint32_t> cause;         // of each row of the sample, 0 censored
  std::vector<std::vector<double>> events;  // of cause c + 1 at each time of the sample: weight
};

}  // namespace survmeth::engine::incidence

#endif  // ENGINE_INCIDENCE_CAUSES_H_
