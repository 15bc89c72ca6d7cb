#include "numerics/threads.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <exception>
#include <limits>
#include <mutex>

// Browsers have threads only in pages that ask for them, and some compilers come without.
#if defined(__EMSCRIPTEN__) && !defined(__EMSCRIPTEN_PTHREADS__)
#define SURVMETH_SERIAL 1
#elif defined(__GLIBCXX__) && !defined(_GLIBCXX_HAS_GTHREADS)
#define SURVMETH_SERIAL 1
#else
#include <system_error>
#include <thread>
#include <vector>
#endif

namespace survmeth::numerics {
namespace {

constexpr unsigned kMostThreads = 1024;

std::atomic<unsigned> chosen = 0;

// Whether this thread is at a part already.
thread_local bool working = false;

// What the threads of one call share.
class Parts {
 public:
  Parts(std::size_t parts, const std::function<void(std::size_t)>& work)
      : parts_(parts), work_(work) {}

  // Takes parts until there are none. Parts are taken in their order, so that of several that fail
  // the first has always begun.
  void run() {
    const bool before = working;
    working = true;
    // A part that has been taken before one that fails is done whenever it comes to that.
    for (std::size_t part = next_++; part < parts_ && part < failed_; part = next_++) {
      try {
        work_(part);
      } catch (...) {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (part < failed_) {
          failed_ = part;
          failure_ = std::current_exception();
        }
      }
    }
    working = before;
  }

  void end() const {
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  std::size_t parts_;
  const std::function<void(std::size_t)>& work_;
  std::atomic<std::size_t> next_ = 0;
  std::atomic<std::size_t> failed_ = std::numeric_limits<std::size_t>::max();
  std::mutex mutex_;
  std::exception_ptr failure_;
};

unsigned ofMachine() {
#ifdef SURVMETH_SERIAL
  return 1;
#else
  return std::max(1U, std::thread::hardware_concurrency());
#endif
}

}  // namespace

unsigned threadsOf(const char* setting, unsigned otherwise) {
  if (setting == nullptr || *setting == '\0') return otherwise;
  unsigned count = 0;
  for (; *setting != '\0'; ++setting) {
    if (*setting < '0' || *setting > '9') return otherwise;
    count = 10 * count + static_cast<unsigned>(*setting - '0');
    if (count > kMostThreads) return otherwise;
  }
  return count == 0 ? otherwise : count;
}

unsigned threads() {
  static const unsigned usual = threadsOf(std::getenv("SURVMETH_THREADS"), ofMachine());
  const unsigned said = chosen.load();
  return said == 0 ? usual : std::min(said, kMostThreads);
}

void setThreads(unsigned count) { chosen = count; }

void inParallel(std::size_t parts, const std::function<void(std::size_t)>& work) {
  const std::size_t count = working ? 1 : std::min<std::size_t>(parts, threads());
  if (count <= 1) {
    for (std::size_t part = 0; part < parts; ++part) work(part);
    return;
  }
  Parts shared(parts, work);
#ifdef SURVMETH_SERIAL
  shared.run();
#else
  std::vector<std::thread> helpers;
  helpers.reserve(count - 1);
  try {
    while (helpers.size() + 1 < count) helpers.emplace_back([&shared] { shared.run(); });
  } catch (const std::system_error&) {
    // The machine has no more threads to give: those that run do the work.
  }
  shared.run();
  for (std::thread& helper : helpers) helper.join();
#endif
  shared.end();
}

}  // namespace survmeth::numerics
