// How long work reports how far it is and learns that it is no longer wanted.
#ifndef NUMERICS_PROGRESS_H_
#define NUMERICS_PROGRESS_H_

#include <exception>

namespace survmeth::numerics {

// Thrown by Progress::at: unwinds the work, which leaves nothing behind.
class Cancelled : public std::exception {
 public:
  const char* what() const noexcept override { return "cancelled"; }
};

// The default says nothing and never stops. Called from one thread at a time.
class Progress {
 public:
  Progress() = default;
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  virtual ~Progress() = default;

  // `done` of the work, in [0, 1]; throws Cancelled where the caller wants no more. As often as
  // convenient: a few hundred times a second cost nothing.
  void at(double done) {
    show(done);
    if (stop()) throw Cancelled();
  }

 private:
  virtual void show(double /*done*/) {}
  virtual bool stop() { return false; }
};

}  // namespace survmeth::numerics

#endif  // NUMERICS_PROGRESS_H_
