#include "engine/cox/problem.h"

#include <algorithm>
#include <cmath>

#include "numerics/runningSum.h"

namespace survmeth::engine::cox {
namespace {

const Response& checked(const Response& response, const Rows& rows, const Design& design) {
  risk::check(response, rows, design);
  if (response.causes != 1) {
    throw Refusal(Role::kEvent, Refusal::kNone, "proportional hazards has one kind of event");
  }
  return response;
}

}  // namespace

Problem::Problem(const Response& response, const Rows& rows, const Design& design,
                 double tieTolerance)
    : arrangement(checked(response, rows, design), rows, tieTolerance),
      sums(arrangement),
      x(arrangement.rows(), design.size()),
      centres(arrangement.strata() * design.size()),
      spread(design.size(), 0.0),
      size(design.size(), 0.0),
      cluster(rows.cluster.begin(), rows.cluster.end()),
      clusters(rows.cluster.empty() ? 0 : rows.clusters),
      sourceRows(response.rows()),
      names(design.names),
      termNames(design.termNames),
      term(design.term) {
  const risk::Arrangement& a = arrangement;
  for (std::size_t j = 0; j < design.size(); ++j) {
    const std::span<const double> from = design.columns[j];
    for (std::size_t s = 0; s < a.strata(); ++s) {
      const std::size_t begin = a.stratumRow[s];
      const std::size_t stop = a.stratumRow[s + 1];
      numerics::RunningSum sum;
      double least = from[a.source[begin]];
      double most = least;
      for (std::size_t i = begin; i < stop; ++i) {
        const double value = from[a.source[i]];
        x(i, j) = value;
        sum.add(value);
        least = std::min(least, value);
        most = std::max(most, value);
      }
      // A constant is taken off exactly, so that what is left is 0.
      const double mean = sum.value() / static_cast<double>(stop - begin);
      const double centre = std::clamp(mean, least, most);
      centres[s * columns() + j] = centre;
      size[j] = std::max({size[j], std::fabs(least), std::fabs(most)});
      spread[j] = std::max({spread[j], most - centre, centre - least});
      for (std::size_t i = begin; i < stop; ++i) x(i, j) -= centre;
    }
  }
}

}  // namespace survmeth::engine::cox
