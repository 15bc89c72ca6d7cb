#include "engine/incidence/causes.h"

#include "numerics/doubleDouble.h"

namespace survmeth::engine::incidence {

Response ofAnyCause(const Response& response, std::vector<std::uint32_t>& event) {
  risk::check(response, {}, {});
  event.resize(response.rows());
  for (std::size_t i = 0; i < event.size(); ++i) event[i] = response.event[i] != 0 ? 1 : 0;
  return {response.entry, response.exit, event, 1};
}

Causes::Causes(const Response& response, const Rows& rows, const Groups& groups,
               double tieTolerance)
    : Causes(response, rows, groups, tieTolerance, {}) {}

Causes::Causes(const Response& response, const Rows& rows, const Groups& groups,
               double tieTolerance, std::vector<std::uint32_t> event)
    : sample(ofAnyCause(response, event), rows, groups, tieTolerance) {
  cause.resize(sample.rows());
  for (std::size_t i = 0; i < cause.size(); ++i) cause[i] = response.event[sample.source[i]];
  events.assign(response.causes, std::vector<double>(sample.times(), 0.0));
  if (rows.weight.empty()) {
    for (std::size_t i = 0; i < cause.size(); ++i) {
      if (cause[i] != 0) events[cause[i] - 1][sample.exitAt[i]] += 1.0;
    }
    return;
  }
  // The rows of one time stand together; their sum in twice the precision, as the sample's are.
  std::vector<numerics::DoubleDouble> sum(response.causes);
  for (std::size_t begin = 0, end = 0; begin < cause.size(); begin = end) {
    const std::uint32_t time = sample.exitAt[begin];
    for (; end < cause.size() && sample.exitAt[end] == time; ++end) {
      if (cause[end] != 0) sum[cause[end] - 1] = sum[cause[end] - 1] + sample.weightOf(end);
    }
    if (!(sample.events[time] > 0.0)) continue;
    for (std::size_t c = 0; c < sum.size(); ++c) events[c][time] = sum[c].hi;
    sum.assign(sum.size(), {});
  }
}

}  // namespace survmeth::engine::incidence
