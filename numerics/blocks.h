// A function over an array: whole blocks go through the kernel, which the compiler turns into
// vector instructions, and the numbers that are not ordinary are done again one by one.
#ifndef NUMERICS_BLOCKS_H_
#define NUMERICS_BLOCKS_H_

#include <algorithm>
#include <cstddef>
#include <span>

namespace survmeth::numerics {

inline constexpr std::size_t kBlock = 256;

// value[i] = Kernel::value(x[i]); returns whether every x is ordinary. For functions marked
// SURVMETH_HOT, which this has to become a part of.
template <class Kernel>
[[gnu::always_inline]] inline bool kernelOverBlock(const double* __restrict x, std::size_t count,
                                                   double* __restrict value) {
  double strange = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    value[i] = Kernel::value(x[i]);
    strange += Kernel::ordinary(x[i]) ? 0.0 : 1.0;
  }
  return strange == 0.0;
}

// block: kernelOverBlock of the kernel, compiled for the machine; whole: the scalar function.
template <class Kernel>
void overBlocks(std::span<const double> in, std::span<double> out,
                bool (*block)(const double*, std::size_t, double*), double (*whole)(double)) {
  const std::size_t length = std::min(in.size(), out.size());
  double value[kBlock];
  for (std::size_t start = 0; start < length; start += kBlock) {
    const std::size_t count = std::min(kBlock, length - start);
    const double* x = in.data() + start;
    if (!block(x, count, value)) {
      for (std::size_t i = 0; i < count; ++i) {
        if (!Kernel::ordinary(x[i])) value[i] = whole(x[i]);
      }
    }
    std::copy_n(value, count, out.data() + start);
  }
}

}  // namespace survmeth::numerics

#endif  // NUMERICS_BLOCKS_H_
