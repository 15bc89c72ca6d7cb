// log(x) and log(1 + x).
#include <cmath>
#include <limits>

#include "numerics/blocks.h"
#include "numerics/elementary.h"
#include "numerics/hot.h"
#include "numerics/logKernel.h"

namespace survmeth::numerics {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

SURVMETH_HOT bool logBlock(const double* x, std::size_t count, double* value) {
  return kernelOverBlock<LogKernel>(x, count, value);
}

SURVMETH_HOT bool log1pBlock(const double* x, std::size_t count, double* value) {
  return kernelOverBlock<Log1pKernel>(x, count, value);
}

}  // namespace

double log(double x) {
  if (LogKernel::ordinary(x)) return LogKernel::value(x);
  if (std::isnan(x)) return x + x;
  if (x == 0.0) return -kInfinity;
  if (x < 0.0) return kNan;
  if (x == kInfinity) return x;
  return logSum(logReduced(x * 0x1p54, -54.0));
}

double log1p(double x) {
  if (Log1pKernel::ordinary(x)) return Log1pKernel::value(x);
  if (std::isnan(x)) return x + x;
  if (x > 1.0) return log(x);
  if (x == -1.0) return -kInfinity;
  return x < -1.0 ? kNan : x;
}

void logArray(std::span<const double> in, std::span<double> out) {
  overBlocks<LogKernel>(in, out, logBlock, log);
}

void log1pArray(std::span<const double> in, std::span<double> out) {
  overBlocks<Log1pKernel>(in, out, log1pBlock, log1p);
}

}  // namespace survmeth::numerics
