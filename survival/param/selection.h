// The fits of a stepwise selection: one model after another with the same options.
#ifndef SURVIVAL_PARAM_SELECTION_H_
#define SURVIVAL_PARAM_SELECTION_H_

#include "survival/param/model.h"
#include "survival/param/param.h"

namespace survival::param {

// What every fit of a selection shares, and where its results go.
struct Selection {
  Model model;  // p and covariates are those of the whole data
  int limit;    // step limit of every fit
  double tolerance;
  short useInitialValues;
  matrix* initialValues;
  short fixIntercept;
  double interceptValue;
  double* logLik;
  double* logLik0;
  matrix* hessian;
  matrix* covariance;
  matrix* gradient0;
  matrix* hessian0;

  // Fits the model of the first p columns of `covariates`. `steps` becomes the steps made, or the
  // limit where the fit failed: a selection goes on with what a failed fit left. The gradient is
  // reshaped to the model, the other matrices keep their shape.
  void fit(int p, matrix* covariates, matrix* parameters, matrix* gradient, int* steps) const {
    *steps = limit;
    OptimizeParamModel(model.times, model.n, p, model.k, model.status, model.bounds, covariates,
                       model.weights, steps, tolerance, model.distribution, useInitialValues,
                       initialValues, fixIntercept, interceptValue, logLik, logLik0, gradient,
                       hessian, covariance, gradient0, hessian0, parameters);
  }
};

}  // namespace survival::param

#endif  // SURVIVAL_PARAM_SELECTION_H_
