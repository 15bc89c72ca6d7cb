// Work in parts: every part once, in any number of threads, with exceptions, calls within calls and
// after a fork.
#include "numerics/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#if defined(__unix__) || defined(__APPLE__)
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace survmeth::numerics {
namespace {

class Threads : public testing::Test {
 protected:
  ~Threads() override { setThreads(0); }
};

TEST_F(Threads, DoEveryPartOnce) {
  for (const unsigned count : {1U, 2U, 7U, 16U}) {
    setThreads(count);
    for (const std::size_t parts :
         {std::size_t{0}, std::size_t{1}, std::size_t{3}, std::size_t{1000}}) {
      std::vector<int> done(parts, 0);
      inParallel(parts, [&](std::size_t part) { ++done[part]; });
      EXPECT_EQ(done, std::vector<int>(parts, 1)) << count << " threads";
    }
  }
}

TEST_F(Threads, AreAsManyAsSaid) {
  setThreads(3);
  EXPECT_EQ(threads(), 3U);
  // Each part waits until three are at work: fewer threads would never end.
  std::atomic<int> waiting = 0;
  std::mutex mutex;
  std::set<std::thread::id> seen;
  inParallel(3, [&](std::size_t) {
    ++waiting;
    while (waiting < 3) std::this_thread::yield();
    const std::lock_guard<std::mutex> lock(mutex);
    seen.insert(std::this_thread::get_id());
  });
  EXPECT_EQ(seen.size(), 3U);
  EXPECT_EQ(seen.count(std::this_thread::get_id()), 1U);
}

TEST_F(Threads, OfOneAreTheCallers) {
  setThreads(1);
  const std::thread::id caller = std::this_thread::get_id();
  inParallel(10, [&](std::size_t) { EXPECT_EQ(std::this_thread::get_id(), caller); });
}

TEST_F(Threads, ThrowOnTheExceptionOfTheFirstPart) {
  for (const unsigned count : {1U, 2U, 7U}) {
    setThreads(count);
    for (int round = 0; round < 20; ++round) {
      try {
        inParallel(100, [](std::size_t part) {
          if (part >= 30) throw std::runtime_error("part " + std::to_string(part));
        });
        FAIL() << "nothing was thrown";
      } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "part 30") << count << " threads";
      }
    }
  }
}

TEST_F(Threads, RunPartsOfPartsOneAfterTheOther) {
  setThreads(4);
  std::vector<std::vector<int>> done(8, std::vector<int>(8, 0));
  inParallel(8, [&](std::size_t outer) {
    const std::thread::id mine = std::this_thread::get_id();
    inParallel(8, [&](std::size_t inner) {
      EXPECT_EQ(std::this_thread::get_id(), mine);
      ++done[outer][inner];
    });
  });
  EXPECT_EQ(done, std::vector<std::vector<int>>(8, std::vector<int>(8, 1)));
}

TEST_F(Threads, OfSeveralCallersDoNotMeet) {
  setThreads(3);
  std::vector<std::size_t> sums(6, 0);
  std::vector<std::thread> callers;
  for (std::size_t caller = 0; caller < sums.size(); ++caller) {
    callers.emplace_back([&sums, caller] {
      std::vector<std::size_t> squares(200);
      for (int round = 0; round < 10; ++round) {
        inParallel(squares.size(), [&](std::size_t part) { squares[part] = part * part + caller; });
      }
      for (const std::size_t square : squares) sums[caller] += square;
    });
  }
  for (std::thread& caller : callers) caller.join();
  // 0^2 + ... + 199^2 = 199 * 200 * 399 / 6
  for (std::size_t caller = 0; caller < sums.size(); ++caller) {
    EXPECT_EQ(sums[caller], 2646700 + 200 * caller);
  }
}

TEST(ThreadsSetting, IsAWholeNumberOrNothing) {
  EXPECT_EQ(threadsOf("1", 8), 1U);
  EXPECT_EQ(threadsOf("12", 8), 12U);
  EXPECT_EQ(threadsOf("1024", 8), 1024U);
  for (const char* text : {"", "0", "-1", "two", "2 ", "1.5", "1025", "99999999999999999999"}) {
    EXPECT_EQ(threadsOf(text, 8), 8U) << text;
  }
  EXPECT_EQ(threadsOf(nullptr, 8), 8U);
  EXPECT_GE(threads(), 1U);
}

#if defined(__unix__) || defined(__APPLE__)
TEST_F(Threads, WorkInAForkedProcess) {
  setThreads(3);
  std::vector<int> done(50, 0);
  const auto work = [&](std::size_t part) { ++done[part]; };
  inParallel(done.size(), work);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    inParallel(done.size(), work);
    _exit(done == std::vector<int>(done.size(), 2) ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}
#endif

}  // namespace
}  // namespace survmeth::numerics
