// The progress line: redrawn in place, ten times a second at most.
#include "cli/shell/progress.h"

#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <utility>

namespace cli {
namespace {

using std::chrono::steady_clock;
constexpr std::chrono::milliseconds kQuiet(500), kInterval(100);
constexpr const char* kWipe = "\r\033[K";

}  // namespace

Progress::Progress(std::string what, std::uint64_t total)
    : what_(std::move(what)),
      total_(total),
      terminal_(isatty(STDERR_FILENO) == 1),
      next_(steady_clock::now() + kQuiet) {}

Progress::~Progress() {
  if (shown_) std::fputs(kWipe, stderr);
}

void Progress::at(std::uint64_t done) {
  if (!terminal_) return;
  const auto now = steady_clock::now();
  if (now < next_) return;
  next_ = now + kInterval;
  shown_ = true;
  if (total_ > 0) {
    const double part = static_cast<double>(done) / static_cast<double>(total_);
    std::fprintf(stderr, "%s%s %3.0f %%", kWipe, what_.c_str(), 100 * (part < 1 ? part : 1));
  } else {
    std::fprintf(stderr, "%s%s %" PRIu64, kWipe, what_.c_str(), done);
  }
  std::fflush(stderr);
}

}  // namespace cli
