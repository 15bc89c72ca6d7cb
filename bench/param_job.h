// Data for the timings of the parametric models, and one evaluation of them.
#ifndef BENCH_PARAM_JOB_H_
#define BENCH_PARAM_JOB_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>

#include "Klikro/Klikro"
#include "bench/columns.h"
#include "survival/param/param.h"

namespace survmeth::bench {

// Weibull data: logarithms of times, three in ten right-censored, normal covariates.
struct ParamData {
  ParamData(int rows, int covariateCount)
      : n(rows),
        p(covariateCount),
        times(rows, 1, 0),
        status(rows, 1, 0),
        bounds(rows, 2, 0),
        covariates(rows, covariateCount, 0),
        weights(rows, 1, 1) {
    std::mt19937_64 random(11);
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> uniform;
    for (int j = 1; j <= p; ++j) {
      for (int i = 1; i <= n; ++i) covariates.vbset(i, j, normal(random));
    }
    for (int i = 1; i <= n; ++i) {
      double time = 1.0 + 0.8 * std::log(-std::log1p(-uniform(random)));
      for (int j = 1; j <= p; ++j) time += 0.1 * covariates.vbget(i, j);
      times.vbset(i, 1, time);
      status.vbset(i, 1, uniform(random) < 0.3 ? 0.0 : 1.0);
    }
  }

  // The raw columns time (its logarithm), status and the covariates.
  explicit ParamData(const Columns& columns)
      : n(static_cast<int>(columns[0].size())),
        p(static_cast<int>(columns.size()) - 2),
        times(n, 1, 0),
        status(n, 1, 0),
        bounds(n, 2, 0),
        covariates(n, p, 0),
        weights(n, 1, 1) {
    std::copy(columns[0].begin(), columns[0].end(), times.data());
    std::copy(columns[1].begin(), columns[1].end(), status.data());
    for (int j = 0; j < p; ++j) {
      std::copy(columns[j + 2].begin(), columns[j + 2].end(),
                covariates.data() + static_cast<std::size_t>(j) * n);
    }
  }

  int n;
  int p;
  matrix times;
  matrix status;
  matrix bounds;
  matrix covariates;
  matrix weights;
};

// Parameters near those the data were made with, and what an evaluation leaves.
struct ParamModel {
  ParamModel(const ParamData& data, int law)
      : distribution(law),
        k(law == 1 ? 1 : 2),
        parameters(data.p + k, 1, 0.1),
        gradient(data.p + k, 1, 0),
        hessian(data.p + k, data.p + k, 0) {
    parameters.vbset(data.p + 1, 1, 1.0);
    parameters.vbset(data.p + 2, 1, 0.8);
  }

  double value(ParamData& data) {
    ComputeLogLikeParam(&data.times, data.n, data.p, k, &data.status, &data.bounds,
                        &data.covariates, &parameters, &data.weights, distribution, &logLik);
    return logLik;
  }

  double valueAndDerivatives(ParamData& data) {
    ComputeLogLikeDerivativesParam(&data.times, data.n, data.p, k, &data.status, &data.bounds,
                                   &data.covariates, &parameters, &data.weights, distribution,
                                   &logLik, &gradient, &hessian);
    return logLik;
  }

  int distribution;
  int k;
  matrix parameters;
  matrix gradient;
  matrix hessian;
  double logLik = 0.0;
};

// A whole fit of the Weibull model.
struct ParamFit {
  explicit ParamFit(const ParamData& data)
      : m(data.p + 2),
        unused(m, 1, 0),
        gradient(m, 1, 0),
        hessian(m, m, 0),
        covariance(m, m, 0),
        gradient0(m, 1, 0),
        hessian0(m, m, 0),
        parameters(m, 1, 0) {}

  void run(ParamData& data) {
    constexpr int weibull = 2;
    OptimizeParamModel(&data.times, data.n, data.p, 2, &data.status, &data.bounds, &data.covariates,
                       &data.weights, &iterations, 1e-9, weibull, 0, &unused, 0, 0.0, &logLik,
                       &logLik0, &gradient, &hessian, &covariance, &gradient0, &hessian0,
                       &parameters);
  }

  // On the scale of the logarithm: the Jacobian of the events is taken out again.
  double logLikOfLogarithms(const ParamData& data) const {
    double value = logLik;
    for (int i = 1; i <= data.n; ++i) {
      if (data.status.vbget(i, 1) == 1.0) value += data.times.vbget(i, 1);
    }
    return value;
  }

  int m;
  matrix unused, gradient, hessian, covariance, gradient0, hessian0, parameters;
  int iterations = 100;
  double logLik = 0.0;
  double logLik0 = 0.0;
};

}  // namespace survmeth::bench

#endif  // BENCH_PARAM_JOB_H_
