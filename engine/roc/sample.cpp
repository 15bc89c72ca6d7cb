#include "engine/roc/sample.h"

#include <algorithm>
#include <cmath>

#include "numerics/order.h"

namespace survmeth::engine::roc {
namespace {

// `order` holds the rows of the sample by ascending rank.
ClassSums sumsOf(const Sample& sample, bool positive, const std::vector<std::uint32_t>& rank,
                 const std::vector<std::uint32_t>& order, std::size_t ranks) {
  const double total = positive ? sample.positives : sample.negatives;
  ClassSums sums{std::vector<double>(ranks + 1, 0.0), std::vector<double>(ranks + 1, 0.0)};
  double sum = 0.0;
  for (const std::uint32_t i : order) {
    if ((sample.positive[i] != 0) == positive) sum += sample.weight[i];
    sums.below[rank[i] + 1] = sum;
  }
  sum = 0.0;
  for (auto i = order.rbegin(); i != order.rend(); ++i) {
    if ((sample.positive[*i] != 0) == positive) sum += sample.weight[*i];
    sums.atOrAbove[rank[*i]] = sum;
  }
  // The larger part comes from the difference: beside nothing it is the total to the bit, and a rate
  // of 1 does not come out an ulp above it.
  for (std::size_t k = 0; k <= ranks; ++k) {
    if (2.0 * sums.below[k] < total) {
      sums.atOrAbove[k] = total - sums.below[k];
    } else {
      sums.below[k] = total - sums.atOrAbove[k];
    }
  }
  return sums;
}

}  // namespace

Sample::Sample(const Request& request, std::initializer_list<std::size_t> markers) {
  for (std::size_t i = 0; i < request.positive.size(); ++i) {
    const double its = request.weight.empty() ? 1.0 : request.weight[i];
    if (its == 0.0 || std::any_of(markers.begin(), markers.end(), [&](std::size_t m) {
          return std::isnan(request.markers[m].values[i]);
        })) {
      continue;
    }
    row.push_back(static_cast<std::uint32_t>(i));
    positive.push_back(request.positive[i] != 0 ? 1 : 0);
    weight.push_back(its);
    (positive.back() != 0 ? positives : negatives) += its;
  }
}

Ranks::Ranks(const Marker& marker, const Sample& sample) : rank(sample.rows()) {
  std::vector<double> towards(sample.rows());
  for (std::size_t i = 0; i < towards.size(); ++i) {
    const double its = marker.values[sample.row[i]];
    towards[i] = marker.lowerIsPositive ? -its : its;
  }
  std::vector<double> sorted;
  const std::vector<std::uint32_t> order = numerics::ascendingOrder(towards, sorted);
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (i == 0 || sorted[i] != sorted[i - 1]) {
      value.push_back(marker.lowerIsPositive ? 0.0 - sorted[i] : sorted[i]);
    }
    rank[order[i]] = static_cast<std::uint32_t>(value.size() - 1);
  }
  positives = sumsOf(sample, true, rank, order, value.size());
  negatives = sumsOf(sample, false, rank, order, value.size());
}

double areaOf(const Sample& sample, const Ranks& ranks, bool counts) {
  const ClassSums &positives = ranks.positives, &negatives = ranks.negatives;
  const double P = sample.positives, N = sample.negatives;
  double area = 0.0;
  if (counts) {
    for (std::size_t k = 0; k < ranks.size(); ++k) {
      area += positives.at(k) * (2.0 * negatives.below[k] + negatives.at(k));
    }
    return area / (2.0 * P * N);
  }
  double x = 0.0, y = 0.0;  // 1 - specificity and sensitivity from nobody called positive on
  for (std::size_t k = ranks.size(); k-- > 0;) {
    const double nextX = 1.0 - negatives.below[k] / N, nextY = positives.atOrAbove[k] / P;
    area += (nextX - x) * (y + nextY) / 2.0;
    x = nextX;
    y = nextY;
  }
  return area;
}

}  // namespace survmeth::engine::roc
