// The rows that take part in a curve or a comparison, and a marker's values in their order.
#ifndef ENGINE_ROC_SAMPLE_H_
#define ENGINE_ROC_SAMPLE_H_

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "engine/roc/curves.h"

namespace survmeth::engine::roc {

// The rows with a weight above 0 that have all of some markers.
struct Sample {
  Sample(const Request& request, std::initializer_list<std::size_t> markers);

  std::size_t rows() const { return row.size(); }

  std::vector<std::uint32_t> row;      // of the data, ascending
  std::vector<std::uint8_t> positive;  // of each of them: 0 or 1
  std::vector<double> weight;
  double positives = 0, negatives = 0;  // sums of weights, in the order of the rows
};

// Of a class: sums of the weights of those below rank k, and of those at it or above, for k = 0 to
// the number of ranks. Together they are the sample's sum.
struct ClassSums {
  std::vector<double> below, atOrAbove;
  double at(std::size_t k) const { return below[k + 1] - below[k]; }  // exact for whole weights
};

// The values of a marker in a sample by their order, from rank 0 for what speaks most against
// positive.
struct Ranks {
  Ranks(const Marker& marker, const Sample& sample);

  std::size_t size() const { return value.size(); }

  std::vector<double> value;        // of each rank
  std::vector<std::uint32_t> rank;  // of each row of the sample
  ClassSums positives, negatives;
};

// The area under the curve: the share of pairs whose positive has the higher rank, ties one half.
// Whole weights are counted in half pairs, exact up to 2^53 of them; others by the trapezoidal rule.
double areaOf(const Sample& sample, const Ranks& ranks, bool counts);

}  // namespace survmeth::engine::roc

#endif  // ENGINE_ROC_SAMPLE_H_
