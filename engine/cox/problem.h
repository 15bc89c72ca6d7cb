// What a proportional-hazards likelihood is made of: the arranged rows with their covariates, and
// the sums over risk sets at one set of coefficients.
#ifndef ENGINE_COX_PROBLEM_H_
#define ENGINE_COX_PROBLEM_H_

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "engine/input.h"
#include "engine/risk/arrangement.h"
#include "engine/risk/sums.h"
#include "numerics/gram.h"
#include "numerics/largeArray.h"

namespace survmeth::engine::cox {

// How events at one time are treated.
enum class Ties {
  kEfron,     // Efron, JASA 72 (1977) 557-565
  kBreslow,   // Breslow, Biometrics 30 (1974) 89-99
  kDiscrete,  // Cox's discrete model: every set of as many rows as fail could have failed
  kMarginal,  // the sum over all orders in which the tied rows can have failed
};

// The arranged rows. Covariates are centred at the means of their stratum, which changes no
// result and keeps second moments from cancelling.
struct Problem {
  Problem(const Response& response, const Rows& rows, const Design& design, double tieTolerance);
  Problem(const Problem&) = delete;
  Problem& operator=(const Problem&) = delete;

  std::size_t columns() const { return x.columns(); }
  // What was taken from column j in stratum s of the arrangement.
  double centre(std::size_t s, std::size_t j) const { return centres[s * columns() + j]; }

  risk::Arrangement arrangement;
  risk::Sums sums;
  numerics::BlockedColumns x;          // rows of the arrangement
  std::vector<double> centres;         // strata x columns
  std::vector<double> spread;          // of each column: largest centred absolute value
  std::vector<double> size;            // of each column: largest absolute value
  std::vector<std::uint32_t> cluster;  // of the caller's rows, or empty
  std::size_t clusters = 0;
  std::size_t sourceRows = 0;  // the caller's, those of weight 0 included
  std::vector<std::string> names, termNames;
  std::vector<std::size_t> term;

 private:
  struct Extent;
  Extent extentOf(std::size_t j, std::size_t s) const;
  void centreColumn(std::size_t j, std::size_t s, const Extent& extent);
};

// The events of one time as a sum of d terms, the l-th with the share f of the failing rows' risk
// in its denominator D = S0 of the others + f S0 of the failing ones; u = D0 / D with D0 the sum
// of both. Breslow: one term with f = 1.
struct TieMoments {
  double u, uf;          // sums of (omega / d) u, u f
  double u2, u2f, u2ff;  // sums of (omega / d) u^2, u^2 f, u^2 f^2
};

// Rows of `block` that belong to the stratum of the row before the block.
std::size_t continuedRows(const Problem& problem, std::size_t block);

// The sums at one set of coefficients. A stratum's risks are divided by exp(shift), so that
// predictors far from 0 neither overflow nor vanish; where those of one stratum lie too far apart
// for that, rows and times have units of their own instead: risks are in those of their row, sums
// over risk sets in those of their time, hazards in the reciprocals.
struct Hazards {
  // rows: x'b + offset, of the centred covariates; kept for the exact treatments of ties only, else
  // the memory goes to `cumulative`
  numerics::LargeArray<double> predictor;
  numerics::LargeArray<double> risk;        // rows: weight exp(predictor - shift)
  std::vector<double> shift;                // strata
  risk::Scales scales;                      // mostly empty
  numerics::LargeArray<double> others;      // times: S0 of the rows at risk that do not fail
  numerics::LargeArray<double> failing;     // times: S0 of those that fail
  numerics::LargeArray<double> increment;   // times: of the cumulative hazard, times exp(shift)
  numerics::LargeArray<double> own;         // times: the part that counts for the rows that fail
  numerics::LargeArray<double> cumulative;  // rows: hazard over its time at risk, times exp(shift)
  // Blocks x columns, empty where sums are formed column by column: the sum of risk times x over the rows behind the
  // block that belong to the stratum of its last row.
  std::vector<double> behind;
  double logLikelihood = 0.0;

  double all(std::size_t k) const { return others[k] + failing[k]; }
  // Whether the sums of r x have to be formed column by column over all times, and not from row to
  // row.
  bool byColumn(const Problem& problem) const {
    return problem.arrangement.lateEntry() || !scales.empty();
  }
  // What is taken from the predictors of the rows at risk at event time k.
  double reference(const Problem& problem, std::size_t k) const {
    const double steps = scales.empty() ? 0.0 : scales.time[k];
    return shift[problem.arrangement.timeStratum[k]] + risk::kScaleStep * steps;
  }
};

// The sums over the d tied events of time k; all 0 at tied times of the exact methods, which have
// terms of their own there.
TieMoments tieMoments(const Problem& problem, const Hazards& hazards, Ties ties, std::size_t k);

// False where predictors are no finite numbers.
// Cost O(n p)
bool hazardsAt(const Problem& problem, Ties ties, std::span<const double> coefficients,
               Hazards& hazards);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_PROBLEM_H_
