// Scores of Gray's test in one stratum, and the estimate of their covariance.
#ifndef ENGINE_INCIDENCE_GRAY_STRATUM_H_
#define ENGINE_INCIDENCE_GRAY_STRATUM_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/incidence/gray.h"
#include "numerics/squareMatrix.h"

namespace survmeth::engine::incidence {

// Rows of positive weight by stratum, then time, one after the other in memory: every cause, and
// every pair of groups, runs over them.
struct GrayRow {
  std::uint32_t code, group, cause;  // code of its time
};
struct GrayStratum {
  std::span<const GrayRow> rows;
  std::span<const double> weight;  // empty: 1
  double weightOf(std::size_t row) const { return weight.empty() ? 1.0 : weight[row]; }
};
struct GrayRows {
  // Cost O(n)
  explicit GrayRows(const Ordered& ordered);
  // Those of two groups.
  GrayRows(const GrayRows& all, std::uint32_t first, std::uint32_t second);

  std::size_t strata() const { return first.size() - 1; }
  GrayStratum stratum(std::size_t s) const;

  std::vector<GrayRow> rows;
  std::vector<double> weight;
  std::vector<std::size_t> first;  // strata + 1
  std::size_t groups;              // of the caller
};

// Which groups of a stratum can be compared.
struct GrayPart {
  std::vector<std::uint32_t>
      groups;             // at risk at the stratum's first event of the cause, ascending
  bool anyEvent = false;  // of the cause
  // All who are at risk then have the event, and too few groups have competing events before it.
  bool singular = false;
  std::uint32_t last = 0;  // code of the time after which nothing counts: no event of the cause
                           // finds two groups at risk
};

// Nobody enters late: all groups that are ever at risk at an event of the cause are so at the first
// one. The covariance is a sum over groups and times: each event of the cause, unless all who are
// at risk have it, and each competing event with an event of the cause after it, adds d c c' for a
// vector c in the direction of its own group; K groups need K - 1 such directions.
//
// Cost O(rows)
GrayPart grayPart(const GrayStratum& stratum, std::size_t groups, std::uint32_t tested);

// Sums over strata, by the caller's groups.
struct GraySums {
  explicit GraySums(std::size_t groups) : scores(groups), covariance(groups) {}
  std::vector<double> scores;
  numerics::SquareMatrix covariance;  // lower triangle
};

// Cost O(rows + K^2) for each event time, K the part's groups
void addGrayStratum(const GrayStratum& stratum, const GrayOptions& options, const GrayPart& part,
                    GraySums& sums);

}  // namespace survmeth::engine::incidence

#endif  // ENGINE_INCIDENCE_GRAY_STRATUM_H_
