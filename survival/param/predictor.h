// The design rows and the linear predictor of a model.
#ifndef SURVIVAL_PARAM_PREDICTOR_H_
#define SURVIVAL_PARAM_PREDICTOR_H_

#include <vector>

#include "survival/param/model.h"

namespace survival::param {

// The parameters by name, read once.
struct Coefficients {
  Coefficients(const matrix* parameters, int p);
  int count() const { return static_cast<int>(beta.size()); }

  std::vector<double> beta;
  double intercept;
  double sigma;  // what stands after the intercept, whether or not the law has a scale
};

// Walks through the covariates a few rows at a time.
class Predictor {
 public:
  // Both arguments must outlive the predictor.
  Predictor(const matrix* covariates, const Coefficients& coefficients);

  // Rows handled together: few enough that their design stays in a near cache.
  int blockRows() const { return blockRows_; }

  // Columns of a design row: the covariates, the ones of the intercept, zeros up to whole lanes.
  int width() const { return width_; }

  // For rows first .. first + count - 1 (from 0): eta[count] := covariates * beta + intercept,
  // summed in the order of the columns, and design[count * width], unless null, the design row
  // after row.
  void read(int first, int count, double* eta, double* design);

 private:
  const double* column(int j, int first, int count, double* scratch) const;

  const matrix* covariates_;
  const Coefficients& coefficients_;
  int width_;
  int blockRows_;
  std::vector<double> betas_;  // of the design columns
  std::vector<double> ones_;
  std::vector<double> zeros_;
  std::vector<double> scratch_;
};

}  // namespace survival::param

#endif  // SURVIVAL_PARAM_PREDICTOR_H_
