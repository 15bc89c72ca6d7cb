#include "numerics/largeArray.h"

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace survmeth::numerics {
namespace {

constexpr std::size_t kLine = 64;
constexpr std::size_t kPage = std::size_t{1} << 21;
constexpr std::size_t kLarge = 2 * kPage;

constexpr std::align_val_t boundaryOf(std::size_t bytes) {
  return std::align_val_t{bytes < kLarge ? kLine : kPage};
}

}  // namespace

void* allocateLarge(std::size_t bytes) {
  void* memory = ::operator new(bytes, boundaryOf(bytes));
#ifdef MADV_HUGEPAGE
  // Where it is refused the pages are small ones. Only whole large pages: what stands behind them is
  // somebody else's.
  if (bytes >= kLarge) (void)madvise(memory, bytes / kPage * kPage, MADV_HUGEPAGE);
#endif
  return memory;
}

void freeLarge(void* memory, std::size_t bytes) noexcept {
  ::operator delete(memory, boundaryOf(bytes));
}

}  // namespace survmeth::numerics
