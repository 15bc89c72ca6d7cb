// Means and standard deviations that hold in any unit: numbers are brought near 1 by a power of 2
// before they are squared, so that nothing overflows, vanishes or loses a digit on the way.
#ifndef ANALYSIS_SPREAD_H_
#define ANALYSIS_SPREAD_H_

#include <span>
#include <vector>

namespace survmeth {

// The least e for which all |values| are below 2^e; 0 where all are 0. The values are finite.
int unitOf(std::span<const double> values);

// Each value times 2^-unit.
std::vector<double> inUnit(std::span<const double> values, int unit);

// Replaces numbers below 2 in size by their deviations from their mean, and returns it. Values that
// are the same deviate by exactly 0; a mean far above the deviations costs them no digit. Not
// empty.
double centre(std::vector<double>& values);

struct Spread {
  double mean = 0;
  double sd = 0;  // divisor n - 1
};

// Of two finite values or more; infinite where the result passes the largest double.
Spread spreadOf(std::span<const double> values);

}  // namespace survmeth

#endif  // ANALYSIS_SPREAD_H_
