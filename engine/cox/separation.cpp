#include "engine/cox/separation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "engine/cox/likelihood.h"

namespace survmeth::engine::cox {
namespace {

double largestOfOthers(const Problem& problem, std::size_t k, const std::vector<double>& value) {
  double largest = -std::numeric_limits<double>::infinity();
  for (const std::uint32_t row : othersAtRisk(problem.arrangement, k)) {
    largest = std::max(largest, value[row]);
  }
  return largest;
}

std::string listed(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 < names.size() ? ", " : " and ";
    text += names[i];
  }
  return text;
}

}  // namespace

std::optional<Separation> separates(const Problem& problem, Ties ties,
                                    std::span<const double> direction) {
  const risk::Arrangement& a = problem.arrangement;
  const std::size_t p = problem.columns();
  double largest = 0.0;
  for (std::size_t j = 0; j < p; ++j) {
    largest = std::max(largest, std::fabs(direction[j]) * problem.spread[j]);
  }
  if (!(largest > 0.0)) return std::nullopt;
  Separation result;
  result.direction.assign(p, 0.0);
  for (std::size_t j = 0; j < p; ++j) {
    if (std::fabs(direction[j]) * problem.spread[j] <= 1e-5 * largest) continue;
    result.columns.push_back(j);
    result.direction[j] = direction[j];
  }
  std::vector<double> value(a.rows(), 0.0);
  numerics::addProduct(problem.x, result.direction, value);
  const std::vector<double> most = problem.sums.largestInRiskSets(value);
  std::vector<double> negative(value);
  for (double& v : negative) v = -v;
  const std::vector<double> least = problem.sums.largestInRiskSets(negative);
  double range = 0.0;
  for (std::size_t k = 0; k < a.times(); ++k) range = std::max(range, most[k] + least[k]);
  if (!(range > 0.0)) return std::nullopt;
  const double slack = 1e-6 * range;
  const bool exact = ties == Ties::kDiscrete || ties == Ties::kMarginal;
  for (std::size_t k = 0; k < a.times(); ++k) {
    const double above = exact && a.events[k] > 1 ? largestOfOthers(problem, k, value) : most[k];
    for (std::uint32_t i = 0; i < a.events[k]; ++i) {
      if (value[a.firstEvent[k] + i] < above - slack) return std::nullopt;
    }
    const std::uint32_t code = a.stratumCode[a.timeStratum[k]];
    const bool below = most[k] + least[k] > slack;
    if (below && (result.strata.empty() || result.strata.back() != code)) {
      result.strata.push_back(code);
    }
  }
  return result;
}

Outcome separationOutcome(const Problem& problem, const Separation& separation) {
  Outcome outcome{"separated", "", {}};
  for (const std::size_t j : separation.columns) outcome.names.push_back(problem.names[j]);
  const bool one = outcome.names.size() == 1;
  outcome.text = (one ? "the coefficient of " : "the coefficients of ") + listed(outcome.names) +
                 (one ? " is" : " are") +
                 " infinite: at every event time the rows that fail have the largest value of " +
                 (one ? "it" : "a combination of them") + " among those at risk, or the smallest";
  if (problem.arrangement.strata() > 1) outcome.strata = separation.strata;
  return outcome;
}

std::vector<Outcome> collinearOutcomes(const Problem& problem, const numerics::Cholesky& factor) {
  std::vector<Outcome> outcomes;
  for (std::size_t j = 0; j < problem.columns(); ++j) {
    if (!factor.dependent(j)) continue;
    Outcome outcome{"collinear", "", {problem.names[j]}};
    const std::vector<double> c = factor.combination(j);
    std::vector<std::string> others;
    for (std::size_t k = 0; k < j; ++k) {
      if (std::fabs(c[k]) * problem.spread[k] > 1e-6 * problem.spread[j]) {
        others.push_back(problem.names[k]);
      }
    }
    const std::string where = problem.arrangement.strata() > 1 ? " of any stratum" : "";
    if (others.empty()) {
      outcome.text = problem.names[j] + " is constant within every risk set" + where;
    } else {
      outcome.text = problem.names[j] + " is a linear combination of " + listed(others) +
                     (problem.arrangement.strata() > 1 ? " within the strata" : "");
      outcome.names.insert(outcome.names.end(), others.begin(), others.end());
    }
    outcomes.push_back(outcome);
  }
  return outcomes;
}

std::vector<double> smallestInformation(const Problem& problem) {
  double events = 0.0;
  for (const double weight : problem.arrangement.eventWeight) events += weight;
  std::vector<double> smallest(problem.columns());
  for (std::size_t j = 0; j < problem.columns(); ++j) {
    // Twice the rounding of the largest value, and of the difference of two second moments.
    const double rounding = 0x1p-51 * problem.size[j];
    const double moments = 1e-13 * problem.spread[j];
    smallest[j] = events * (rounding * rounding + moments * problem.spread[j]);
  }
  return smallest;
}

}  // namespace survmeth::engine::cox
