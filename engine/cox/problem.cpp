#include "engine/cox/problem.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "numerics/hot.h"
#include "numerics/threads.h"

namespace survmeth::engine::cox {
namespace {

const Response& checked(const Response& response, const Rows& rows, const Design& design) {
  risk::check(response, rows, design);
  if (response.causes != 1) {
    throw Refusal(Role::kEvent, Refusal::kNone, "proportional hazards has one kind of event");
  }
  return response;
}

constexpr std::size_t kBlock = numerics::BlockedColumns::kBlock;

struct Extent {
  double sum = 0.0;
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
};

// Adds finite numbers, eight at once.
SURVMETH_HOT void addRows(const double* rows, std::size_t count, Extent* extent) {
  constexpr std::size_t kLanes = 8;
  double sum[kLanes] = {};
  double low[kLanes];
  double high[kLanes];
  std::fill(low, low + kLanes, rows[0]);
  std::fill(high, high + kLanes, rows[0]);
  const std::size_t whole = count / kLanes * kLanes;
  for (std::size_t i = 0; i < whole; i += kLanes) {
    for (std::size_t m = 0; m < kLanes; ++m) {
      const double value = rows[i + m];
      sum[m] += value;
      low[m] = value < low[m] ? value : low[m];
      high[m] = value > high[m] ? value : high[m];
    }
  }
  for (std::size_t i = whole; i < count; ++i) {
    sum[0] += rows[i];
    low[0] = std::min(low[0], rows[i]);
    high[0] = std::max(high[0], rows[i]);
  }
  extent->sum += ((sum[0] + sum[4]) + (sum[2] + sum[6])) + ((sum[1] + sum[5]) + (sum[3] + sum[7]));
  for (std::size_t m = 0; m < kLanes; ++m) {
    extent->low = std::min(extent->low, low[m]);
    extent->high = std::max(extent->high, high[m]);
  }
}

}  // namespace

Problem::Problem(const Response& response, const Rows& rows, const Design& design,
                 double tieTolerance)
    : arrangement(checked(response, rows, design), rows, tieTolerance),
      sums(arrangement),
      x(numerics::BlockedColumns::unfilled(arrangement.rows(), design.size())),
      centres(arrangement.strata() * design.size()),
      spread(design.size(), 0.0),
      size(design.size(), 0.0),
      cluster(rows.cluster.begin(), rows.cluster.end()),
      clusters(rows.cluster.empty() ? 0 : rows.clusters),
      sourceRows(response.rows()),
      names(design.names),
      termNames(design.termNames),
      term(design.term) {
  numerics::inParallel(design.size(), [&](std::size_t j) {
    const double* from = design.columns[j].data();
    for (std::size_t block = 0; block < x.blocks(); ++block) {
      const std::uint32_t* source = arrangement.source.data() + block * kBlock;
      double* to = x.column(block, j);
      for (std::size_t i = 0; i < x.rowsOf(block); ++i) to[i] = from[source[i]];
    }
    centreColumn(j);
  });
}

void Problem::centreColumn(std::size_t j) {
  const risk::Arrangement& a = arrangement;
  for (std::size_t s = 0; s < a.strata(); ++s) {
    const std::size_t stop = a.stratumRow[s + 1];
    // The stratum's rows, block after block.
    const auto parts = [&](const auto& work) {
      for (std::size_t i = a.stratumRow[s]; i < stop;) {
        const std::size_t count = std::min(kBlock - i % kBlock, stop - i);
        work(x.column(i / kBlock, j) + i % kBlock, count);
        i += count;
      }
    };
    Extent extent;
    parts([&](const double* rows, std::size_t count) { addRows(rows, count, &extent); });
    // The centre need not be the exact mean; a constant is taken off exactly, so that what is left
    // is 0.
    const double mean = extent.sum / static_cast<double>(stop - a.stratumRow[s]);
    const double centre = std::clamp(mean, extent.low, extent.high);
    parts([&](double* rows, std::size_t count) {
      for (std::size_t i = 0; i < count; ++i) rows[i] -= centre;
    });
    centres[s * columns() + j] = centre;
    size[j] = std::max({size[j], std::fabs(extent.low), std::fabs(extent.high)});
    spread[j] = std::max({spread[j], extent.high - centre, centre - extent.low});
  }
}

std::size_t continuedRows(const Problem& problem, std::size_t block) {
  const risk::Arrangement& a = problem.arrangement;
  const std::size_t from = block * kBlock;
  if (from == 0) return 0;
  const std::size_t end = a.stratumRow[a.rowStratum[from - 1] + std::size_t{1}];
  return std::min(std::max(end, from) - from, problem.x.rowsOf(block));
}

}  // namespace survmeth::engine::cox
