#include "engine/curves/comparison.h"

#include <algorithm>
#include <cmath>

#include "Dist/Dist"
#include "engine/curves/pooled.h"
#include "engine/curves/weightedSums.h"
#include "engine/curves/weights.h"
#include "numerics/cholesky.h"

namespace survmeth::engine::curves {
namespace {

// Of each set of linked groups all but the one of the largest variance.
std::vector<std::size_t> independent(WeightedSums& sums) {
  const std::size_t k = sums.observed.size();
  std::vector<std::size_t> largest(k, k);
  for (std::size_t g = 0; g < k; ++g) {
    std::size_t& at = largest[sums.links.find(g)];
    if (at == k || sums.covariance(g, g) > sums.covariance(at, at)) at = g;
  }
  std::vector<std::size_t> chosen;
  for (std::size_t g = 0; g < k; ++g) {
    if (largest[sums.links.find(g)] != g) chosen.push_back(g);
  }
  return chosen;
}

void addTrend(WeightedTest& test, std::span<const double> scores) {
  const std::size_t k = scores.size();
  // Scores about their mean, weighted by the variances, lose nothing where they are far from 0.
  double sum = 0.0;
  double total = 0.0;
  for (std::size_t i = 0; i < k; ++i) {
    sum += test.covariance(i, i) * scores[i];
    total += test.covariance(i, i);
  }
  const double centre = total > 0.0 ? sum / total : 0.0;
  double score = 0.0;
  double variance = 0.0;
  for (std::size_t i = 0; i < k; ++i) {
    const double s = scores[i] - centre;
    score += s * (test.observed[i] - test.expected[i]);
    for (std::size_t j = 0; j < k; ++j)
      variance += s * (scores[j] - centre) * test.covariance(i, j);
  }
  if (test.degreesOfFreedom == 0 || !(variance > 0.0)) return;
  test.trend = score / std::sqrt(variance);
  test.trendPValue = 2.0 * CDFNormalStd(-std::fabs(test.trend));
}

}  // namespace

Comparison compare(const Response& response, const Rows& rows, const Groups& groups,
                   std::span<const Weighting> weightings, std::span<const double> scores,
                   double tieTolerance) {
  return compare(Pooled(response, rows, groups, tieTolerance), weightings, scores);
}

Comparison compare(const Pooled& pooled, std::span<const Weighting> weightings,
                   std::span<const double> scores) {
  const std::size_t k = pooled.groupCount;
  for (const Weighting& weighting : weightings) requireWeighting(weighting);
  const bool finite =
      std::all_of(scores.begin(), scores.end(), [](double score) { return std::isfinite(score); });
  if (!scores.empty() && (scores.size() != k || !finite)) {
    throw Refusal(Role::kValue, Refusal::kNone, "the scores are not one number for each group");
  }
  Comparison result;
  std::vector<WeightedSums> sums = weightedSums(pooled, weightings, k, &result.events);
  for (std::size_t w = 0; w < weightings.size(); ++w) {
    WeightedTest& test = result.tests.emplace_back();
    test.weighting = weightings[w];
    const std::vector<std::size_t> chosen = independent(sums[w]);
    test.observed = std::move(sums[w].observed);
    test.expected = std::move(sums[w].expected);
    test.covariance = std::move(sums[w].covariance);
    test.degreesOfFreedom = chosen.size();
    if (!chosen.empty()) {
      std::vector<double> score;
      for (const std::size_t g : chosen) score.push_back(test.observed[g] - test.expected[g]);
      test.chiSquare =
          numerics::Cholesky(numerics::part(test.covariance, chosen), 0.0).quadraticForm(score);
      test.pValue = pValChiSq(test.chiSquare, static_cast<double>(chosen.size()));
    }
    if (!scores.empty()) addTrend(test, scores);
  }
  return result;
}

}  // namespace survmeth::engine::curves
