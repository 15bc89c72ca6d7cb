// Calls on different threads with different arrays do not interfere.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <barrier>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/boundary/calls.h"

namespace {

using survmeth::test::Arrays;
using survmeth::test::Call;
using survmeth::test::calls;

std::vector<unsigned char> resultOf(const Call& call, unsigned seed) {
  Arrays arrays;
  call.prepare(arrays, seed)();
  return arrays.bytes();
}

TEST(EntryPoints, GiveTheSameBitsForTheSameInput) {
  for (const Call& call : calls()) {
    for (unsigned seed = 1; seed <= 5; ++seed) {
      EXPECT_EQ(resultOf(call, seed), resultOf(call, seed)) << call.name;
    }
  }
}

// SURVMETH_THREAD_SECONDS makes them run for so long instead of one round.
std::chrono::seconds threadSeconds() {
  const char* text = std::getenv("SURVMETH_THREAD_SECONDS");
  return std::chrono::seconds(text == nullptr ? 0 : std::atoi(text));
}

TEST(EntryPoints, DoNotInterfereAcrossThreads) {
  constexpr unsigned kThreads = 16;
  constexpr int kRounds = 1;
  constexpr int kBurst = 8;  // calls in a row, their arrays made beforehand
  std::vector<std::vector<std::vector<unsigned char>>> serial(kThreads);
  for (unsigned t = 0; t < kThreads; ++t) {
    for (const Call& call : calls()) serial[t].push_back(resultOf(call, t));
  }

  // All threads are in the same entry point at the same time: what it shared would be shared here.
  const auto end = std::chrono::steady_clock::now() + threadSeconds();
  int meetings = 0;
  std::atomic<bool> over = false;
  std::barrier together(kThreads, [&]() noexcept {
    const int rounds = ++meetings / static_cast<int>(calls().size());
    over = rounds >= kRounds && std::chrono::steady_clock::now() >= end;
  });
  std::vector<std::string> wrong(kThreads);
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (std::size_t c = 0; !over; c = (c + 1) % calls().size()) {
        std::array<Arrays, kBurst> arrays;
        std::array<std::function<void()>, kBurst> burst;
        for (int i = 0; i < kBurst; ++i) burst[i] = calls()[c].prepare(arrays[i], t);
        together.arrive_and_wait();
        for (const auto& call : burst) call();
        for (const Arrays& result : arrays) {
          if (result.bytes() != serial[t][c]) wrong[t] = calls()[c].name;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<std::string>(kThreads));
  EXPECT_GE(meetings, kRounds * static_cast<int>(calls().size()));
}

}  // namespace
