// Calls whose results the 32-bit and the 64-bit build are compared on, beside those of
// tests/boundary: the public data sets through each family, and libDist over its arguments.
#ifndef TESTS_WORDSIZE_CALLS_H_
#define TESTS_WORDSIZE_CALLS_H_

#include <vector>

#include "tests/boundary/calls.h"

namespace survmeth::test {

// The seed is not looked at.
std::vector<Call> publicDataCalls();

std::vector<Call> distributionCalls();

}  // namespace survmeth::test

#endif  // TESTS_WORDSIZE_CALLS_H_
