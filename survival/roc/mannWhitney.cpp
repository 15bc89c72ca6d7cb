// The exact variance of the weighted Mann-Whitney statistic.
#include "Dist/Dist"
#include "survival/roc/components.h"

namespace survival::roc {
namespace {

// Strict neighbours of one value among an ascending column: below in [0, belowEnd), above in
// [aboveBegin, size).
struct Neighbours {
  std::size_t belowEnd = 0;
  std::size_t aboveBegin = 0;
};

// Calls visit(i, neighbours) for every x(i), ascending.
template <typename Visit>
void forEachNeighbours(const std::vector<double>& x, const std::vector<double>& y, Visit visit) {
  Neighbours at;
  for (std::size_t i = 0; i < x.size(); ++i) {
    while (at.belowEnd < y.size() && y[at.belowEnd] < x[i]) ++at.belowEnd;
    while (at.aboveBegin < y.size() && !(y[at.aboveBegin] > x[i])) ++at.aboveBegin;
    visit(i, at);
  }
}

// The sum over tied pairs of the weight of x.
double tiedWeight(const Ascending& x, const Ascending& y) {
  double total = 0.0;
  forEachWindow(x.value, y.value, [&](std::size_t i, const Window& window) {
    total += static_cast<double>(window.tieEnd - window.tieBegin) * x.weight[i];
  });
  return total;
}

double contribution(double less, double more) {
  return (less - more) * (less - more) - (less + more);
}

}  // namespace

double mannWhitneyError(const ClassView& negatives, const ClassView& positives, double N, double P,
                        double area) {
  const Ascending x(negatives);
  const Ascending y(positives);
  double V = (N + P) - tiedWeight(x, y) * tiedWeight(y, x);

  // Contributions are added in the order of the rows, as a loop over them would.
  std::vector<double> terms(negatives.count, 0.0);
  const RangeSums sums(y.weight);
  forEachNeighbours(x.value, y.value, [&](std::size_t i, const Neighbours& at) {
    terms[x.row[i]] = contribution(sums.over(0, at.belowEnd), sums.over(at.aboveBegin, y.size()));
  });
  for (const double term : terms) V += term;

  // Each negative counts with the positive's weight, not with its own: errors that callers hold
  // from earlier runs were formed so and must come out again.
  terms.assign(positives.count, 0.0);
  forEachNeighbours(y.value, x.value, [&](std::size_t j, const Neighbours& at) {
    terms[y.row[j]] = contribution(static_cast<double>(x.size() - at.aboveBegin) * y.weight[j],
                                   static_cast<double>(at.belowEnd) * y.weight[j]);
  });
  for (const double term : terms) V += term;

  V = V / (N * P) - 4.0 * (N + P - 1.0) * ((area - 0.5) * (area - 0.5));
  if ((N - 1.0) * (P - 1.0) <= 1e-12 || V <= 1e-12) return 0.0;
  return 0.5 * sqr(V / ((N - 1.0) * (P - 1.0)));
}

}  // namespace survival::roc
