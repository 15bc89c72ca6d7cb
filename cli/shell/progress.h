// Progress of long work, on standard error and only when that is a terminal:
//
//     Progress progress("reading trial.csv", bytes);
//     progress.at(done);    // as often as convenient
//
// Nothing appears during the first half second. The line is wiped when the object goes.
#ifndef CLI_SHELL_PROGRESS_H_
#define CLI_SHELL_PROGRESS_H_

#include <chrono>
#include <cstdint>
#include <string>

namespace cli {

class Progress {
 public:
  // `total` 0 when it is not known: then the amount done is shown as it is.
  explicit Progress(std::string what, std::uint64_t total = 0);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void at(std::uint64_t done);

 private:
  std::string what_;
  std::uint64_t total_;
  bool terminal_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point next_;
};

}  // namespace cli

#endif  // CLI_SHELL_PROGRESS_H_
