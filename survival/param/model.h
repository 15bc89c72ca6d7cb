// What the parametric routines share: the data of a model and the layout of its parameters.
#ifndef SURVIVAL_PARAM_MODEL_H_
#define SURVIVAL_PARAM_MODEL_H_

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>

#include "Klikro/Klikro"

namespace survival::param {

enum Distribution { kExponential = 1, kWeibull = 2, kLogNormal = 3, kWithoutLikelihood = 4 };

// e^x is not formed for x of this size: e^709 is the largest power that a double holds.
inline constexpr double kExpLimit = 700.0;

// Position `offset` places past the p coefficients: the intercept at 1, sigma at 2. Wraps, so that
// an absurd p leads outside every matrix.
inline int afterCoefficients(int p, int offset) {
  return static_cast<int>(static_cast<unsigned>(p) + static_cast<unsigned>(offset));
}

// p + k, kept within the sizes a matrix can have.
inline int parameterCount(int p, int k) {
  return static_cast<int>(
      std::clamp<long long>(static_cast<long long>(p) + k, 0, std::numeric_limits<int>::max()));
}

// A matrix that cannot exist because of its size fails as its allocation would, before any work.
inline void requireMatrix(int rows, long long cols) {
  if (rows > 0 && cols > std::numeric_limits<int>::max() / rows) throw std::bad_alloc();
}

// Rows first .. first + count - 1 (from 0) of column j: straight from the matrix where it has
// them, otherwise element by element into scratch, with what lies outside reading as -1.
inline const double* rowsOf(const matrix* m, int j, int first, int count, double* scratch) {
  if (j >= 1 && j <= m->cols() && first <= m->rows() - count) {
    return m->data() + static_cast<std::size_t>(j - 1) * static_cast<std::size_t>(m->rows()) +
           first;
  }
  for (int i = 0; i < count; ++i) scratch[i] = m->vbget(first + i + 1, j);
  return scratch;
}

// The observations and the law of one model, as every routine receives them.
struct Model {
  matrix* times;
  int n;
  int p;
  int k;
  matrix* status;
  matrix* bounds;
  matrix* covariates;
  matrix* weights;
  int distribution;
};

}  // namespace survival::param

#endif  // SURVIVAL_PARAM_MODEL_H_
