// Survival curves of the reference data sets, by stratum, and what is read off them.
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "engine/curves/bands.h"
#include "engine/curves/curve.h"
#include "engine/curves/hazardRate.h"
#include "engine/curves/means.h"
#include "engine/curves/permutation.h"
#include "engine/curves/quantiles.h"
#include "tests/bits/results.h"
#include "tests/engine/cox/data.h"

namespace survmeth::test {
namespace {

namespace curves = engine::curves;
using Numbers = std::vector<double>;

// The curves of one sample, its rows and the options they were made with.
struct Estimated {
  curves::Sample sample;
  engine::Rows rows;
  curves::Options options;
  std::vector<curves::Curve> all;
};

void takeCurve(const TakeNumbers& take, const std::string& name, const Estimated& of,
               std::size_t group) {
  const curves::Curve& curve = of.all[group];
  if (curve.time.empty()) return;
  take(name + ", survival", curve.survival);
  take(name + ", variance", curve.logVariance);
  take(name + ", hazard", curve.hazard);
  take(name + ", variance of hazard", curve.hazardVariance);
  take(name + ", lower", curve.lower);
  take(name + ", upper", curve.upper);

  Numbers read;
  const Numbers shares = {0.1, 0.25, 0.5, 0.75, 0.9};
  for (const auto& each : curves::quantiles(curve, shares)) {
    read.insert(read.end(), {each.time, each.lower, each.upper});
  }
  if (!curves::robust(of.rows, of.options) && group < 4) {
    for (const auto kind : {curves::BandKind::kHallWellner, curves::BandKind::kEqualPrecision}) {
      const curves::Band band = curves::band(curve, of.rows, of.options, kind);
      read.push_back(band.critical);
      read.insert(read.end(), band.lower.begin(), band.lower.end());
      read.insert(read.end(), band.upper.begin(), band.upper.end());
    }
  }
  take(name + ", read off", read);
}

void takeMeans(const TakeNumbers& take, const std::string& name, const Estimated& of) {
  Numbers all;
  const double horizon = curves::commonHorizon(of.all);
  for (const auto& mean :
       curves::restrictedMeans(of.sample, of.rows, of.all, of.options, horizon)) {
    all.insert(all.end(), {mean.mean, mean.standardError, mean.lower, mean.upper, mean.lost});
  }
  const Numbers times = {horizon * 0.3, horizon * 0.5};
  for (const auto& rate :
       curves::hazardRates(of.sample, 0, of.rows, of.options, times, horizon / 16.0)) {
    all.insert(all.end(), {rate.rate, rate.standardError, rate.lower, rate.upper});
  }
  take(name + ", means and rates", all);
}

// Pairs of groups by the largest of weighted tests, and by random arrangements.
void takePairs(const TakeNumbers& take, const std::string& name, const engine::Response& response,
               engine::Rows rows, const curves::Groups& groups) {
  rows.weight = {};
  rows.weightKind = engine::WeightKind::kFrequencies;
  rows.cluster = {};
  rows.clusters = 0;
  Numbers all;
  for (const auto& pair :
       curves::combinePairs(response, rows, groups, curves::usualCombination(),
                            curves::Alternative::kTwoSided, curves::Adjustment::kHolm)) {
    all.insert(all.end(), pair.test.z.begin(), pair.test.z.end());
    const Numbers& correlation = pair.test.correlation.values();
    all.insert(all.end(), correlation.begin(), correlation.end());
    all.insert(all.end(), {pair.test.pValue, pair.adjusted});
  }
  const curves::Permutations few = {.count = 50};
  for (const auto& test :
       curves::permute(response, rows, groups, curves::usualCombination(), few).tests) {
    all.insert(all.end(), {test.z, test.chiSquare, test.asymptotic, test.pValue, test.upper});
  }
  take(name + ", pairs", all);
}

void takeData(const TakeNumbers& take, const CoxCase& one) {
  engine::Rows rows = one.data.rows();
  rows.offset = {};
  const curves::Groups groups = {one.data.stratum, one.data.strata};
  if (groups.size() > 1 && groups.size() < 5) {
    takePairs(take, one.name, one.data.response(), rows, groups);
  }
  const curves::Sample sample(one.data.response(), rows, groups);
  for (const auto scale : {curves::Scale::kLog, curves::Scale::kLogLog, curves::Scale::kLogit,
                           curves::Scale::kArcsine}) {
    curves::Options options;
    options.scale = scale;
    const Estimated of = {sample, rows, options, curves::estimate(sample, rows, options)};
    const std::string name = one.name + ", scale " + std::to_string(static_cast<int>(scale));
    for (std::size_t group = 0; group < of.all.size(); ++group) {
      takeCurve(take, name + ", group " + std::to_string(group), of, group);
    }
    if (of.all.size() < 10) takeMeans(take, name, of);
  }
}

}  // namespace

void curveResults(const TakeNumbers& take) {
  const Csv cases(std::string(SURVMETH_REFERENCE) + "/cox/cases.csv");
  std::set<std::string> seen;
  for (std::size_t at = 0; at < cases.rows(); ++at) {
    const std::string data =
        cases.text("data", at) + "|" + cases.text("strata", at) + cases.text("weight", at);
    if (seen.insert(data).second) takeData(take, coxCase(cases, at));
  }
}

}  // namespace survmeth::test
