#include "analysis/life/comparison.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

#include "analysis/life/combination.h"
#include "analysis/option.h"
#include "engine/curves/pooled.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;
using Kind = curves::Weighting::Kind;

constexpr std::size_t kMostGroups = 8192;

// Where less than one is at risk the variance of the hypergeometric law does not hold.
bool fractionalRisk(const LifeRows& rows, const engine::risk::TimeCodes& codes) {
  if (rows.wholeWeights) return false;
  const curves::Sample all(codes, rows.response(), rows.testRows(),
                           {rows.strata.codes, rows.strata.labels.size()});
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
  if (rows.sampling()) return "sampling weights are no frequencies";
  if (rows.clustered()) {
    return std::string("rows of one ") + (rows.clustersAreSubjects ? "subject" : "cluster") +
           " depend on each other";
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

void take(const std::vector<curves::WeightedTest>& tests, LifeComparison& comparison) {
  for (const curves::WeightedTest& each : tests) {
    comparison.reason = lossOf(each);
    if (!comparison.exists()) break;
    comparison.tests.push_back(
        {testName(each.weighting),
         {each.chiSquare, static_cast<double>(each.degreesOfFreedom), each.pValue},
         each.trend,
         each.trendPValue});
  }
}

// The groups' scores; the first group has 1, the second 2 ... unless others are given.
std::vector<double> scoresOf(const LifeRequest& request, std::size_t groups) {
  if (!request.wantsTrend()) return {};
  if (!request.scores.empty()) return request.scores;
  std::vector<double> scores(groups);
  std::iota(scores.begin(), scores.end(), 1.0);
  return scores;
}

void requireFitting(const LifeRows& rows, const LifeRequest& request) {
  const std::size_t groups = rows.groups.labels.size();
  if (!request.scores.empty() && request.scores.size() != groups) {
    throw BadOption("scores", "are " + std::to_string(request.scores.size()) +
                                  "; expected one for each of the " +
                                  text::counted(groups, "group", "groups"));
  }
  if (request.hazardRatios && groups != 2) {
    throw BadOption("hazard-ratios", "are of two groups; there " +
                                         std::string(groups == 1 ? "is " : "are ") +
                                         text::grouped(groups));
  }
}

// Pairs of groups by the first test, and the hazard ratios of two.
void addTwoByTwo(const LifeRows& rows, const LifeRequest& request, const curves::Pooled& pooled,
                 const curves::Weighting& first, LifeComparison& comparison) {
  if (request.pairs != Pairs::kNone) {
    comparison.pairs = curves::comparePairs(pooled, first, adjustmentOf(request.pairs));
  }
  if (request.hazardRatios) {
    comparison.ratios = curves::hazardRatios(pooled, 1 - request.alpha);
    comparison.coxRatio = coxRatio(rows, request);
  }
}

// What tests there are, or the reason why there is none.
void runTests(const LifeRows& rows, const LifeRequest& request,
              const std::vector<curves::Weighting>& asked, const engine::risk::TimeCodes& codes,
              LifeComparison& comparison) {
  // The log-rank test's counts stand behind all others.
  std::vector<curves::Weighting> weightings = asked;
  const auto logRankAt = static_cast<std::size_t>(
      std::find_if(asked.begin(), asked.end(),
                   [](const auto& each) { return each.kind == Kind::kLogRank; }) -
      asked.begin());
  if (logRankAt == asked.size()) weightings.push_back({Kind::kLogRank});
  const std::size_t groups = comparison.included.size();
  const curves::Pooled pooled(codes, rows.response(), rows.testRows(), rows.groupCodes());
  curves::Comparison found = curves::compare(pooled, weightings, scoresOf(request, groups));
  const curves::WeightedTest& logRank = found.tests[logRankAt];
  // Whoever is at risk at an event time has a share of what is expected there.
  for (std::size_t g = 0; g < groups; ++g) comparison.included[g] = logRank.expected[g] > 0;
  comparison.reason = reasonOf(logRank, comparison, fractionalRisk(rows, codes));
  if (!comparison.exists()) return;
  comparison.observed = logRank.observed;
  comparison.expected = logRank.expected;
  if (rows.stratified()) comparison.strata = std::move(found.events);
  found.tests.resize(asked.size());
  take(found.tests, comparison);
  if (comparison.exists()) addTwoByTwo(rows, request, pooled, asked.front(), comparison);
}

void withoutTests(const std::vector<curves::Weighting>& asked, LifeComparison& comparison) {
  comparison.observed.assign(comparison.included.size(), kNone);
  comparison.expected.assign(comparison.included.size(), kNone);
  comparison.strata.clear();
  comparison.tests.clear();
  for (const curves::Weighting& each : asked) comparison.tests.push_back({testName(each), {}});
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

LifeComparison compareLife(const LifeRows& rows, const LifeRequest& request,
                           const engine::risk::TimeCodes& codes) {
  requireFitting(rows, request);
  const std::vector<curves::Weighting> asked = request.weightings();
  LifeComparison comparison;
  comparison.included.assign(rows.groups.labels.size(), false);
  comparison.reason = reasonBefore(rows);
  if (comparison.exists()) runTests(rows, request, asked, codes, comparison);
  if (!comparison.exists()) withoutTests(asked, comparison);
  return comparison;
}

}  // namespace survmeth::analysis
