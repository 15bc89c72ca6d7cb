// What a command cannot go on from. A command throws a Problem; main prints it as one line,
//
//     survmeth life: trial.csv, line 12, column "weeks": "abc" is not a number; expected ...
//
// and ends with its exit code. Nothing has been written by then, because output is held back until
// a command has succeeded (output.h).
#ifndef CLI_SHELL_PROBLEM_H_
#define CLI_SHELL_PROBLEM_H_

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "frame/place.h"
#include "text/words.h"

namespace cli {

enum ExitCode {
  kSuccess = 0,
  kFailed = 1,    // the surroundings: a file that cannot be written, a program that is not there
  kBadInput = 2,  // the arguments or the data
};

class Problem : public std::runtime_error {
 public:
  explicit Problem(const std::string& message, int exitCode = kBadInput)
      : std::runtime_error(message), exitCode_(exitCode) {}
  int exitCode() const { return exitCode_; }

 private:
  int exitCode_;
};

using survmeth::frame::Place;

// "source, line 12, column "weeks": what; expected expected", without the parts that are empty.
Problem problemAt(const Place& place, std::string_view what, std::string_view expected = "");

using survmeth::text::nearestFirst;
using survmeth::text::quote;

}  // namespace cli

#endif  // CLI_SHELL_PROBLEM_H_
