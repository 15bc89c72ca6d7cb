// What must not outlive a run that does not come to its end: files under a temporary name and new
// folders. A signal that ends the program (Ctrl-C, a closed terminal, a limit) takes them away
// first; the program then dies of that signal, as its parent expects.
//
//     endOnSignals();                       // once, in main
//     {
//       const HeldSignals held;             // nothing may come between making and noting
//       descriptor = mkstemp(name);
//       leftover = Leftover::file(name);
//     }
//     leftover.remove();                    // or keep(), once it has its name
#ifndef CLI_SHELL_LEFTOVERS_H_
#define CLI_SHELL_LEFTOVERS_H_

#include <csignal>
#include <string>

namespace cli {

// Handles the signals that end a program, except those that its parent has it ignore.
void endOnSignals();

// Sees to it that descriptors 0 to 2 are taken, so that no file of ours becomes "standard output".
// One that was closed refuses to be written, as before.
void holdStandardDescriptors();

// Ends the program as a write into a closed pipe does by default; returns if the parent has it
// ignore that.
void endOfClosedPipe();

// While it lives, the signals that end the program wait.
class HeldSignals {
 public:
  HeldSignals();
  ~HeldSignals();
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

 private:
  sigset_t before_;
};

// While it lives, writing into a closed pipe fails with EPIPE instead of ending the program.
class IgnoredPipeSignal {
 public:
  IgnoredPipeSignal();
  ~IgnoredPipeSignal();
  IgnoredPipeSignal(const IgnoredPipeSignal&) = delete;
  IgnoredPipeSignal& operator=(const IgnoredPipeSignal&) = delete;

 private:
  struct sigaction before_ = {};
};

class Leftover {
 public:
  static Leftover file(const std::string& path);
  static Leftover folder(const std::string& path);  // removed only if it is empty

  void keep();    // it stays, and has its final name
  void remove();  // takes it away now

 private:
  struct Entry;
  friend struct LeftoverList;
  explicit Leftover(Entry* entry) : entry_(entry) {}
  Entry* entry_;
};

}  // namespace cli

#endif  // CLI_SHELL_LEFTOVERS_H_
