#include "engine/cox/problem.h"

#include <algorithm>
#include <cmath>

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
  std::vector<double> value(arrangement.rows());
  for (std::size_t j = 0; j < design.size(); ++j) {
    const std::span<const double> from = design.columns[j];
    for (std::size_t i = 0; i < value.size(); ++i) value[i] = from[arrangement.source[i]];
    centreColumn(j, value);
    for (std::size_t block = 0; block < x.blocks(); ++block) {
      std::copy_n(value.data() + block * numerics::BlockedColumns::kBlock, x.rowsOf(block),
                  x.column(block, j));
    }
  }
}

void Problem::centreColumn(std::size_t j, std::vector<double>& value) {
  const risk::Arrangement& a = arrangement;
  for (std::size_t s = 0; s < a.strata(); ++s) {
    const std::span<double> rows{value.data() + a.stratumRow[s],
                                 a.stratumRow[s + 1] - std::size_t{a.stratumRow[s]}};
    // Four sums at once, each of which waits for itself. The centre need not be the exact mean.
    double sum[4] = {};
    double least[4] = {rows[0], rows[0], rows[0], rows[0]};
    double most[4] = {rows[0], rows[0], rows[0], rows[0]};
    for (std::size_t i = 0; i < rows.size(); ++i) {
      sum[i % 4] += rows[i];
      least[i % 4] = std::min(least[i % 4], rows[i]);
      most[i % 4] = std::max(most[i % 4], rows[i]);
    }
    const double low = std::min(std::min(least[0], least[1]), std::min(least[2], least[3]));
    const double high = std::max(std::max(most[0], most[1]), std::max(most[2], most[3]));
    const double mean = ((sum[0] + sum[1]) + (sum[2] + sum[3])) / static_cast<double>(rows.size());
    // A constant is taken off exactly, so that what is left is 0.
    const double centre = std::clamp(mean, low, high);
    centres[s * columns() + j] = centre;
    size[j] = std::max({size[j], std::fabs(low), std::fabs(high)});
    spread[j] = std::max({spread[j], high - centre, centre - low});
    for (double& row : rows) row -= centre;
  }
}

}  // namespace survmeth::engine::cox
