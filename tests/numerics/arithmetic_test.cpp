// The compiler takes no product and sum for one fused operation, not even where the processor has
// one: the bits of every result rest on it.
#include "numerics/arithmetic.h"

#include <gtest/gtest.h>

namespace numerics_tests {
namespace {

#if defined(__x86_64__) && defined(__GNUC__)
#define WITH_FUSED_OPERATIONS __attribute__((target("fma"), noinline))
bool fusedOperationsExist() { return __builtin_cpu_supports("fma"); }
#else
#define WITH_FUSED_OPERATIONS __attribute__((noinline))
bool fusedOperationsExist() { return true; }  // or it is all the same
#endif

WITH_FUSED_OPERATIONS double productAndSum(double a, double b, double c) { return a * b + c; }

TEST(Arithmetic, RoundsAProductBeforeItIsAddedTo) {
  if (!fusedOperationsExist()) GTEST_SKIP() << "no fused operations on this processor";
  // (1 + 2^-30)^2 = 1 + 2^-29 + 2^-60, whose last term is rounded away.
  EXPECT_EQ(productAndSum(1.0 + 0x1p-30, 1.0 + 0x1p-30, -1.0), 0x1p-29);
}

}  // namespace
}  // namespace numerics_tests
