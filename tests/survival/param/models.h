// Small parametric models, and the routines run on them.
#ifndef TESTS_SURVIVAL_PARAM_MODELS_H_
#define TESTS_SURVIVAL_PARAM_MODELS_H_

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "Klikro/Klikro"
#include "survival/param/param.h"
#include "tests/support/csv.h"
#include "tests/support/matrices.h"

namespace survmeth::test {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();
inline constexpr int kExponential = 1;
inline constexpr int kWeibull = 2;
inline constexpr int kLogNormal = 3;
inline constexpr double kEvent = 1.0;
inline constexpr double kRight = 0.0;
inline constexpr double kLeft = 2.0;
inline constexpr double kInterval = 3.0;

// One observation; the bounds matter for interval-censored ones.
struct Observation {
  double status = kEvent;
  double time = 0.0;
  double weight = 1.0;
  double lower = 0.0;
  double upper = 0.0;
  std::vector<double> covariates = {};
};

// The matrices of a model, and the routines that take them.
class Model {
 public:
  Model(int law, const std::vector<Observation>& rows)
      : distribution(law),
        n(static_cast<int>(rows.size())),
        p(rows.empty() ? 0 : static_cast<int>(rows.front().covariates.size())),
        k(law == kWeibull || law == kLogNormal ? 2 : 1),
        times(n, 1, 0),
        status(n, 1, 0),
        bounds(n, 2, 0),
        covariates(n, std::max(p, 1), 0),
        weights(n, 1, 0) {
    for (int i = 1; i <= n; ++i) {
      const Observation& row = rows[static_cast<std::size_t>(i) - 1];
      times.vbset(i, 1, row.time);
      status.vbset(i, 1, row.status);
      bounds.vbset(i, 1, row.lower);
      bounds.vbset(i, 2, row.upper);
      weights.vbset(i, 1, row.weight);
      for (int j = 1; j <= p; ++j) covariates.vbset(i, j, row.covariates[j - 1]);
    }
  }

  int m() const { return p + k; }

  double logLik(std::vector<double> parameters) {
    Column theta(parameters);
    double value = 777.0;
    ComputeLogLikeParam(&times, n, p, k, &status, &bounds, &covariates, &theta, &weights,
                        distribution, &value);
    return value;
  }

  // Gradient, then the second derivatives column by column.
  std::vector<double> derivatives(std::vector<double> parameters) {
    Column theta(parameters);
    matrix gradient(m(), 1, 777);
    matrix hessian(m(), m(), 777);
    ComputeDerivativesParam(&times, n, p, k, &status, &bounds, &covariates, &theta, &weights,
                            distribution, &gradient, &hessian);
    std::vector<double> all = elements(gradient);
    const std::vector<double> second = elements(hessian);
    all.insert(all.end(), second.begin(), second.end());
    return all;
  }

  int distribution;
  int n;
  int p;
  int k;
  matrix times;
  matrix status;
  matrix bounds;
  matrix covariates;
  matrix weights;
};

// Everything that a fit takes and leaves.
struct Fit {
  explicit Fit(const Model& model)
      : initialValues(model.m(), 1, 0),
        gradient(model.m(), 1, 0),
        hessian(model.m(), model.m(), 0),
        covariance(model.m(), model.m(), 0),
        gradient0(model.m(), 1, 0),
        hessian0(model.m(), model.m(), 0),
        parameters(model.m(), 1, 0) {}

  int run(Model& model) {
    return OptimizeParamModel(&model.times, model.n, model.p, model.k, &model.status, &model.bounds,
                              &model.covariates, &model.weights, &iterations, tolerance,
                              model.distribution, useInitialValues, &initialValues, fixIntercept,
                              interceptValue, &logLik, &logLik0, &gradient, &hessian, &covariance,
                              &gradient0, &hessian0, &parameters);
  }

  void startAt(const std::vector<double>& values) {
    useInitialValues = kTrue;
    for (std::size_t r = 0; r < values.size(); ++r) {
      initialValues.vbset(static_cast<int>(r) + 1, 1, values[r]);
    }
  }

  std::vector<double> estimates() const { return elements(parameters); }

  int iterations = 100;
  double tolerance = 1e-10;
  short useInitialValues = 0;
  short fixIntercept = 0;
  double interceptValue = 0.0;
  double logLik = 777.0;
  double logLik0 = 777.0;
  matrix initialValues;
  matrix gradient;
  matrix hessian;
  matrix covariance;
  matrix gradient0;
  matrix hessian0;
  matrix parameters;
};

// The veteran data with the named columns as covariates, times as logarithms.
inline std::vector<Observation> veteran(const std::vector<std::string>& covariates = {"karno",
                                                                                      "age"}) {
  const Csv table(SURVMETH_DATA "/veteran.csv");
  std::vector<Observation> rows;
  for (std::size_t i = 0; i < table.rows(); ++i) {
    Observation row{table.number("status", i), std::log(table.number("time", i))};
    for (const std::string& name : covariates) row.covariates.push_back(table.number(name, i));
    rows.push_back(row);
  }
  return rows;
}

}  // namespace survmeth::test

#endif  // TESTS_SURVIVAL_PARAM_MODELS_H_
