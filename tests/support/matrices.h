// Shorthand for matrices in tests.
#ifndef TESTS_SUPPORT_MATRICES_H_
#define TESTS_SUPPORT_MATRICES_H_

#include <vector>

#include "Klikro/Klikro"

namespace survmeth::test {

// A vector: an n x 1 matrix.
class Column : public matrix {
 public:
  explicit Column(std::vector<double> values)
      : matrix(static_cast<int>(values.size()), 1, values.data(), 0, 0) {}
};

// A matrix from its rows, as one writes it down.
class Rows : public matrix {
 public:
  explicit Rows(const std::vector<std::vector<double>>& values)
      : matrix(static_cast<int>(values.size()),
               values.empty() ? 0 : static_cast<int>(values.front().size()), 0) {
    for (int i = 1; i <= rows(); ++i) {
      for (int j = 1; j <= cols(); ++j) vbset(i, j, values[i - 1][j - 1]);
    }
  }
};

// A vector of int.
class IntColumn : public matrixInt {
 public:
  explicit IntColumn(std::vector<int> values)
      : matrixInt(static_cast<int>(values.size()), 1, values.data(), false) {}
};

// Every element, column by column.
inline std::vector<double> elements(const matrix& m) {
  return std::vector<double>(m.data(), m.data() + m.count());
}
inline std::vector<int> elements(const matrixInt& m) {
  return std::vector<int>(m.data(), m.data() + m.count());
}

}  // namespace survmeth::test

#endif  // TESTS_SUPPORT_MATRICES_H_
