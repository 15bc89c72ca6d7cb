// The progress line: redrawn in place, ten times a second at most.
#include "cli/shell/progress.h"

#include <unistd.h>

#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <system_error>
#include <utility>

namespace cli {
namespace {

constexpr std::chrono::milliseconds kQuiet(500), kInterval(100), kTick(1000);
constexpr std::int64_t kLong = 2;  // seconds from which on they are shown
constexpr const char* kWipe = "\r\033[K";

}  // namespace

Progress::Progress(std::string what)
    : what_(std::move(what)), terminal_(isatty(STDERR_FILENO) == 1), next_(begun_ + kQuiet) {
  if (terminal_) startTicking();
}

Progress::~Progress() {
  if (ticking_.joinable()) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      ended_ = true;
    }
    changed_.notify_one();
    ticking_.join();
  }
  if (shown_) std::fputs(kWipe, stderr);
}

// Signals stay with the first thread, whose files their handler takes away.
void Progress::startTicking() {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  try {
    ticking_ = std::thread([this] { tick(); });
  } catch (const std::system_error&) {  // no more threads: the line moves with the work alone
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void Progress::tick() {
  std::unique_lock<std::mutex> lock(mutex_);
  std::chrono::milliseconds wait = kQuiet;
  while (!changed_.wait_for(lock, wait, [this] { return ended_; })) {
    const Clock::time_point now = Clock::now();
    if (now >= next_) draw(now);
    wait = kTick;
  }
}

void Progress::at(std::uint64_t done, std::uint64_t total) {
  if (!terminal_) return;
  const std::lock_guard<std::mutex> lock(mutex_);
  done_ = done;
  total_ = total;
  const Clock::time_point now = Clock::now();
  if (now >= next_) draw(now);
}

void Progress::draw(Clock::time_point now) {
  next_ = now + kInterval;
  shown_ = true;
  std::fprintf(stderr, "%s%s", kWipe, what_.c_str());
  if (total_ > 0) {
    const double part = static_cast<double>(done_) / static_cast<double>(total_);
    if (done_ > 0) std::fprintf(stderr, " %3.0f %%", 100 * (part < 1 ? part : 1));
  } else if (done_ > 0) {
    std::fprintf(stderr, " %" PRIu64, done_);
  }
  const std::int64_t seconds =
      std::chrono::duration_cast<std::chrono::seconds>(now - begun_).count();
  if (seconds >= kLong) std::fprintf(stderr, ", %" PRId64 " s", seconds);
  std::fflush(stderr);
}

}  // namespace cli
