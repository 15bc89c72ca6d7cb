// The penalised likelihood of a problem over its active columns, and its maximum over some of them.
#ifndef ENGINE_COX_PENALISED_LIKELIHOOD_H_
#define ENGINE_COX_PENALISED_LIKELIHOOD_H_

#include <cstddef>
#include <vector>

#include "engine/cox/likelihood.h"
#include "engine/cox/penalised.h"
#include "numerics/newton.h"
#include "numerics/progress.h"
#include "numerics/squareMatrix.h"

namespace survmeth::engine::cox {

class PenalisedLikelihood {
 public:
  // In   active   columns that take part in the penalty
  //      limit    of iterations
  PenalisedLikelihood(const Problem& problem, Ties ties, const Penalty& penalty,
                      std::vector<std::size_t> active, int limit, numerics::Progress& progress);

  const std::vector<std::size_t>& active() const { return active_; }

  // Value and gradient of the penalised likelihood; the information is that of the likelihood and the
  // ridge.
  bool at(const std::vector<double>& coefficients, numerics::NewtonPoint& point);

  // What a ridge adds to the information of a column.
  double pull(std::size_t j) const { return penalty_.theta * square_[j]; }

  struct Found {
    std::vector<double> at;
    numerics::NewtonPoint point;
    double unpenalised = 0.0, decrement = 0.0;
    int iterations = 0;
    bool converged = false;
  };

  // From `start` over the columns `free`; scoring steps, and, where these come near slowly, Newton's
  // with second derivatives from differences of the gradient.
  Found maximise(std::vector<double> start, const std::vector<std::size_t>& free);

 private:
  double variance(std::size_t j) const;
  numerics::SquareMatrix differences(const Found& found, const std::vector<std::size_t>& free);
  bool climb(const std::vector<double>& step, const std::vector<std::size_t>& free, Found& found);

  const Problem& problem_;
  Ties ties_;
  Penalty penalty_;
  std::vector<std::size_t> active_;
  int limit_;
  numerics::Progress& progress_;
  std::vector<double> square_;  // s_j^2
  Hazards hazards_;
  double unpenalised_ = 0.0;  // the likelihood of the last point
};

// Columns that have a coefficient of their own.
std::vector<std::size_t> activeOf(const Fit& fit);

// `columns` without those of `left`.
std::vector<std::size_t> columnsWithout(const std::vector<std::size_t>& columns,
                                        const std::vector<std::size_t>& left);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_PENALISED_LIKELIHOOD_H_
