// Calls on different threads with different arrays do not interfere.
#include <gtest/gtest.h>

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

TEST(EntryPoints, DoNotInterfereAcrossThreads) {
  constexpr unsigned kThreads = 16;
  std::vector<std::vector<std::vector<unsigned char>>> serial(kThreads);
  for (unsigned t = 0; t < kThreads; ++t) {
    for (const Call& call : calls()) serial[t].push_back(resultOf(call, t));
  }
  std::vector<std::string> wrong(kThreads);
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &serial, &wrong] {
      for (int round = 0; round < 20; ++round) {
        for (std::size_t c = 0; c < calls().size(); ++c) {
          if (resultOf(calls()[c], t) != serial[t][c]) wrong[t] = calls()[c].name;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<std::string>(kThreads));
}

}  // namespace
