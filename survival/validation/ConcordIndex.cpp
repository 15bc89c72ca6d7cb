// Harrell's concordance index by counting over ranks.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Klikro/Klikro"
#include "Klikro/order.h"
#include "survival/validation/validation.h"

namespace {

// Rows of `keys` in ascending order.
std::vector<std::uint32_t> ascending(const std::vector<double>& keys) {
  std::vector<std::uint32_t> order = klikro::sortedOrder(keys.data(), keys.size(), false);
  if (order.size() != keys.size()) {  // in order already
    order.resize(keys.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = static_cast<std::uint32_t>(i);
  }
  return order;
}

// The score of every row: covariates in their order, rows side by side.
std::vector<double> scoresOf(int n, int p, const matrix* X, const matrix* beta) {
  std::vector<double> scores(static_cast<std::size_t>(n));
  const bool whole = X->rows() == n && X->cols() >= p;
  for (int k = 1; k <= p; ++k) {
    const double coefficient = beta->vbget(k, 1);
    if (whole) {
      const double* column = X->data() + static_cast<std::size_t>(k - 1) * X->rows();
      for (int i = 0; i < n; ++i) scores[i] += column[i] * coefficient;
    } else {
      for (int i = 0; i < n; ++i) scores[i] += X->vbget(i + 1, k) * coefficient;
    }
  }
  return scores;
}

// Counts of the ranks taken in so far (a Fenwick tree).
class RankCounts {
 public:
  explicit RankCounts(std::size_t ranks) : sums_(ranks + 1) {}

  void add(std::uint32_t rank) {
    for (std::size_t i = std::size_t{rank} + 1; i < sums_.size(); i += i & (~i + 1)) ++sums_[i];
  }

  // How many ranks below this one were taken in.
  std::uint32_t below(std::uint32_t rank) const {
    std::uint32_t count = 0;
    for (std::size_t i = rank; i > 0; i &= i - 1) count += sums_[i];
    return count;
  }

 private:
  std::vector<std::uint32_t> sums_;
};

// A row with a time, its score as a rank: 1, 2, ... for the distinct scores, 0 for a score that is
// not a number.
struct Row {
  double time;
  std::uint32_t rank;
  bool event;
};

}  // namespace

double ConcordIndex(int n, int p, matrix* time, matrix* status, matrix* X, matrix* beta) {
  if (n < 1) return kMissing;
  const std::vector<double> scores = scoresOf(n, p, X, beta);
  std::vector<std::uint32_t> ranks(scores.size());
  std::uint32_t distinct = 0;
  double previous = 0.0;
  for (const std::uint32_t i : ascending(scores)) {
    if (std::isnan(scores[i])) break;  // the rest as well
    if (distinct == 0 || scores[i] != previous) ++distinct;
    ranks[i] = distinct;
    previous = scores[i];
  }

  std::vector<double> times(scores.size());
  for (int i = 1; i <= n; ++i) times[i - 1] = time->vbget(i, 1);
  std::vector<Row> rows;
  rows.reserve(times.size());
  for (const std::uint32_t i : ascending(times)) {
    if (std::isnan(times[i])) break;
    rows.push_back({times[i], ranks[i], status->vbget(static_cast<int>(i) + 1, 1) == 1.0});
  }

  // From the last time to the first; the later rows are those taken in before.
  std::int64_t usable = 0;
  std::int64_t concordant = 0;
  RankCounts later(std::size_t{distinct} + 1);
  for (std::size_t end = rows.size(); end > 0;) {
    std::size_t begin = end - 1;
    while (begin > 0 && rows[begin - 1].time == rows[end - 1].time) --begin;
    for (std::size_t i = begin; i < end; ++i) {
      if (!rows[i].event) continue;
      usable += static_cast<std::int64_t>(rows.size() - end);
      // Rank 0 has nothing below it; rows of rank 0 are never taken in.
      concordant += later.below(rows[i].rank);
    }
    for (std::size_t i = begin; i < end; ++i) {
      if (rows[i].rank > 0) later.add(rows[i].rank);
    }
    end = begin;
  }
  if (usable == 0) return kMissing;
  return static_cast<double>(concordant) / static_cast<double>(usable);
}
