// One class of observations in order of value, and the windows of another class that lie above or
// tie with each of its values.
#ifndef SURVIVAL_ROC_CLASSES_H_
#define SURVIVAL_ROC_CLASSES_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

#include "Klikro/order.h"

namespace survival::roc {

// Values closer than this tie; a difference of exactly this much is neither a tie nor above.
inline constexpr double kTie = 1e-12;

// The rows of values[count] in ascending order of value. NaN is left out: it is neither above,
// below nor tied with anything.
inline std::vector<std::uint32_t> ascendingRows(const double* values, std::size_t count) {
  std::vector<std::uint32_t> order = klikro::sortedOrder(values, count, false);
  if (order.empty()) {
    order.resize(count);
    std::iota(order.begin(), order.end(), 0u);
  }
  while (!order.empty() && std::isnan(values[order.back()])) order.pop_back();
  return order;
}

// A class as the double loops see it, and the order in which the windows walk it.
struct ClassView {
  const double* value;
  const double* weight;
  std::size_t count;
  const std::vector<std::uint32_t>* order;  // ascendingRows(value, count)
};

// The same, gathered in ascending order.
struct Ascending {
  explicit Ascending(const ClassView& view)
      : value(view.order->size()), weight(view.order->size()), row(*view.order) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      value[i] = view.value[row[i]];
      weight[i] = view.weight[row[i]];
    }
  }

  std::size_t size() const { return row.size(); }

  // Reversed with every value negated: y - x is (-x) - (-y) to the bit, so what is summed over
  // the positives for each negative can be summed over the negatives for each positive.
  void mirror() {
    std::reverse(value.begin(), value.end());
    std::reverse(weight.begin(), weight.end());
    std::reverse(row.begin(), row.end());
    for (double& v : value) v = -v;
  }

  std::vector<double> value;
  std::vector<double> weight;
  std::vector<std::uint32_t> row;
};

// Positions among ascending y of the values tied with an x and of those above it: ties stand in
// [tieBegin, tieEnd), those above in [aboveBegin, size).
struct Window {
  std::size_t tieBegin = 0;
  std::size_t tieEnd = 0;
  std::size_t aboveBegin = 0;
};

// Calls visit(i, window) for every x(i), ascending. Rounded differences are monotone in y and in
// x, so each bound only moves forward and the windows hold exactly the pairs that the
// comparisons y - x > 1e-12 and |y - x| < 1e-12 select. Equal infinities, whose difference is not
// a number, neither tie nor rank: tieBegin passes them, so tieEnd is raised to it.
template <typename Visit>
void forEachWindow(const std::vector<double>& x, const std::vector<double>& y, Visit visit) {
  std::size_t tieBegin = 0;
  std::size_t tieEnd = 0;
  std::size_t aboveBegin = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    while (tieBegin < y.size() && !(y[tieBegin] - x[i] > -kTie)) ++tieBegin;
    while (tieEnd < y.size() && y[tieEnd] - x[i] < kTie) ++tieEnd;
    while (aboveBegin < y.size() && !(y[aboveBegin] - x[i] > kTie)) ++aboveBegin;
    visit(i, Window{tieBegin, std::max(tieBegin, tieEnd), aboveBegin});
  }
}

// Sums over ranges of a column, each as good as rounded once: the running sum carries its
// rounding errors along, so a short range does not inherit those of the long sums around it.
class RangeSums {
 public:
  explicit RangeSums(const std::vector<double>& terms)
      : sum_(terms.size() + 1), error_(terms.size() + 1) {
    for (std::size_t i = 0; i < terms.size(); ++i) {
      const double next = sum_[i] + terms[i];
      const double added = next - sum_[i];
      error_[i + 1] = error_[i] + ((sum_[i] - (next - added)) + (terms[i] - added));
      sum_[i + 1] = next;
    }
  }

  // terms[begin] + ... + terms[end - 1]
  double over(std::size_t begin, std::size_t end) const {
    const double high = sum_[end];
    const double low = sum_[begin];
    const double difference = high - low;
    const double taken = difference - high;
    const double lost = (high - (difference - taken)) - (low + taken);
    return difference + (lost + (error_[end] - error_[begin]));
  }

 private:
  std::vector<double> sum_;
  std::vector<double> error_;
};

}  // namespace survival::roc

#endif  // SURVIVAL_ROC_CLASSES_H_
