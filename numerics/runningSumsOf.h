// Several running sums side by side, of a number that the compiler knows.
#ifndef NUMERICS_RUNNING_SUMS_OF_H_
#define NUMERICS_RUNNING_SUMS_OF_H_

#include <array>
#include <cstddef>

namespace survmeth::numerics {

// The bits of as many RunningSums (runningSum.h) of equally many terms.
template <std::size_t kCount>
class RunningSumsOf {
 public:
  using Each = std::array<double, kCount>;

  void add(const Each& term) {
    for (std::size_t i = 0; i < kCount; ++i) part_[i] += term[i];
    if (++terms_ == 64) {
      for (std::size_t i = 0; i < kCount; ++i) {
        const double sum = whole_[i] + part_[i];
        const double added = sum - whole_[i];
        part_[i] = (whole_[i] - (sum - added)) + (part_[i] - added);
        whole_[i] = sum;
      }
      terms_ = 0;
    }
  }
  double value(std::size_t i) const { return whole_[i] + part_[i]; }
  Each values() const {
    Each sums;
    for (std::size_t i = 0; i < kCount; ++i) sums[i] = whole_[i] + part_[i];
    return sums;
  }

 private:
  Each whole_{}, part_{};
  unsigned terms_ = 0;
};

}  // namespace survmeth::numerics

#endif  // NUMERICS_RUNNING_SUMS_OF_H_
