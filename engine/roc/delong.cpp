#include "engine/roc/delong.h"

namespace survmeth::engine::roc {

std::vector<double> componentsOf(const Sample& sample, const Ranks& ranks) {
  const ClassSums &positives = ranks.positives, &negatives = ranks.negatives;
  const double area = areaOf(sample, ranks, true);
  std::vector<double> components(sample.rows());
  for (std::size_t i = 0; i < components.size(); ++i) {
    const std::size_t k = ranks.rank[i];
    const double share =
        sample.positive[i] != 0
            ? (negatives.below[k] + 0.5 * negatives.at(k)) / sample.negatives
            : (positives.atOrAbove[k + 1] + 0.5 * positives.at(k)) / sample.positives;
    components[i] = share - area;
  }
  return components;
}

Products productsOf(const Sample& sample, const std::vector<double>& first,
                    const std::vector<double>& second) {
  Products products;
  for (std::size_t i = 0; i < sample.rows(); ++i) {
    const double term = first[i] * second[i];
    double& sum = sample.positive[i] != 0 ? products.ofPositives : products.ofNegatives;
    // Added as often as the row counts: the sum is then that of the repeated rows to the bit.
    for (double copy = 0.0; copy < sample.weight[i]; ++copy) sum += term;
  }
  return products;
}

double covarianceOf(const Sample& sample, const std::vector<double>& first,
                    const std::vector<double>& second) {
  const double P = sample.positives, N = sample.negatives;
  const Products products = productsOf(sample, first, second);
  return products.ofNegatives / (N - 1.0) / N + products.ofPositives / (P - 1.0) / P;
}

}  // namespace survmeth::engine::roc
