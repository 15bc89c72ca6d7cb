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

// The response with all causes made one event, which is kept in `event`.
Response ofAnyCause(const Response& response, std::vector<std::uint32_t>& event);

struct Causes {
  // Throws a Refusal where curves::check does, and for a cause above response.causes.
  //
  // In   tieTolerance   0: only equal times are one
  // Cost O(n) in radix passes; memory of a number for each time and cause
  Causes(const Response& response, const Rows& rows, const Groups& groups,
         double tieTolerance = 0.0);

  std::size_t causes() const { return events.size(); }

  curves::Sample sample;                    // all causes are its event
  std::vector<std::uint32_t> cause;         // of each row of the sample, 0 censored
  std::vector<std::vector<double>> events;  // of cause c + 1 at each time of the sample: weight

 private:
  Causes(const Response& response, const Rows& rows, const Groups& groups, double tieTolerance,
         std::vector<std::uint32_t> event);
};

}  // namespace survmeth::engine::incidence

#endif  // ENGINE_INCIDENCE_CAUSES_H_
