#include "analysis/life/comparison.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

#include "text/numbers.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;
using Kind = curves::Weighting::Kind;

constexpr std::size_t kMostGroups = 8192;

// Where less than one is at risk the variance of the hypergeometric law does not hold.
bool fractionalRisk(const LifeRows& rows, const LifeRequest& request) {
  if (rows.wholeWeights()) return false;
  const curves::Sample all(rows.response(), rows.rows(), {}, request.tolerance());
  for (std::size_t k = 0; k < all.times(); ++k) {
    if (all.events[k] > 0 && all.surviving[k] > 0 && all.atRisk[k] <= 1) return true;
  }
  return false;
}

// Why there is no test, before any is made.
std::string reasonBefore(const LifeRows& rows) {
  if (!rows.several()) return "there is one group";
  if (rows.groups.labels.size() > kMostGroups) {
    return "there are too many groups for their covariance matrix";
  }
  return {};
}

// Likewise from the log-rank test's counts.
std::string reasonOf(const curves::WeightedTest& logRank, const LifeComparison& comparison,
                     bool fractional) {
  const auto linked = static_cast<std::size_t>(
      std::count(comparison.included.begin(), comparison.included.end(), true));
  if (linked == 0) return "there is no event";
  if (linked < 2) return "nobody is at risk at an event time outside one group";
  if (fractional) return "the weights leave less than one at risk at an event time";
  if (logRank.degreesOfFreedom + 1 < linked) {
    return "the covariance is singular: no event times that some of those at risk survive link all "
           "groups";
  }
  return {};
}

// Of a test whose sums are there and give no number.
std::string lossOf(const curves::WeightedTest& test) {
  for (std::size_t g = 0; g < test.observed.size(); ++g) {
    if (!std::isfinite(test.covariance(g, g))) {
      return "the weights are too large for the sums of the tests";
    }
  }
  if (!std::isfinite(test.chiSquare)) return "the covariance is singular to working precision";
  return {};
}

void take(std::vector<curves::WeightedTest>& tests, LifeComparison& comparison) {
  for (const curves::WeightedTest& each : tests) {
    comparison.reason = lossOf(each);
    if (!comparison.exists()) return comparison.tests.clear();
    comparison.tests.push_back(
        {testName(each.weighting),
         {each.chiSquare, static_cast<double>(each.degreesOfFreedom), each.pValue}});
  }
  comparison.observed = std::move(tests.front().observed);
  comparison.expected = std::move(tests.front().expected);
}

}  // namespace

std::string testName(const curves::Weighting& weighting) {
  switch (weighting.kind) {
    case Kind::kLogRank:
      return "Log-rank";
    case Kind::kGehanBreslow:
      return "Gehan-Breslow";
    case Kind::kTaroneWare:
      return "Tarone-Ware";
    case Kind::kPetoPeto:
      return "Peto-Peto";
    case Kind::kModifiedPetoPeto:
      return "Modified Peto-Peto";
    case Kind::kFlemingHarrington:
      break;
  }
  return "Fleming-Harrington (" + text::brief(weighting.p) + ", " + text::brief(weighting.q) + ")";
}

LifeComparison compareLife(const LifeRows& rows, const LifeRequest& request) {
  const std::array<curves::Weighting, 3> weightings = {
      {{Kind::kLogRank}, {Kind::kGehanBreslow}, {Kind::kTaroneWare}}};
  const std::size_t groups = rows.groups.labels.size();
  LifeComparison comparison;
  comparison.included.assign(groups, false);
  comparison.observed.assign(groups, kNone);
  comparison.expected.assign(groups, kNone);
  comparison.reason = reasonBefore(rows);
  if (comparison.exists()) {
    std::vector<curves::WeightedTest> tests =
        curves::compare(rows.response(), rows.rows(), rows.groupCodes(), weightings, {},
                        request.tolerance())
            .tests;
    // Whoever is at risk at an event time has a share of what is expected there.
    for (std::size_t g = 0; g < groups; ++g) {
      comparison.included[g] = tests.front().expected[g] > 0;
    }
    comparison.reason = reasonOf(tests.front(), comparison, fractionalRisk(rows, request));
    if (comparison.exists()) take(tests, comparison);
  }
  if (!comparison.exists()) {
    for (const curves::Weighting& each : weightings) {
      comparison.tests.push_back({testName(each), {}});
    }
  }
  return comparison;
}

}  // namespace survmeth::analysis
