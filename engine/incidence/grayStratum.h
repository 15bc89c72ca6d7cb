// Scores of Gray's test in one stratum, and the estimate of their covariance.
#ifndef ENGINE_INCIDENCE_GRAY_STRATUM_H_
#define ENGINE_INCIDENCE_GRAY_STRATUM_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "engine/incidence/gray.h"
#include "engine/incidence/grayRows.h"
#include "numerics/squareMatrix.h"

namespace survmeth::engine::incidence {

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
