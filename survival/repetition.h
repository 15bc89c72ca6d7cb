// Iterations that come back to a state they were in.
#ifndef SURVIVAL_REPETITION_H_
#define SURVIVAL_REPETITION_H_

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

namespace survival {

// Where a caller's limit can never be reached: steps after which a fit ends all the same. Fits
// that creep along a ridge have taken 17,000.
inline constexpr int kMostSteps = 100000;

// Whether two vectors have the same bits, so that everything computed from them has, too; a state
// that is not a number repeats itself like any other.
inline bool sameBits(const std::vector<double>& a, const std::vector<double>& b) {
  return a.size() == b.size() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}

inline bool anyNaN(const std::vector<double>& state) {
  return std::any_of(state.begin(), state.end(), [](double value) { return std::isnan(value); });
}

// Compares each state with that of an earlier iteration, which moves on at powers of two
// (Brent, BIT 20 (1980) 176-184).
class Repetition {
 public:
  // Repetitions count from iteration `first` on.
  explicit Repetition(int first) : nextMark_(first) {}

  // How many iterations lie between the state of iteration t and an earlier one that was the
  // same; 0 while none is known.
  int period(int t, std::vector<double> state) {
    if (markedAt_ > 0 && sameBits(state, marked_)) return t - markedAt_;
    if (t >= nextMark_) {
      marked_ = std::move(state);
      markedAt_ = t;
      nextMark_ = t > std::numeric_limits<int>::max() / 2 ? std::numeric_limits<int>::max() : 2 * t;
    }
    return 0;
  }

 private:
  std::vector<double> marked_;
  int markedAt_ = 0;
  int nextMark_;
};

}  // namespace survival

#endif  // SURVIVAL_REPETITION_H_
