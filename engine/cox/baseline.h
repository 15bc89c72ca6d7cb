// The cumulative hazard of a proportional-hazards fit at given covariates, with its error.
#ifndef ENGINE_COX_BASELINE_H_
#define ENGINE_COX_BASELINE_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <span>
#include <utility>
#include <vector>

#include "engine/cox/fit.h"

namespace survmeth::engine::cox {

// Of one stratum, at its event times: a step function that is 0 before the first.
struct CumulativeHazard {
  std::vector<double> time;           // ascending
  std::vector<double> hazard;         // survival is exp(-hazard)
  std::vector<double> standardError;  // of the hazard; NaN where a coefficient is infinite
};

// Some of its event times, one after the other.
struct HazardPiece {
  std::span<const double> time, hazard, standardError;
};

// What the hazards at any covariates are made of: all of it that the rows of the fit had to say. K
// event times, numbered through as the arrangement has them, S strata with rows, p columns.
struct HazardSums {
  std::vector<std::uint32_t> stratum;    // S, the caller's codes, ascending
  std::vector<std::size_t> firstTime;    // S + 1: first event time of each; all times
  std::vector<double> lastTime;          // S, the last exit, event or not
  std::vector<double> time;              // K
  std::vector<double> hazard, variance;  // K, sums within the stratum, in its shifted unit
  // K, mostly empty: such sums are besides in units of exp(-256 scale) and, the variance, its square.
  std::vector<double> scale;
  std::vector<std::vector<double>> mean;  // p x K, sums of increments times means
  std::vector<double> shift;              // S
  std::vector<double> centre;             // S x p, what was taken from the covariates
  std::vector<double> coefficients;       // p; 0 for aliased columns
  std::vector<Column> column;             // p
  numerics::SquareMatrix covariance;      // p x p, that of inference
};

// One value of a cumulative hazard.
struct HazardValue {
  double hazard = 0, standardError = 0;
};

// Covariates that a subject has in (entry, exit].
struct Stay {
  std::span<const double> x;  // p; aliased columns do not count
  double offset = 0;
  std::uint32_t stratum = 0;  // a caller's code
  double entry = -std::numeric_limits<double>::infinity();
  double exit = std::numeric_limits<double>::infinity();
};

// Breslow's estimate under Breslow's ties, Efron's under Efron's.
//
// Edge refuses the exact treatments of ties
// Cost O(n p + K p^2) once; a hazard at K times takes O(K p)
// Source Breslow, Biometrics 30 (1974) 89-99; Tsiatis, Ann. Statist. 9 (1981) 93-108; Efron,
//      JASA 72 (1977) 557-565
class BaselineHazard {
 public:
  explicit BaselineHazard(const Fit& fit);
  // As it was, without the rows.
  explicit BaselineHazard(HazardSums sums);

  // The caller's codes of the strata that have rows, ascending.
  const std::vector<std::uint32_t>& strata() const { return sums_.stratum; }
  const HazardSums& sums() const { return sums_; }

  // The hazard at covariates x and an offset in one stratum. With x of zeros it is the baseline;
  // the covariates' means give the centred one.
  //
  // In   x[p]     aliased columns do not count
  //      stratum  a caller's code; one without rows is refused
  CumulativeHazard at(std::span<const double> x, double offset, std::uint32_t stratum) const;

  // The same at these times, one each: 0 before the stratum's first event, absent after its last
  // exit.
  // Cost O(p + log K) a time
  std::vector<HazardValue> at(std::span<const double> x, double offset, std::uint32_t stratum,
                              std::span<const double> times) const;

  // The hazard that a subject gathers whose covariates change, at the event times of its stays:
  // what each stay's stratum adds while it lasts. Between stays nothing is added.
  //
  // In   stays   ascending; each enters at or after the exit before, else Refusal(kSubject) with the
  //              later one's number as row; one at least
  CumulativeHazard along(std::span<const Stay> stays) const;

  // The same in pieces, in their order.
  //
  // In   take   gets each piece, which is gone when it returns; false: no more is wanted
  void along(std::span<const Stay> stays,
             const std::function<bool(const HazardPiece&)>& take) const;

  // The whole of it, with the error of the sum: the events expected of the subject.
  HazardValue over(std::span<const Stay> stays) const;

 private:
  class Path;
  void findRoot();

  HazardSums sums_;
  // A root L of the covariance, V = L L', over the estimated columns, and L' times the sums of
  // means: squares add up to the variance that comes from the coefficients.
  std::vector<std::size_t> estimated_;
  std::vector<std::vector<double>> root_;    // of each estimated column: column of L
  std::vector<std::vector<double>> turned_;  // likewise x K
  bool infinite_ = false;                    // a coefficient is
};

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_BASELINE_H_
