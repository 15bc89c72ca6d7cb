// One run of a command: what it writes and what it remarks.
#ifndef CLI_SHELL_SESSION_H_
#define CLI_SHELL_SESSION_H_

#include <functional>
#include <string>
#include <vector>

#include "cli/shell/output.h"

namespace CLI {
class App;
}

namespace cli {

class Session {
 public:
  Output output;
  std::string call;  // the whole command line, as a shell would take it

  // A remark that does not stop the command: to standard error when the command has succeeded,
  // "survmeth life: note: ...".
  void note(const std::string& text) { notes_.push_back(text); }
  const std::vector<std::string>& notes() const { return notes_; }

 private:
  std::vector<std::string> notes_;
};

using Run = std::function<void(Session&)>;

}  // namespace cli

#endif  // CLI_SHELL_SESSION_H_
