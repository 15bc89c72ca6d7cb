// How much memory a fit holds at once, counted allocation by allocation.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <vector>

#include "numerics/threads.h"
#include "tests/engine/cox/data.h"

namespace {

std::atomic<std::size_t> held = 0;
std::atomic<std::size_t> most = 0;

// Its size stands in front of what is given.
void* allocate(std::size_t size, std::size_t boundary) {
  boundary = std::max(boundary, alignof(std::max_align_t));
  const std::size_t whole = (size + 2 * boundary - 1) / boundary * boundary;
  auto* memory = static_cast<char*>(std::aligned_alloc(boundary, whole));
  if (memory == nullptr) throw std::bad_alloc();
  memory += boundary;
  reinterpret_cast<std::size_t*>(memory)[-1] = size;
  const std::size_t now = held += size;
  for (std::size_t before = most; before < now && !most.compare_exchange_weak(before, now);) {
  }
  return memory;
}

void release(void* memory, std::size_t boundary) {
  if (memory == nullptr) return;
  boundary = std::max(boundary, alignof(std::max_align_t));
  held -= static_cast<std::size_t*>(memory)[-1];
  std::free(static_cast<char*>(memory) - boundary);
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size, 0); }
void* operator new[](std::size_t size) { return allocate(size, 0); }
void* operator new(std::size_t size, std::align_val_t boundary) {
  return allocate(size, static_cast<std::size_t>(boundary));
}
// The standard library's temporary buffers are asked for so.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return allocate(size, 0);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new[](std::size_t size, const std::nothrow_t& none) noexcept {
  return operator new(size, none);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory, 0); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { release(memory, 0); }
void operator delete(void* memory) noexcept { release(memory, 0); }
void operator delete[](void* memory) noexcept { release(memory, 0); }
void operator delete(void* memory, std::size_t) noexcept { release(memory, 0); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory, 0); }
void operator delete(void* memory, std::align_val_t boundary) noexcept {
  release(memory, static_cast<std::size_t>(boundary));
}
void operator delete(void* memory, std::size_t, std::align_val_t boundary) noexcept {
  release(memory, static_cast<std::size_t>(boundary));
}

namespace survmeth {
namespace {

constexpr std::size_t kRows = 100000;

// Subjects of ten rows, the last of which fails for two of three; all times are distinct.
test::CoxData lateRows(std::size_t covariates) {
  std::uint64_t state = 11;
  const auto uniform = [&] {
    state = state * 6364136223846793005U + 1442695040888963407U;
    return (static_cast<double>(state >> 12) + 0.5) * 0x1p-52;
  };
  test::CoxData data;
  data.columns.assign(covariates, {});
  for (std::size_t i = 0; i < kRows / 10; ++i) {
    std::vector<double> x;
    for (std::size_t j = 0; j < covariates; ++j) x.push_back(uniform() - 0.5);
    const double last = -std::log(uniform()) / std::exp(x[0]);
    for (int k = 1; k <= 10; ++k) {
      data.entry.push_back(last * (k - 1) / 10);
      data.exit.push_back(k == 10 ? last : last * k / 10);
      data.event.push_back(k == 10 && i % 3 != 0 ? 1 : 0);
      for (std::size_t j = 0; j < covariates; ++j) data.columns[j].push_back(x[j]);
    }
  }
  return data;
}

// The most that a fit holds at once beside the caller's data, in sizes of the design.
double designsHeld(std::size_t covariates) {
  const test::CoxData data = lateRows(covariates);
  numerics::setThreads(1);
  const std::size_t before = held;
  most = before;
  EXPECT_TRUE(data.fit({}).converged);
  numerics::setThreads(0);
  return static_cast<double>(most - before) /
         static_cast<double>(kRows * covariates * sizeof(double));
}

TEST(MemoryOfAFit, OfTenCovariatesAndLateEntryIsLessThanThreeDesigns) {
  EXPECT_LT(designsHeld(10), 3.0);
}

// A row takes some seventy bytes that no covariate has a part in: its risk, its hazard, its weight
// and where its times are.
TEST(MemoryOfAFit, OfThreeCovariatesAndLateEntryIsLessThanFourDesignsAndAHalf) {
  EXPECT_LT(designsHeld(3), 4.5);
}

}  // namespace
}  // namespace survmeth
