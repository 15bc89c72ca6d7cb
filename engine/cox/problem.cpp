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

// Adds finite numbers, eight at once.
SURVMETH_HOT void addRows(const double* rows, std::size_t count, double* total, double* least,
                          double* most) {
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
  *total += ((sum[0] + sum[4]) + (sum[2] + sum[6])) + ((sum[1] + sum[5]) + (sum[3] + sum[7]));
  for (std::size_t m = 0; m < kLanes; ++m) {
    *least = std::min(*least, low[m]);
    *most = std::max(*most, high[m]);
  }
}

}  // namespace

// Of some rows of a column.
struct Problem::Extent {
  double sum = 0.0;
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
  void add(const double* rows, std::size_t count) { addRows(rows, count, &sum, &low, &high); }
};

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
    Extent whole;
    for (std::size_t block = 0; block < x.blocks(); ++block) {
      const std::uint32_t* source = arrangement.source.data() + block * kBlock;
      double* to = x.column(block, j);
      for (std::size_t i = 0; i < x.rowsOf(block); ++i) to[i] = from[source[i]];
      // While they are at hand.
      if (arrangement.strata() == 1) whole.add(to, x.rowsOf(block));
    }
    for (std::size_t s = 0; s < arrangement.strata(); ++s) {
      centreColumn(j, s, arrangement.strata() == 1 ? whole : extentOf(j, s));
    }
  });
}

namespace {

// Calls work(block, first, count) for the rows begin .. stop - 1, block after block.
template <typename Work>
void inBlocks(std::size_t begin, std::size_t stop, const Work& work) {
  for (std::size_t i = begin; i < stop;) {
    const std::size_t count = std::min(kBlock - i % kBlock, stop - i);
    work(i / kBlock, i % kBlock, count);
    i += count;
  }
}

}  // namespace

Problem::Extent Problem::extentOf(std::size_t j, std::size_t s) const {
  Extent extent;
  inBlocks(arrangement.stratumRow[s], arrangement.stratumRow[s + 1],
           [&](std::size_t block, std::size_t first, std::size_t count) {
             extent.add(x.column(block, j) + first, count);
           });
  return extent;
}

void Problem::centreColumn(std::size_t j, std::size_t s, const Extent& extent) {
  const std::size_t begin = arrangement.stratumRow[s];
  const std::size_t stop = arrangement.stratumRow[s + 1];
  // The centre need not be the exact mean; a constant is taken off exactly, so that what is left
  // is 0.
  const double mean = extent.sum / static_cast<double>(stop - begin);
  const double centre = std::clamp(mean, extent.low, extent.high);
  inBlocks(begin, stop, [&](std::size_t block, std::size_t first, std::size_t count) {
    double* rows = x.column(block, j) + first;
    for (std::size_t i = 0; i < count; ++i) rows[i] -= centre;
  });
  centres[s * columns() + j] = centre;
  size[j] = std::max({size[j], std::fabs(extent.low), std::fabs(extent.high)});
  spread[j] = std::max({spread[j], extent.high - centre, centre - extent.low});
}

std::size_t continuedRows(const Problem& problem, std::size_t block) {
  const risk::Arrangement& a = problem.arrangement;
  const std::size_t from = block * kBlock;
  if (from == 0) return 0;
  const std::size_t end = a.stratumRow[a.rowStratum[from - 1] + std::size_t{1}];
  return std::min(std::max(end, from) - from, problem.x.rowsOf(block));
}

}  // namespace survmeth::engine::cox
