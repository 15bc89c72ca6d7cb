// Every allocation of every entry point fails in turn: the exception passes, nothing leaks, and the
// frame has written nothing into the caller's arrays by then.
#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <new>
#include <string>
#include <vector>

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

// What a call does when its allocation `k`, counted from 0, fails.
struct Outcome {
  bool failed = false;  // there was such an allocation
  bool threw = false;
  bool leaked = false;
  bool arraysStayed = false;  // the arrays, whatever the results through pointers to one value
  std::vector<unsigned char> arrays;
};

Outcome failAt(const Call& call, long k) {
  Arrays arrays;
  const std::function<void()> make = call.prepare(arrays, 1);
  const std::vector<unsigned char> before = arrays.bytes(false);
  Outcome outcome;
  const long aliveBefore = alive;
  failIn = k;
  try {
    make();
  } catch (const std::bad_alloc&) {
    outcome.threw = true;
  }
  outcome.failed = failIn < 0;
  failIn = -1;
  outcome.leaked = alive != aliveBefore;
  outcome.arraysStayed = arrays.bytes(false) == before;
  outcome.arrays = arrays.bytes();
  return outcome;
}

std::vector<unsigned char> bytesBefore(const Call& call) {
  Arrays arrays;
  call.prepare(arrays, 1);
  return arrays.bytes();
}

TEST(AllocationFailure, PassesWithoutLeakingOrWriting) {
  std::vector<std::string> withoutAllocation;
  for (const Call& call : calls()) {
    const std::vector<unsigned char> undisturbed =
        failAt(call, std::numeric_limits<long>::max()).arrays;
    EXPECT_NE(undisturbed, bytesBefore(call)) << call.name;
    bool passed = false;
    for (long k = 0;; ++k) {
      const Outcome outcome = failAt(call, k);
      ASSERT_FALSE(outcome.leaked) << call.name << ", allocation " << k;
      if (!outcome.threw) {
        // None was left to fail, or it was working space of a sort, which does without.
        ASSERT_EQ(outcome.arrays, undisturbed) << call.name << ", allocation " << k;
      } else if (!call.isView) {
        ASSERT_TRUE(outcome.arraysStayed) << call.name << ", allocation " << k;
      }
      if (!outcome.failed) break;
      passed = passed || outcome.threw;
    }
    if (!passed) withoutAllocation.push_back(call.name);
  }
  // It works in the caller's arrays alone, so that nothing of it can fail.
  EXPECT_EQ(withoutAllocation, std::vector<std::string>{"RunLife, Kaplan-Meier"});
}

}  // namespace
