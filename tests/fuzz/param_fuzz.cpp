// Fuzz target of the parametric family.
#include <algorithm>

#include "survival/calls/param.h"
#include "tests/fuzz/fuzz.h"

namespace survmeth::fuzz {
namespace {

// Counts, law and options, then the observations.
struct Model {
  Model(Input& in, Arrays& a) {
    n = in.count(24);
    p = in.count(4);
    distribution = in.integer(1, 3);
    k = in.byte() < 224 ? (distribution == 1 ? 1 : 2) : in.count(4);
    m = std::max(p + k, 0);
    useInitial = in.flag();
    fixIntercept = in.flag();
    limit = in.limit();
    // A selection among many covariates makes many fits.
    if (p > 2) limit = limit > 0 ? std::min(limit, 40) : 40;
    tolerance = in.tolerance();
    intercept = in.number();
    times = a.in(in.column(n, Likely::kTimes));
    status = a.in(in.column(n, in.byte() < 128 ? Likely::kStatus : Likely::kCodes));
    bounds = a.in(in.column(2 * n, Likely::kTimes));
    covariateValues = in.column(std::max(n, 0) * std::max(p, 1), Likely::kReal);
    weights = a.in(in.column(n, Likely::kOnes));
    parameters = in.column(m, Likely::kProbabilities);
  }

