// Figures of every kind, made of numbers that are easy to follow.
#ifndef TESTS_PICTURES_SAMPLES_H_
#define TESTS_PICTURES_SAMPLES_H_

#include <cstddef>
#include <string>
#include <vector>

#include "report/report.h"

namespace survmeth::pictures::test {

// Numbers between 0 and 1, the same in every run.
std::vector<double> uniform(std::size_t n, unsigned seed);

// Curves of `groups` groups with bands, ticks at censorings and the numbers at risk.
report::Figure survival(std::size_t groups);
// Three markers' curves with the line of chance.
report::Figure roc();
// `n` differences against means with their bias, limits and zero.
report::Figure blandAltman(std::size_t n);
// `n` pairs with a line from far outside to far outside, and that of identity.
report::Figure deming(std::size_t n);
// Hazard ratios of a number and two factors, with levels of reference and infinite limits.
report::Figure forest();
// Three causes stacked.
report::Figure incidence();
// The same curve on linear, log, cloglog and probit axes.
report::Figure scales();
// Counts of four categories on x.
report::Figure bars();

// One series of points on linear axes.
report::Figure scatter(const std::vector<double>& x, const std::vector<double>& y);

}  // namespace survmeth::pictures::test

#endif  // TESTS_PICTURES_SAMPLES_H_
