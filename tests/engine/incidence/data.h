// Data sets of tests/reference/incidence as the engine takes them.
#ifndef TESTS_ENGINE_INCIDENCE_DATA_H_
#define TESTS_ENGINE_INCIDENCE_DATA_H_

#include <algorithm>
#include <string>

#include "engine/incidence/curve.h"
#include "tests/engine/curves/data.h"

namespace survmeth::test {

struct CauseData : CurveData {
  std::uint32_t causes = 2;

  engine::Response response() const { return {entry, exit, event, causes}; }
  engine::incidence::Causes sorted() const { return {response(), rows(), groups()}; }
  std::vector<engine::incidence::Curve> curves(
      engine::incidence::Variance variance = engine::incidence::Variance::kAalen) const {
    return engine::incidence::estimate(sorted(), rows(), variance);
  }
};

// Weights "count" and "share" as the script makes them of the rows' numbers; sampling weights
// where they are shares.
inline CauseData causeData(const std::string& name, const std::string& group,
                           const std::string& weight = {}, const std::string& cluster = {},
                           const std::string& stratum = {}) {
  const Csv file(std::string(SURVMETH_REFERENCE) + "/incidence/data/" + name + ".csv");
  CauseData data;
  data.exit = file.numbers("time");
  if (std::count(file.names().begin(), file.names().end(), "entry") > 0) {
    data.entry = file.numbers("entry");
  }
  data.causes = 0;
  for (const double status : file.numbers("status")) {
    data.event.push_back(static_cast<std::uint32_t>(status));
    data.causes = std::max(data.causes, data.event.back());
  }
  if (!group.empty()) data.group = codesOf(file.numbers(group), data.groupCount);
  if (!cluster.empty()) data.cluster = codesOf(file.numbers(cluster), data.clusterCount);
  if (!stratum.empty()) data.stratum = codesOf(file.numbers(stratum), data.stratumCount);
  for (std::size_t i = 1; i <= file.rows(); ++i) {
    if (weight == "count") data.weight.push_back(1.0 + static_cast<double>(i % 3));
    if (weight == "share") data.weight.push_back(0.5 + static_cast<double>(i % 7) / 4.0);
  }
  return data;
}

}  // namespace survmeth::test

#endif  // TESTS_ENGINE_INCIDENCE_DATA_H_