  int n, p, k, m, distribution, limit;
  short useInitial, fixIntercept;
  double tolerance, intercept;
  double *times, *status, *bounds, *weights;
  std::vector<double> covariateValues, parameters;
};

// What a fit gives back.
struct Fit {
  Fit(Arrays& a, int m, int covarianceColumns)
      : parameters(a.out(m)),
        logLik(a.out()),
        logLik0(a.out()),
        gradient(a.out(m)),
        hessian(a.out(1LL * m * m)),
        covariance(a.out(1LL * m * covarianceColumns)),
        gradient0(a.out(m)),
        hessian0(a.out(1LL * m * m)) {}
  double *parameters, *logLik, *logLik0, *gradient, *hessian, *covariance, *gradient0, *hessian0;
};

Call derivatives(Input& in, Arrays& a) {
  const Model d(in, a);
  double *x = a.in(d.covariateValues), *at = a.in(d.parameters), *logLik = a.out(),
         *gradient = a.out(d.m), *hessian = a.out(1LL * d.m * d.m);
  return [=] {
    Cpp_ComputeLogLikeDerivativesParam(d.times, d.n, d.p, d.k, d.status, d.bounds, x, at, d.weights,
                                       d.distribution, logLik, gradient, hessian);
    return Outcome{};
  };
}

Call optimize(Input& in, Arrays& a) {
  const Model d(in, a);
  const Fit f(a, d.m, 1);
  double *x = a.in(d.covariateValues), *initial = a.in(d.parameters);
  int* iterations = a.inOut(std::vector<int>{d.limit});
  return [=] {
    const int code = Cpp_OptimizeParamModel(
        d.times, d.n, d.p, d.k, d.status, d.bounds, x, d.weights, iterations, d.tolerance,
        d.distribution, d.useInitial, initial, d.fixIntercept, d.intercept, f.logLik, f.logLik0,
        f.gradient, f.hessian, f.covariance, f.gradient0, f.hessian0, f.parameters);
    if (code == 0) requireWithin(*iterations, d.limit);
    require(code == 0 || *iterations == d.limit, "a failed fit leaves its limit");
    return coded(code, {0, -2});
  };
}

// Both selections: the backward one where `forward` is not set.
Call selection(Input& in, Arrays& a, bool forward) {
  const Model d(in, a);
  const int option = in.integer(0, 1);
  const double threshold = in.alpha();
  const Fit f(a, d.m, d.m);
  const int q = std::max(d.p, 1);
  double *x = a.inOut(d.covariateValues), *initial = a.in(d.parameters), *steps = a.out(3LL * q);
  int *iterations = a.inOut(std::vector<int>{d.limit}), *kept = a.inOut(std::vector<int>{d.p}),
      *count = a.outInts(), *order = a.outInts(q);
  return [=] {
    const int code =
        forward ? Cpp_Param_ForSelection(d.times, d.n, kept, d.k, d.status, d.bounds, x, d.weights,
                                         iterations, d.tolerance, d.distribution, d.useInitial,
                                         initial, d.fixIntercept, d.intercept, threshold,
                                         f.parameters, f.logLik, f.logLik0, f.gradient, f.hessian,
                                         f.covariance, f.gradient0, f.hessian0, steps, count, order)
                : Cpp_Param_BackSelection(
                      d.times, d.n, kept, d.k, d.status, d.bounds, x, d.weights, iterations,
                      d.tolerance, d.distribution, d.useInitial, initial, d.fixIntercept,
                      d.intercept, option, threshold, f.parameters, f.logLik, f.logLik0, f.gradient,
                      f.hessian, f.covariance, f.gradient0, f.hessian0, steps, count, order);
    requireWithin(*iterations, d.limit);
    require(*kept <= std::max(d.p, 0), "no more covariates than were passed");
    return coded(code, {0});
  };
}

Call backward(Input& in, Arrays& a) { return selection(in, a, false); }
Call forward(Input& in, Arrays& a) { return selection(in, a, true); }

Call criteria(Input& in, Arrays& a) {
  const int n = in.integer(1, 40), p = in.count(4), k = in.count(4), iterations = in.integer(1, 9);
  const int m = std::max(p + k, 0);
  const double logLik = in.number(), logLik0 = in.number(), alpha = in.alpha();
  double *parameters = a.in(in.column(m, Likely::kReal)),
         *hessian = a.in(in.column(m * m, Likely::kReal)),
         *covariance = a.in(in.column(m, Likely::kReal)), *z = a.out(),
         *gradient0 = a.in(in.column(m, Likely::kReal)),
         *hessian0 = a.in(in.column(m * m, Likely::kReal)), *statistics = a.out(14),
         *table = a.out(9LL * m), *tests = a.out(9);
  return [=] {
    Cpp_ComputeCritParam(n, p, k, logLik, logLik0, iterations, alpha, parameters, hessian,
                         covariance, z, gradient0, hessian0, statistics, table, tests);
    return Outcome{};
  };
}

Call residuals(Input& in, Arrays& a) {
  const Model d(in, a);
  const short logTimes = in.flag();
  double *x = a.in(d.covariateValues), *parameters = a.in(d.parameters), *survival = a.out(d.n),
         *probabilities = a.out(2LL * d.n), *values = a.out(d.n), *quantiles = a.out(9LL * d.n);
  return [=] {
    Cpp_ResParam(d.times, d.n, d.p, d.k, d.distribution, logTimes, x, parameters, survival,
                 probabilities, values, quantiles);
    return Outcome{};
  };
}

Call run(Input& in, Arrays& a) {
  const Model d(in, a);
  const short logTimes = in.flag(), noCovariates = in.flag();
  const int method = in.integer(-1, 1), option = in.integer(0, 1);
  const double enter = in.alpha(), leave = in.alpha(), alpha = in.alpha();
  const int q = std::max(d.p, 1);
  double *x = a.in(d.covariateValues), *initial = a.in(d.parameters), *parameters = a.out(d.m),
         *statistics = a.out(14), *tests = a.out(9), *table = a.out(9LL * d.m),
         *survival = a.out(d.n), *values = a.out(2LL * d.n), *probabilities = a.out(2LL * d.n),
         *quantiles = a.out(9LL * d.n), *steps = a.out(3LL * q);
  int *kept = a.outInts(), *count = a.outInts(), *order = a.outInts(q);
  return [=] {
    return coded(Cpp_RunParamReg(d.times, d.n, d.p, kept, d.k, d.status, d.bounds, x, d.weights,
                                 d.limit, d.tolerance, logTimes, d.distribution, noCovariates,
                                 method, option, enter, leave, alpha, 9, d.useInitial, initial,
                                 d.fixIntercept, d.intercept, parameters, statistics, tests, table,
                                 survival, values, probabilities, quantiles, steps, count, order),
                 {0, -1, -5});
  };
}

}  // namespace

const std::vector<Prepare> kEntries = {derivatives, optimize,  backward, forward,
                                       criteria,    residuals, run,      run};

}  // namespace survmeth::fuzz
