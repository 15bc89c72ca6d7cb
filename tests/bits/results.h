// Results of the engine and the facade that builds are compared on, beside the entry points' and
// libDist's (tests/wordsize).
#ifndef TESTS_BITS_RESULTS_H_
#define TESTS_BITS_RESULTS_H_

#include <functional>
#include <span>
#include <string>

namespace survmeth::test {

// Takes an array under a name that no other has.
using TakeNumbers = std::function<void(const std::string& name, std::span<const double> numbers)>;

// exp, log and their kin over fixed arguments of every size, the array forms too.
void elementaryResults(const TakeNumbers& take);

// Fits of the reference data by every treatment of ties, with all that follows from a fit.
void coxResults(const TakeNumbers& take);

// Survival curves of the reference data, with limits, bands, quantiles, means and rates.
void curveResults(const TakeNumbers& take);

// Incidences of competing events, Gray's tests, subdistribution hazards and states of the reference
// data.
void competingResults(const TakeNumbers& take);

// Penalised fits of the reference data, predictions and bootstrap.
void procedureResults(const TakeNumbers& take);

// ROC curves, agreement and Deming regression of public and made data.
void facadeResults(const TakeNumbers& take);

}  // namespace survmeth::test

#endif  // TESTS_BITS_RESULTS_H_
