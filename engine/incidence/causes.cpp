#include "engine/incidence/causes.h"

#include "numerics/doubleDouble.h"

namespace survmeth::engine::incidence {
namespace {

risk::TimeCodes checked(const Response& response, const Rows& rows, const Groups& groups,
                        double tieTolerance) {
  risk::check(response, rows, {});
  curves::checkGroups(response, rows, groups, "Incidences");
  return {response, tieTolerance};
}

}  // namespace

Ordered::Ordered(const Response& of, const Rows& with, const Groups& by, double tieTolerance)
    : response(of), rows(with), groups(by), codes(checked(of, with, by, tieTolerance)) {}

Causes::Causes(const Ordered& ordered)
    : sample(ordered.codes, ordered.response, ordered.rows, ordered.groups) {
  const Response& response = ordered.response;
  cause.resize(sample.rows());
  for (std::size_t i = 0; i < cause.size(); ++i) cause[i] = response.event[sample.source[i]];
  events.resize(response.causes);
  for (std::vector<double>& each : events) each.assign(sample.times(), 0.0);
  if (sample.weight.empty()) {
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
