// The comparison tests for many groups.
//
// A table of every group at every event time would grow as groups times rows. Here each row of a
// curve adds what it was at risk for, from sums over the event times that all groups share:
//
//     expected of a group     sum over its rows of leaving * A(time),   A = sum of D / N
//     covariance of j and l   -sum over the rows of j of leaving * G_l(time),
//                             G_l = sum of w^2 D (N - D) / (N - 1) n_l / N^2
//
// All terms have one sign, so nothing cancels. The variances are what makes each row of the
// covariance add up to 0, and elimination keeps that: it only adds numbers that are not negative.
#ifndef ANALYSIS_MANY_GROUPS_H_
#define ANALYSIS_MANY_GROUPS_H_

#include <cstddef>
#include <vector>

#include "analysis/survivalCurves.h"

namespace survmeth {

class ManyGroups {
 public:
  // In   curves  the groups, each at risk at the first event time; at least two
  //      times   the times at which anybody has an event, ascending
  // Cost O(rows log times + groups) time, O(rows + times + groups) memory, rows being the distinct
  //      times of each curve
  ManyGroups(const std::vector<const SurvivalCurve*>& curves, const std::vector<double>& times);

  // Events of each group, and as many as the log-rank test expects.
  const std::vector<double>& observed() const { return observed_; }
  const std::vector<double>& expected() const { return expected_; }

  // Less than one is at risk at an event time: the variance formula does not hold.
  bool fractionalRisk() const { return fractionalRisk_; }
  // Event times that somebody survives link all groups: the covariance is regular.
  bool linked() const { return linked_; }
  // At risk in all groups when most are.
  double largestRisk() const { return atRisk_.front(); }
  // The covariance matrix can be held at all.
  bool fits() const;

  // Chi-square with a degree of freedom less than there are groups; NaN where the covariance is
  // singular to working precision.
  // Cost for K groups: time O(K (rows + times) + K^3 / 6), memory K^2 / 2 + times doubles
  double chiSquare(CurveTest test) const;

  // Numbers held, to be compared with the size of the data.
  std::size_t elements() const;

 private:
  // Of one row: how much leaves, and after how many event times.
  struct Row {
    double leaving, events;
    std::size_t until;
  };

  std::size_t groups() const { return starts_.size() - 1; }
  double weightAt(CurveTest test, std::size_t i) const;
  std::vector<double> scores(CurveTest test) const;
  std::vector<double> covariances(CurveTest test) const;

  std::vector<Row> rows_;                // by group, in the order of time
  std::vector<std::size_t> starts_;      // of each group in rows_
  std::vector<double> atRisk_, events_;  // of all groups, at each event time
  std::vector<double> observed_, expected_;
  bool fractionalRisk_ = false, linked_ = false;
};

}  // namespace survmeth

#endif  // ANALYSIS_MANY_GROUPS_H_
