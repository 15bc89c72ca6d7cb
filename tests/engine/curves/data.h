// Data sets of the reference cases as the engine takes them.
#ifndef TESTS_ENGINE_CURVES_DATA_H_
#define TESTS_ENGINE_CURVES_DATA_H_

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "engine/curves/curve.h"
#include "tests/support/codes.h"
#include "tests/support/csv.h"

namespace survmeth::test {

// Columns that own what the engine's spans look at.
struct CurveData {
  std::vector<double> entry, exit, weight, offset;
  std::vector<std::uint32_t> event, group, cluster, stratum;
  std::size_t groupCount = 1, clusterCount = 0, stratumCount = 1;
  engine::WeightKind weightKind = engine::WeightKind::kFrequencies;

  engine::Response response() const { return {entry, exit, event, 1}; }
  engine::Rows rows() const {
    engine::Rows rows;
    rows.weight = weight;
    rows.weightKind = weightKind;
    rows.offset = offset;
    rows.cluster = cluster;
    rows.clusters = clusterCount;
    rows.stratum = stratum;
    rows.strata = stratumCount;
    return rows;
  }
  engine::curves::Groups groups() const { return {group, groupCount}; }
  engine::curves::Sample sample() const { return {response(), rows(), groups()}; }
  std::vector<engine::curves::Curve> curves(const engine::curves::Options& options = {}) const {
    return engine::curves::estimate(sample(), rows(), options);
  }
};

// One group, each row from the beginning.
inline CurveData small(std::vector<double> exit, std::vector<std::uint32_t> event) {
  CurveData data;
  data.exit = std::move(exit);
  data.event = std::move(event);
  return data;
}

// A data set of tests/reference/cox/data with weights that the scripts make from the rows' numbers.
inline CurveData curveData(const std::string& name, const std::string& group,
                           const std::string& weight, const std::string& cluster,
                           const std::string& stratum = {}) {
  const Csv file(std::string(SURVMETH_REFERENCE) + "/cox/data/" + name + ".csv");
  CurveData data;
  data.exit = file.numbers("time");
  if (std::count(file.names().begin(), file.names().end(), "start") > 0) {
    data.entry = file.numbers("start");
  }
  for (const double event : file.numbers("event")) data.event.push_back(event != 0.0 ? 1 : 0);
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

#endif  // TESTS_ENGINE_CURVES_DATA_H_
