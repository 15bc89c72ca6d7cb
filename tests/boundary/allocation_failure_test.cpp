// Every allocation of every entry point fails in turn: the exception passes, nothing leaks, and the
// frame has written nothing into the caller's arrays by then.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "tests/boundary/calls.h"

namespace {

// Counts down to the allocation that fails; below zero none does.
thread_local long failIn = -1;
thread_local long alive = 0;

void* allocate(std::size_t size) {
  if (failIn >= 0 && failIn-- == 0) throw std::bad_alloc();
  void* memory = std::malloc(size > 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  ++alive;
  return memory;
}

void release(void* memory) {
  if (memory == nullptr) return;
  --alive;
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }

namespace {

using survmeth::test::Arrays;
using survmeth::test::Call;
using survmeth::test::calls;

TEST(AllocationFailure, PassesWithoutLeakingOrWriting) {
  std::size_t failing = 0;
  for (const Call& call : calls()) {
    Arrays arrays;
    const std::function<void()> make = call.prepare(arrays, 1);
    const std::vector<unsigned char> before = arrays.bytes(false);
    const std::vector<unsigned char> all = arrays.bytes();
    int failures = 0;
    for (long k = 0;; ++k) {
      const long aliveBefore = alive;
      bool threw = false;
      failIn = k;
      try {
        make();
      } catch (const std::bad_alloc&) {
        threw = true;
      }
      failIn = -1;
      ASSERT_EQ(alive, aliveBefore) << call.name << ", allocation " << k;
      if (!threw) break;
      ++failures;
      if (!call.isView) {
        ASSERT_EQ(arrays.bytes(false), before) << call.name << ", allocation " << k;
      }
    }
    // A call that works in the caller's arrays alone cannot fail.
    if (failures > 0) ++failing;
    EXPECT_NE(arrays.bytes(), all) << call.name;
  }
  EXPECT_GE(failing, calls().size() - 5);
}

}  // namespace
