// The bootstrap: a statistic of units drawn with replacement, the same for every number of threads.
#ifndef PROCEDURES_BOOTSTRAP_H_
#define PROCEDURES_BOOTSTRAP_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "numerics/progress.h"

namespace survmeth::procedures {

// Numbers from some of the units 0 .. units - 1, each as often as it is named; NaN is one that does not
// exist, and empty where there are none, as where a fit has no maximum. Called from several threads at
// once.
using Statistic = std::function<std::vector<double>(std::span<const std::uint32_t> units)>;

struct BootstrapOptions {
  std::size_t replicates = 2000;
  std::uint64_t seed = 1;
  bool accelerated = false;  // leaves each unit out once, for limits of kBca
};

struct Bootstrap {
  std::vector<double> estimate;                 // of all units
  std::vector<std::vector<double>> replicates;  // that exist, in their order
  std::size_t failed = 0;
  std::vector<double> acceleration;  // of each number; empty where not asked for
};

// The units of a replicate: as many draws of a stream of their own.
std::vector<std::uint32_t> drawnUnits(std::size_t units, std::uint64_t seed, std::size_t replicate);

// Edge a statistic that does not exist for all units has no replicates
// Cost one call of the statistic for each replicate, and accelerated for each unit
// Source Efron, Ann Statist 7 (1979) 1-26
Bootstrap bootstrap(std::size_t units, const Statistic& statistic, const BootstrapOptions& options,
                    numerics::Progress& progress);

enum class BootstrapLimits {
  kPercentile,  // quantiles of the replicates
  kBasic,       // twice the estimate less those
  kBca,         // quantiles corrected for bias and acceleration
};

struct BootstrapSummary {
  double bias = 0, standardError = 0;
  double lower = 0, upper = 0;
  std::size_t replicates = 0;  // in which the number exists
};

// Of number j. Between two replicates a quantile is interpolated on the normal scale; beyond the
// extreme ones it is the extreme one.
//
// In   level  in (0, 1)
// Edge NaN of fewer than two replicates that have the number, and where the estimate lacks; kBca
//      without acceleration, or with all replicates on one side of the estimate
// Source Davison & Hinkley, Bootstrap Methods and their Application (1997), ch. 5; Efron, JASA 82
//      (1987) 171-185
BootstrapSummary summarise(const Bootstrap& made, std::size_t j, double level,
                           BootstrapLimits limits);

}  // namespace survmeth::procedures

#endif  // PROCEDURES_BOOTSTRAP_H_
