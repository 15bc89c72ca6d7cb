// e^x and e^x - 1.
#include <cmath>
#include <cstdint>
#include <limits>

#include "numerics/blocks.h"
#include "numerics/elementary.h"
#include "numerics/expKernel.h"
#include "numerics/expScaled.h"
#include "numerics/hot.h"

namespace survmeth::numerics {
namespace {

SURVMETH_HOT bool expBlock(const double* x, std::size_t count, double* value) {
  return kernelOverBlock<ExpKernel>(x, count, value);
}

SURVMETH_HOT bool expm1Block(const double* x, std::size_t count, double* value) {
  return kernelOverBlock<Expm1Kernel>(x, count, value);
}

}  // namespace

double exp(double x) { return ExpKernel::ordinary(x) ? ExpKernel::value(x) : expScaled(x, 0.0); }

double expm1(double x) {
  if (Expm1Kernel::ordinary(x)) return Expm1Kernel::value(x);
  if (std::isnan(x)) return x + x;
  if (x > 0.0) return x < 1.0 ? x : exp(x);  // the 1 is far below the last place
  return x < -1.0 ? -1.0 : x;
}

void expArray(std::span<const double> in, std::span<double> out) {
  overBlocks<ExpKernel>(in, out, expBlock, exp);
}

void expm1Array(std::span<const double> in, std::span<double> out) {
  overBlocks<Expm1Kernel>(in, out, expm1Block, expm1);
}

}  // namespace survmeth::numerics
