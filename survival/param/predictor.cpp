// The linear predictor, four columns at a time so that each is read as it lies.
#include "survival/param/predictor.h"

#include <algorithm>

#include "numerics/hot.h"
#include "survival/param/lanes.h"

namespace survival::param {

namespace {

// eta += the four columns times beta, column after column.
SURVMETH_HOT void addColumns(const double* const* x, const double* beta, int count, double* eta) {
  const double *a = x[0], *b = x[1], *c = x[2], *d = x[3];
  const double forA = beta[0], forB = beta[1], forC = beta[2], forD = beta[3];
  for (int i = 0; i < count; ++i) {
    eta[i] = eta[i] + a[i] * forA + b[i] * forB + c[i] * forC + d[i] * forD;
  }
}

// The four columns, row after row `width` apart.
SURVMETH_HOT void layRows(const double* const* x, int count, double* rows, int width) {
  for (int i = 0; i < count; ++i, rows += width) {
    store(Lanes{x[0][i], x[1][i], x[2][i], x[3][i]}, rows);
  }
}

}  // namespace

Coefficients::Coefficients(const matrix* parameters, int p)
    : intercept(parameters->vbget(afterCoefficients(p, 1), 1)),
      sigma(parameters->vbget(afterCoefficients(p, 2), 1)) {
  for (int j = 1; j <= p; ++j) beta.push_back(parameters->vbget(j, 1));
}

Predictor::Predictor(const matrix* covariates, const Coefficients& coefficients)
    : covariates_(covariates),
      coefficients_(coefficients),
      width_(wholeLanes(coefficients.count() + 1)),
      blockRows_(std::clamp(4096 / width_, 8, 512)),
      betas_(coefficients.beta),
      ones_(blockRows_, 1.0),
      zeros_(blockRows_, 0.0),
      scratch_(static_cast<std::size_t>(blockRows_) * kLanes) {
  betas_.push_back(coefficients.intercept);
  betas_.resize(width_, 0.0);
}

const double* Predictor::column(int j, int first, int count, double* scratch) const {
  if (j < coefficients_.count()) return rowsOf(covariates_, j + 1, first, count, scratch);
  return j == coefficients_.count() ? ones_.data() : zeros_.data();
}

void Predictor::read(int first, int count, double* eta, double* design) {
  std::fill_n(eta, count, 0.0);
  for (int j = 0; j < width_; j += kLanes) {
    const double* columns[kLanes];
    for (int lane = 0; lane < kLanes; ++lane) {
      columns[lane] = column(j + lane, first, count, scratch_.data() + lane * blockRows_);
    }
    addColumns(columns, betas_.data() + j, count, eta);
    if (design != nullptr) layRows(columns, count, design + j, width_);
  }
}

}  // namespace survival::param
