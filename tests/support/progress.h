// Whether long work says how far it is, and stops where nobody wants it.
#ifndef TESTS_SUPPORT_PROGRESS_H_
#define TESTS_SUPPORT_PROGRESS_H_

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <vector>

#include "numerics/progress.h"

namespace survmeth::test {

// Keeps what is said, and stops at the call of this number, from 0 on.
class StoppingProgress : public numerics::Progress {
 public:
  explicit StoppingProgress(std::size_t at = std::numeric_limits<std::size_t>::max()) : at_(at) {}
  const std::vector<double>& said() const { return said_; }

 private:
  void show(double done) override { said_.push_back(done); }
  bool stop() override { return said_.size() > at_; }

  std::size_t at_;
  std::vector<double> said_;
};

// That the work says ascending shares from 0 to 1, and stops at each of them.
// Out  how often it said anything
inline std::size_t expectStops(const std::function<void(numerics::Progress&)>& work) {
  StoppingProgress whole;
  work(whole);
  EXPECT_GT(whole.said().size(), 1u);
  double before = 0;
  for (const double share : whole.said()) {
    EXPECT_GE(share, before);
    EXPECT_LE(share, 1);
    before = share;
  }
  for (std::size_t call = 0; call < whole.said().size(); ++call) {
    StoppingProgress stopping(call);
    EXPECT_THROW(work(stopping), numerics::Cancelled) << call;
    EXPECT_EQ(stopping.said().size(), call + 1);
  }
  return whole.said().size();
}

}  // namespace survmeth::test

#endif  // TESTS_SUPPORT_PROGRESS_H_
