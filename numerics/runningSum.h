// A sum of very many terms whose error does not grow with their number.
#ifndef NUMERICS_RUNNING_SUM_H_
#define NUMERICS_RUNNING_SUM_H_

#include <cstddef>
#include <vector>

namespace survmeth::numerics {

// Adds up parts of at most 64 terms; what rounding takes from the whole goes into the next part.
class RunningSum {
 public:
  // The sum with this term.
  double add(double term) {
    part_ += term;
    const double sum = whole_ + part_;
    if (++terms_ == 64) {
      const double added = sum - whole_;
      part_ = (whole_ - (sum - added)) + (part_ - added);
      whole_ = sum;
      terms_ = 0;
    }
    return sum;
  }
  double value() const { return whole_ + part_; }
  void multiplyBy(double factor) {
    whole_ *= factor;
    part_ *= factor;
  }

 private:
  double whole_ = 0.0, part_ = 0.0;
  unsigned terms_ = 0;
};

// Several running sums of equally many terms, side by side: the bits of as many RunningSums.
class RunningSums {
 public:
  explicit RunningSums(std::size_t count) : whole_(count), part_(count) {}

  // sums[count] become the sums with the terms that stand there.
  void add(double* sums) {
    const std::size_t count = whole_.size();
    double* whole = whole_.data();
    double* part = part_.data();
    for (std::size_t i = 0; i < count; ++i) {
      part[i] += sums[i];
      sums[i] = whole[i] + part[i];
    }
    if (++terms_ < 64) return;
    terms_ = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const double added = sums[i] - whole[i];
      part[i] = (whole[i] - (sums[i] - added)) + (part[i] - added);
      whole[i] = sums[i];
    }
  }
  double value(std::size_t i) const { return whole_[i] + part_[i]; }

 private:
  std::vector<double> whole_, part_;
  unsigned terms_ = 0;
};

}  // namespace survmeth::numerics

#endif  // NUMERICS_RUNNING_SUM_H_
