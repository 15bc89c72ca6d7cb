// Rows of numbers put together.
#ifndef TESTS_BITS_NUMBERS_H_
#define TESTS_BITS_NUMBERS_H_

#include <cstddef>
#include <vector>

#include "numerics/squareMatrix.h"

namespace survmeth::test {

using Numbers = std::vector<double>;

inline void append(Numbers& to, const Numbers& from) {
  to.insert(to.end(), from.begin(), from.end());
}

inline void appendCells(Numbers& to, const numerics::SquareMatrix& matrix) {
  for (std::size_t i = 0; i < matrix.size(); ++i) {
    for (std::size_t j = 0; j < matrix.size(); ++j) to.push_back(matrix(i, j));
  }
}

}  // namespace survmeth::test

#endif  // TESTS_BITS_NUMBERS_H_
