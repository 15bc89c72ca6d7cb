// Progress of long work, on standard error and only when that is a terminal:
//
//     Progress progress("reading trial.csv");
//     progress.at(done, all);    // as often as convenient
//
// Nothing appears during the first half second. From then on the line shows how far the work is
// and, each second, how long it has taken, whether or not the work says anything. The line is wiped
// when the object goes.
#ifndef CLI_SHELL_PROGRESS_H_
#define CLI_SHELL_PROGRESS_H_

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace cli {

class Progress {
 public:
  explicit Progress(std::string what);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // `total` 0 when it is not known: then the amount done is shown as it is.
  void at(std::uint64_t done, std::uint64_t total);

 private:
  using Clock = std::chrono::steady_clock;

  void startTicking();
  void tick();
  void draw(Clock::time_point now);

  std::string what_;
  bool terminal_;
  Clock::time_point begun_ = Clock::now();
  std::thread ticking_;
  // Of both threads.
  std::mutex mutex_;
  std::condition_variable changed_;
  std::uint64_t done_ = 0;
  std::uint64_t total_ = 0;
  bool shown_ = false;
  bool ended_ = false;
  Clock::time_point next_;
};

}  // namespace cli

#endif  // CLI_SHELL_PROGRESS_H_
