// Sums of cross products of the design over the rows of a model.
#ifndef SURVIVAL_PARAM_NORMALEQUATIONS_H_
#define SURVIVAL_PARAM_NORMALEQUATIONS_H_

#include <cstddef>
#include <vector>

namespace survival::param {

// The design of a few rows, one row of `width` columns (whole lanes) after the other, and what
// every row is multiplied by in the sums.
struct DesignBlock {
  DesignBlock(int columns, int rowLimit);

  double* row(int i) { return design.data() + static_cast<std::size_t>(i) * width; }

  // Row i adds nothing from now on.
  void clear(int i);

  int width;
  std::vector<double> design;
  std::vector<double> eta;       // weighted derivative in eta
  std::vector<double> etaEta;    // weighted second derivative in eta
  std::vector<double> etaSigma;  // weighted mixed derivative
};

// Every element is the sum over the rows in their order, so that the result does not depend on how
// the rows were cut into blocks or on the width of the machine's registers.
struct DesignSums {
  explicit DesignSums(int columns);

  // x eta and x etaSigma of each row.
  void addFirstOrder(const DesignBlock& block, int rows);

  // x x' etaEta of each row, on and above the diagonal.
  void addSecondOrder(const DesignBlock& block, int rows);

  double gradientAt(int column) const { return gradient[static_cast<std::size_t>(column)]; }
  double etaSigmaAt(int column) const { return etaSigma[static_cast<std::size_t>(column)]; }
  double etaEtaAt(int row, int column) const {
    return row <= column ? etaEta[static_cast<std::size_t>(row) * width + column]
                         : etaEtaAt(column, row);
  }

  int width;
  std::vector<double> gradient;
  std::vector<double> etaSigma;
  std::vector<double> etaEta;
};

}  // namespace survival::param

#endif  // SURVIVAL_PARAM_NORMALEQUATIONS_H_
