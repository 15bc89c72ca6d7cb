// Residuals of a proportional-hazards fit, by row or summed by cluster.
#ifndef ENGINE_COX_RESIDUALS_H_
#define ENGINE_COX_RESIDUALS_H_

#include <cstdint>
#include <span>
#include <vector>

#include "engine/cox/fit.h"
#include "engine/cox/problem.h"
#include "numerics/gram.h"
#include "numerics/squareMatrix.h"

namespace survmeth::engine::cox {

struct ResidualOptions {
  bool weighted = false;   // times the row's weight
  bool byCluster = false;  // summed over the rows of each cluster; refused without clusters
};

// One number for each of the caller's rows, or for each cluster. NaN for rows of weight 0. Every
// function here refuses the exact treatments of ties, under which residuals are not defined.
//
// Martingale: event - risk times hazard. Deviance: sign(M) sqrt(-2 (M + event log(event - M))), of
// the summed martingale residual and events where clusters are asked for.
//
// Cost O(n)
// Source Therneau, Grambsch & Fleming, Biometrika 77 (1990) 147-160
std::vector<double> martingaleResiduals(const Fit& fit, const ResidualOptions& options);
std::vector<double> devianceResiduals(const Fit& fit, const ResidualOptions& options);

// Columns of such numbers, one for each coefficient.
//
// Score: the row's part of the gradient. Dfbeta: score residuals times the covariance, nearly the
// change of the coefficients without the row; dfbetas: over the standard error of inference. NaN
// at coefficients that are not estimated.
//
// Cost O(n p), and p^2 for dfbeta
std::vector<std::vector<double>> scoreResiduals(const Fit& fit, const ResidualOptions& options);
std::vector<std::vector<double>> dfbetaResiduals(const Fit& fit, const ResidualOptions& options);
std::vector<std::vector<double>> dfbetasResiduals(const Fit& fit, const ResidualOptions& options);

// One row for each event, by stratum and time.
struct SchoenfeldResiduals {
  std::vector<std::uint32_t> row;           // the caller's
  std::vector<double> time;                 // of ties: the common time
  std::vector<std::uint32_t> stratum;       // the caller's code
  std::vector<std::vector<double>> column;  // of each coefficient
};

// Covariates of the event less their mean over the risk set, with Efron's ties less the average of
// the means. Scaled: times the covariance and the number of events, plus the coefficients.
//
// Source Schoenfeld, Biometrika 69 (1982) 239-241; Grambsch & Therneau, Biometrika 81 (1994) 515
SchoenfeldResiduals schoenfeldResiduals(const Fit& fit, bool weighted);
SchoenfeldResiduals scaledSchoenfeldResiduals(const Fit& fit, bool weighted);

// Throws a Refusal that names `what` where ties are treated exactly.
void refuseExactTies(Ties ties, const char* what);

// Score residuals of the arranged rows, unweighted.
numerics::BlockedColumns scoreRows(const Problem& problem, const Hazards& hazards, Ties ties);

// The weighted score residuals, summed by cluster where there are clusters: their sum and the sum
// of their outer products.
struct ScoreSums {
  std::vector<double> total;
  numerics::SquareMatrix products;
};
ScoreSums scoreSums(const Problem& problem, Ties ties, std::span<const double> coefficients);
// The same with memory that is at hand; `hazards` holds the sums at the coefficients afterwards.
ScoreSums scoreSums(const Problem& problem, Ties ties, std::span<const double> coefficients,
                    Hazards& hazards);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_RESIDUALS_H_
