#include "engine/incidence/gray.h"

#include <cmath>
#include <numeric>

#include "Dist/Dist"
#include "engine/incidence/grayStratum.h"
#include "numerics/cholesky.h"

namespace survmeth::engine::incidence {
namespace {

void requireTestable(const Response& response, const Rows& rows,
                     std::span<const std::uint32_t> causes, const GrayOptions& options) {
  const auto refuse = [](Role role, const char* text) {
    throw Refusal(role, Refusal::kNone, text);
  };
  if (!response.entry.empty()) refuse(Role::kEntry, "Gray's test takes no late entry");
  if (!rows.weight.empty() && rows.weightKind == WeightKind::kSampling) {
    refuse(Role::kWeight, "Gray's test takes no sampling weights");
  }
  if (!rows.cluster.empty()) refuse(Role::kCluster, "Gray's test takes no clusters");
  for (const std::uint32_t cause : causes) {
    if (cause >= 1 && cause <= response.causes) continue;
    refuse(Role::kEvent, "the cause that is tested is none of the causes");
  }
  if (!std::isfinite(options.rho)) refuse(Role::kRho, "rho is not finite");
}

// Of each set of groups that strata compare, directly or by way of others, all but the last: the
// covariance is singular along the sum of a set, and in no other direction.
std::vector<std::size_t> independent(const std::vector<std::vector<std::uint32_t>>& compared,
                                     std::size_t groups) {
  std::vector<std::size_t> last(groups);  // a later group of the same set, or itself
  std::iota(last.begin(), last.end(), std::size_t{0});
  const auto find = [&last](std::size_t group) {
    while (last[group] != group) group = last[group] = last[last[group]];
    return group;
  };
  std::vector<bool> has(groups, false);
  for (const std::vector<std::uint32_t>& each : compared) {
    for (const std::uint32_t group : each) {
      has[group] = true;
      const std::size_t a = find(each.front());
      const std::size_t b = find(group);
      last[std::min(a, b)] = std::max(a, b);
    }
  }
  std::vector<std::size_t> chosen;
  for (std::size_t g = 0; g < groups; ++g) {
    if (has[g] && find(g) != g) chosen.push_back(g);
  }
  return chosen;
}

GrayTest test(const GrayRows& rows, const GrayOptions& options) {
  const std::size_t count = rows.groups;
  GrayTest result;
  result.included.assign(count, false);
  GraySums sums(count);
  std::vector<std::vector<std::uint32_t>> compared;
  bool anyEvent = false;
  bool singular = true;
  for (std::size_t s = 0; s < rows.strata(); ++s) {
    const GrayStratum stratum = rows.stratum(s);
    GrayPart part = grayPart(stratum, count, options.cause);
    anyEvent = anyEvent || part.anyEvent;
    for (const std::uint32_t group : part.groups) result.included[group] = true;
    if (part.groups.size() < 2) continue;
    addGrayStratum(stratum, options, part, sums);
    singular = singular && part.singular;
    compared.push_back(std::move(part.groups));
  }
  if (!anyEvent) {
    result.reason = "there is no event of the type";
  } else if (compared.empty()) {
    result.reason = "only one group has anybody at risk when the first event of the type happens";
  } else if (singular && compared.size() == 1) {
    result.reason =
        "the variance is singular: all who are at risk have the event together, at its only time";
  }
  if (!result.reason.empty()) return result;

  const std::vector<std::size_t> chosen = independent(compared, count);
  numerics::SquareMatrix covariance(chosen.size());
  std::vector<double> scores;
  for (std::size_t k = 0; k < chosen.size(); ++k) {
    scores.push_back(sums.scores[chosen[k]]);
    for (std::size_t l = 0; l <= k; ++l) covariance(k, l) = sums.covariance(chosen[k], chosen[l]);
  }
  // Corrected for ties the estimate of the variance can come out negative, and a weight can
  // overflow.
  const numerics::Cholesky factor(covariance);
  const double chiSquare = factor.fullRank() ? factor.quadraticForm(scores) : kAbsent;
  if (!std::isfinite(chiSquare)) {
    result.reason = "the estimate of the variance is not a positive number";
    return result;
  }
  result.chiSquare = chiSquare;
  result.degreesOfFreedom = static_cast<double>(chosen.size());
  result.pValue = pValChiSq(chiSquare, result.degreesOfFreedom);
  return result;
}

}  // namespace

GrayTest grayTest(const Response& response, const Rows& rows, const Groups& groups,
                  const GrayOptions& options) {
  return grayTests(response, rows, groups, {&options.cause, 1}, options).front();
}

std::vector<GrayTest> grayTests(const Response& response, const Rows& rows, const Groups& groups,
                                std::span<const std::uint32_t> causes, GrayOptions options) {
  requireTestable(response, rows, causes, options);
  return grayTests(Ordered(response, rows, groups, options.tieTolerance), causes, options);
}

std::vector<GrayTest> grayTests(const Ordered& ordered, std::span<const std::uint32_t> causes,
                                GrayOptions options) {
  requireTestable(ordered.response, ordered.rows, causes, options);
  const GrayRows rows(ordered);
  std::vector<GrayTest> result;
  for (const std::uint32_t cause : causes) {
    options.cause = cause;
    result.push_back(test(rows, options));
  }
  return result;
}

std::vector<curves::PairTest> grayPairs(const Response& response, const Rows& rows,
                                        const Groups& groups, const GrayOptions& options,
                                        curves::Adjustment adjustment) {
  requireTestable(response, rows, {&options.cause, 1}, options);
  return grayPairs(Ordered(response, rows, groups, options.tieTolerance), options, adjustment);
}

std::vector<curves::PairTest> grayPairs(const Ordered& ordered, const GrayOptions& options,
                                        curves::Adjustment adjustment) {
  requireTestable(ordered.response, ordered.rows, {&options.cause, 1}, options);
  const GrayRows all(ordered);
  std::vector<curves::PairTest> result;
  std::vector<double> pValues;
  for (std::uint32_t g = 0; g < all.groups; ++g) {
    for (std::uint32_t h = g + 1; h < all.groups; ++h) {
      const GrayTest found = test(GrayRows(all, g, h), options);
      result.push_back({g, h, found.chiSquare, found.pValue});
      pValues.push_back(found.pValue);
    }
  }
  const std::vector<double> adjusted = curves::adjust(pValues, adjustment);
  for (std::size_t i = 0; i < result.size(); ++i) result[i].adjusted = adjusted[i];
  return result;
}

}  // namespace survmeth::engine::incidence
