// A sum of very many terms whose error does not grow with their number.
#ifndef NUMERICS_RUNNING_SUM_H_
#define NUMERICS_RUNNING_SUM_H_

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

}  // namespace survmeth::numerics

#endif  // NUMERICS_RUNNING_SUM_H_
