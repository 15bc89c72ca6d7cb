// Memory for arrays of numbers as long as the data: on the boundaries of cache lines, in large pages
// where the system has them, and not filled with zeros that are overwritten anyway.
#ifndef NUMERICS_LARGE_ARRAY_H_
#define NUMERICS_LARGE_ARRAY_H_

#include <cstddef>
#include <new>
#include <type_traits>
#include <vector>

namespace survmeth::numerics {

// In   bytes  any number
// Out  memory that begins on a cache line; from 4 MB on the system is asked to map it in its large
//      pages, of which a few cost less to be given than thousands of small ones
// Edge std::bad_alloc as operator new; a system without large pages gives its usual ones
void* allocateLarge(std::size_t bytes);
// What allocateLarge gave for that number of bytes.
void freeLarge(void* memory, std::size_t bytes) noexcept;

// Leaves elements that are given no value as they are.
template <typename T>
struct LargeAllocator {
  static_assert(std::is_trivially_copyable_v<T>);
  using value_type = T;
  LargeAllocator() = default;
  template <typename Other>
  explicit LargeAllocator(const LargeAllocator<Other>&) {}
  T* allocate(std::size_t count) {
    if (count > static_cast<std::size_t>(-1) / sizeof(T)) throw std::bad_array_new_length();
    return static_cast<T*>(allocateLarge(count * sizeof(T)));
  }
  void deallocate(T* memory, std::size_t count) noexcept { freeLarge(memory, count * sizeof(T)); }
  void construct(T*) const {}
  void construct(T* at, const T& value) const { *at = value; }
  friend bool operator==(const LargeAllocator&, const LargeAllocator&) { return true; }
};

// A vector whose new elements have no value until they are given one; resize(n, 0) fills.
template <typename T>
using LargeArray = std::vector<T, LargeAllocator<T>>;

}  // namespace survmeth::numerics

#endif  // NUMERICS_LARGE_ARRAY_H_
