// The rows of one stratum, as both estimators read them.
#ifndef SURVIVAL_LIFE_STRATUM_H_
#define SURVIVAL_LIFE_STRATUM_H_

#include <algorithm>
#include <limits>

#include "Klikro/Klikro"

namespace survival {

// `a + b` as an index: one too large for an int wraps round and so lies outside every matrix.
inline int indexSum(int a, int b) {
  return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
}

// The most intervals whose life table an int can count; more cannot exist.
inline constexpr int kMostIntervals = std::numeric_limits<int>::max() / 16;

class Stratum {
 public:
  Stratum(int offset, int m, bool counts, int eventCode, const matrix* time, const matrix* status,
          const matrix* weight)
      : time_(time, offset, m),
        status_(status, offset, m),
        weight_(weight, offset, m),
        size_(std::max(m, 0)),
        counts_(counts),
        eventCode_(eventCode) {}

  int size() const { return size_; }

  // Rows are numbered from 1.
  double time(int i) const { return time_[i]; }
  double events(int i) const {
    return counts_ ? status_[i] : status_[i] == eventCode_ ? weight_[i] : 0.0;
  }
  double censored(int i) const { return counts_ || !(status_[i] == eventCode_) ? weight_[i] : 0.0; }

  // The plain format counts rows, not weights: its callers pass unit weights.
  double total() const {
    if (!counts_) return size_;
    double sum = 0.0;
    for (int i = 0; i < size_; ++i) sum += status_[i + 1] + weight_[i + 1];
    return sum;
  }

 private:
  // Rows past the end of a column read as -1.
  class Column {
   public:
    Column(const matrix* column, int offset, int m)
        : column_(column),
          offset_(offset),
          inside_(offset >= 0 && m >= 0 && m <= column->count() && offset <= column->count() - m
                      ? column->data() + offset
                      : nullptr) {}
    double operator[](int i) const {
      return inside_ != nullptr ? inside_[i - 1] : column_->vbget(indexSum(offset_, i), 1);
    }

   private:
    const matrix* column_;
    int offset_;
    const double* inside_;
  };

  Column time_;
  Column status_;
  Column weight_;
  int size_;
  bool counts_;
  double eventCode_;
};

}  // namespace survival

#endif  // SURVIVAL_LIFE_STRATUM_H_
