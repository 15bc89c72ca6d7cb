// DeLong's components by windows over the sorted classes.
#include "survival/roc/components.h"

#include <cfloat>
#include <limits>

namespace survival::roc {
namespace {

// Products of weights at or below this are no pair.
constexpr double kWeighty = 1e-12;

double psi(double x, double y) {
  const double difference = y - x;
  if (difference > kTie) return 1.0;
  return std::fabs(difference) < kTie ? 0.5 : 0.0;
}

struct WeightRange {
  explicit WeightRange(const ClassView& view) {
    for (std::size_t i = 0; i < view.count; ++i) {
      const double w = view.weight[i];
      finite = finite && std::isfinite(w);
      negative = negative || w < 0.0;
      if (w == 0.0) continue;
      ++cases;
      anyCase = i;
      smallest = std::min(smallest, std::fabs(w));
      largest = std::max(largest, std::fabs(w));
    }
  }
  bool finite = true;
  bool negative = false;
  std::size_t cases = 0;      // rows with a weight
  std::size_t anyCase = 0;    // one of them
  double smallest = DBL_MAX;  // magnitude, zeros apart
  double largest = 0.0;
};

// score[i] := the sum over y of weight times psi(x(i), y).
std::vector<double> windowScores(const Ascending& x, const Ascending& y) {
  std::vector<double> score(x.size());
  const RangeSums sums(y.weight);
  forEachWindow(x.value, y.value, [&](std::size_t i, const Window& window) {
    score[i] =
        sums.over(window.aboveBegin, y.size()) + 0.5 * sums.over(window.tieBegin, window.tieEnd);
  });
  return score;
}

// Sums of a growing set of positions over any range, without subtraction.
class SumTree {
 public:
  explicit SumTree(std::size_t positions) : leaves_(positions), node_(2 * positions, 0.0) {}

  void set(std::size_t position, double value) {
    std::size_t at = position + leaves_;
    node_[at] = value;
    for (at /= 2; at >= 1; at /= 2) node_[at] = node_[2 * at] + node_[2 * at + 1];
  }

  double over(std::size_t begin, std::size_t end) const {
    double total = 0.0;
    for (begin += leaves_, end += leaves_; begin < end; begin /= 2, end /= 2) {
      if (begin % 2 == 1) total += node_[begin++];
      if (end % 2 == 1) total += node_[--end];
    }
    return total;
  }

 private:
  std::size_t leaves_;
  std::vector<double> node_;
};

// As windowScores, but only over the y whose weight times that of x is above 1e-12. For x of
// growing weight the set of such y only grows, within each sign.
std::vector<double> weightyScores(const Ascending& x, const Ascending& y) {
  std::vector<Window> windows(x.size());
  forEachWindow(x.value, y.value,
                [&](std::size_t i, const Window& window) { windows[i] = window; });
  std::vector<double> score(x.size(), 0.0);
  for (const double sign : {1.0, -1.0}) {
    const auto ofSign = [sign](const Ascending& side) {
      std::vector<std::uint32_t> rows;
      for (std::size_t i = 0; i < side.size(); ++i) {
        if (sign * side.weight[i] > 0.0) rows.push_back(static_cast<std::uint32_t>(i));
      }
      std::stable_sort(rows.begin(), rows.end(), [&](std::uint32_t a, std::uint32_t b) {
        return std::fabs(side.weight[a]) < std::fabs(side.weight[b]);
      });
      return rows;
    };
    const std::vector<std::uint32_t> xs = ofSign(x);
    std::vector<std::uint32_t> waiting = ofSign(y);  // the heaviest last
    SumTree sums(y.size());
    for (const std::uint32_t i : xs) {
      while (!waiting.empty() && x.weight[i] * y.weight[waiting.back()] > kWeighty) {
        sums.set(waiting.back(), y.weight[waiting.back()]);
        waiting.pop_back();
      }
      score[i] = sums.over(windows[i].aboveBegin, y.size()) +
                 0.5 * sums.over(windows[i].tieBegin, windows[i].tieEnd);
    }
  }
  return score;
}

// The sums over pairs as they are defined: where a product of weights leaves the range of normal
// numbers it matters which factor is summed first.
double sumPairs(const ClassView& negatives, const ClassView& positives, Pairs pairs,
                std::vector<double>& perNegative, std::vector<double>& perPositive) {
  double total = 0.0;
  for (std::size_t a = 0; a < negatives.count; ++a) {
    for (std::size_t b = 0; b < positives.count; ++b) {
      const double product = positives.weight[b] * negatives.weight[a];
      if (pairs == Pairs::weighty && !(product > kWeighty)) continue;
      const double term = product * psi(negatives.value[a], positives.value[b]);
      perNegative[a] += term;
      perPositive[b] += term;
      total += term;
    }
  }
  return total;
}

}  // namespace

Components componentsOf(const ClassView& negatives, const ClassView& positives, double N, double P,
                        Pairs pairs) {
  Components result{std::vector<double>(negatives.count, 0.0),
                    std::vector<double>(positives.count, 0.0), 0.0};
  const WeightRange negativeWeights(negatives);
  const WeightRange positiveWeights(positives);
  // No sum over pairs leaves a number then, so none is formed.
  if (!negativeWeights.finite || !positiveWeights.finite) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    std::fill(result.negative.begin(), result.negative.end(), nan);
    std::fill(result.positive.begin(), result.positive.end(), nan);
    result.area = nan;
    return result;
  }

  const double least = negativeWeights.smallest * positiveWeights.smallest;
  double total = 0.0;
  if (!std::isfinite(negativeWeights.largest * positiveWeights.largest) ||
      (pairs == Pairs::all && least < DBL_MIN)) {
    total = sumPairs(negatives, positives, pairs, result.negative, result.positive);
  } else {
    const bool everyPair = pairs == Pairs::all || (least > kWeighty && !negativeWeights.negative &&
                                                   !positiveWeights.negative);
    const auto scores = everyPair ? windowScores : weightyScores;
    Ascending x(negatives);
    Ascending y(positives);
    const std::vector<double> above = scores(x, y);
    for (std::size_t i = 0; i < x.size(); ++i) result.negative[x.row[i]] = x.weight[i] * above[i];
    x.mirror();
    y.mirror();
    const std::vector<double> below = scores(y, x);
    for (std::size_t i = 0; i < y.size(); ++i) result.positive[y.row[i]] = y.weight[i] * below[i];
    for (const double sum : result.negative) total += sum;
    // Of a single case the variance is 0 / 0, so its sum and the total must be the same number,
    // which the sum over the other class, in its own order, need not be.
    if (positiveWeights.cases == 1) total = result.positive[positiveWeights.anyCase];
  }

  for (double& sum : result.negative) sum /= P;
  for (double& sum : result.positive) sum /= N;
  result.area = total / (N * P);
  return result;
}

}  // namespace survival::roc
