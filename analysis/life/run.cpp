#include "analysis/life/run.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "analysis/option.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;

void addReadings(const curves::Sample& sample, const LifeRequest& request, LifeAnswer& answer) {
  LifeReadings& readings = answer.readings;
  const curves::Options options = request.curves();
  for (const curves::Curve& curve : answer.curves) {
    if (!request.quantiles.empty()) {
      readings.quantiles.push_back(curves::quantiles(curve, request.quantiles));
    }
    if (!request.at.empty()) {
      readings.at.push_back(curves::readings(curve, request.at, false, options.scale));
    }
  }
  const engine::Rows rows = answer.rows.rows();
  if (!request.at.empty()) {
    readings.risk =
        curves::riskTable(answer.rows.response(), rows, answer.rows.groupCodes(), request.at);
  }
  if (!request.tau) return;
  readings.means = curves::restrictedMeans(sample, rows, answer.curves, options, *request.tau);
  for (std::size_t g = 1; g < readings.means.size(); ++g) {
    readings.contrasts.push_back(
        curves::compareMeans(readings.means[0], readings.means[g], options.level));
  }
}

void addIntervals(const LifeRequest& request, LifeAnswer& answer) {
  if (!request.intervals()) return;
  double last = 0;
  for (const curves::Curve& curve : answer.curves) last = std::max(last, curve.time.back());
  try {
    const std::vector<double> bounds =
        intervalBounds(request.width.value_or(0), request.bounds, last);
    for (const curves::Curve& curve : answer.curves) {
      answer.intervals.push_back(actuarialTable(curve, bounds, request.curves()));
    }
  } catch (const engine::Refusal& refused) {
    if (refused.role() != engine::Role::kIntervals) throw;
    throw BadOption(request.bounds.empty() ? "width" : "bounds", refused.what());
  }
}

}  // namespace

LifeAnswer fitLife(const frame::Frame& data, const LifeRequest& request, numerics::Progress&) {
  LifeAnswer answer;
  answer.rows = lifeRowsOf(data, request);
  const engine::Rows rows = answer.rows.rows();
  const curves::Sample sample(answer.rows.response(), rows, answer.rows.groupCodes(),
                              request.tolerance());
  answer.curves = curves::estimate(sample, rows, request.curves());
  const double half[] = {0.5};
  for (const curves::Curve& curve : answer.curves) {
    answer.medians.push_back(curves::quantiles(curve, half).front());
    answer.n += curve.n;
    answer.events += curve.events;
    answer.censored += curve.censored;
  }
  addReadings(sample, request, answer);
  addIntervals(request, answer);
  answer.comparison = compareLife(answer.rows, request);
  return answer;
}

}  // namespace survmeth::analysis
