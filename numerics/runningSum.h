// A sum of very many terms whose error does not grow with their number.
#ifndef NUMERICS_RUNNING_SUM_H_
#define NUMERICS_RUNNING_SUM_H_

#include <array>
#include <cstddef>
#include <vector>

namespace survmeth::numerics {

// Adds a part to the whole; what rounding takes from that becomes the next part.
inline void carry(double& whole, double& part) {
  const double sum = whole + part;
  const double added = sum - whole;
  part = (whole - (sum - added)) + (part - added);
  whole = sum;
}

// Adds up parts of at most 64 terms.
class RunningSum {
 public:
  // The sum with this term.
  double add(double term) {
    part_ += term;
    const double sum = whole_ + part_;
    if (++terms_ == 64) {
      carry(whole_, part_);
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
    for (std::size_t i = 0; i < count; ++i) carry(whole[i], part[i]);
  }
  double value(std::size_t i) const { return whole_[i] + part_[i]; }

 private:
  std::vector<double> whole_, part_;
  unsigned terms_ = 0;
};

// The same of a number of sums that the compiler knows.
template <std::size_t kCount>
class RunningSumsOf {
 public:
  using Each = std::array<double, kCount>;

  void add(const Each& term) {
    for (std::size_t i = 0; i < kCount; ++i) part_[i] += term[i];
    if (++terms_ < 64) return;
    for (std::size_t i = 0; i < kCount; ++i) carry(whole_[i], part_[i]);
    terms_ = 0;
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

#endif  // NUMERICS_RUNNING_SUM_H_
