// Samples for the tests of ROC curves.
#ifndef TESTS_ENGINE_ROC_DATA_H_
#define TESTS_ENGINE_ROC_DATA_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "engine/roc/curves.h"
#include "tests/support/csv.h"

namespace survmeth::engine::roc {

inline constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();

// Columns that own what a request points to.
struct Data {
  std::vector<std::uint8_t> positive;
  std::vector<std::vector<double>> markers;
  std::vector<bool> lower;
  std::vector<double> weight;
  Request options;

  // Of the columns, which have to outlive it.
  Request request() const {
    Request request = options;
    request.positive = positive;
    request.weight = weight;
    for (std::size_t m = 0; m < markers.size(); ++m) {
      request.markers.push_back({markers[m], m < lower.size() && lower[m]});
    }
    return request;
  }
  Result run() const { return curves(request()); }
  Curve curve() const { return run().curves.at(0); }
};

inline Data haemorrhage(const std::vector<std::string>& markers) {
  const test::Csv csv(SURVMETH_DATA "/sah.csv");
  Data data;
  for (std::size_t i = 0; i < csv.rows(); ++i) {
    data.positive.push_back(csv.text("outcome", i) == "Poor" ? 1 : 0);
  }
  for (const std::string& marker : markers) data.markers.push_back(csv.numbers(marker));
  return data;
}

// Negatives 1, 2, 4, positives 3, 3, 5: of 9 pairs 7 are in order.
inline Data byHand() { return {{0, 1, 0, 1, 0, 1}, {{4, 3, 1, 5, 2, 3}}, {}, {}, {}}; }

inline std::vector<double> negated(std::vector<double> values) {
  for (double& value : values) value = -value;
  return values;
}

}  // namespace survmeth::engine::roc

#endif  // TESTS_ENGINE_ROC_DATA_H_
