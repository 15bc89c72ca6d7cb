// One half of param_against_r.sh: makes the data, or times one evaluation of the Weibull model.
//
//   param_against_r make ROWS COVARIATES FILE   writes the columns time (its logarithm), status and
//                                               the covariates as doubles, one after the other
//   param_against_r run ROWS COVARIATES         prints the processor seconds of one log-likelihood
//                                               with derivatives (the shortest of ten), and the
//                                               log-likelihood of the fitted model
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "bench/param_job.h"

namespace {

using survmeth::bench::ParamData;
using survmeth::bench::ParamModel;

int make(int rows, int covariates, const char* path) {
  const ParamData data(rows, covariates);
  std::FILE* file = std::fopen(path, "wb");
  if (file == nullptr) return 1;
  bool written = true;
  for (const matrix* block : {&data.times, &data.status, &data.covariates}) {
    const auto count = static_cast<std::size_t>(block->count());
    written = written && std::fwrite(block->data(), sizeof(double), count, file) == count;
  }
  return std::fclose(file) == 0 && written ? 0 : 1;
}

// On the scale of the logarithm: the Jacobian of the events is taken out again.
double fittedLogLik(ParamData& data) {
  constexpr int weibull = 2;
  const int m = data.p + 2;
  matrix unused(m, 1, 0), gradient(m, 1, 0), hessian(m, m, 0), covariance(m, m, 0);
  matrix gradient0(m, 1, 0), hessian0(m, m, 0), parameters(m, 1, 0);
  int iterations = 100;
  double logLik = 0.0, logLik0 = 0.0;
  OptimizeParamModel(&data.times, data.n, data.p, 2, &data.status, &data.bounds, &data.covariates,
                     &data.weights, &iterations, 1e-9, weibull, 0, &unused, 0, 0.0, &logLik,
                     &logLik0, &gradient, &hessian, &covariance, &gradient0, &hessian0,
                     &parameters);
  for (int i = 1; i <= data.n; ++i) {
    if (data.status.vbget(i, 1) == 1.0) logLik += data.times.vbget(i, 1);
  }
  return logLik;
}

int run(int rows, int covariates) {
  ParamData data(rows, covariates);
  ParamModel model(data, 2);
  double best = 0.0;
  constexpr int repetitions = 10;
  for (int k = 0; k < repetitions; ++k) {
    const std::clock_t start = std::clock();
    model.valueAndDerivatives(data);
    const double taken = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    best = k == 0 ? taken : std::min(best, taken);
  }
  std::printf("%.6f %.15g\n", best, fittedLogLik(data));
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 3 ? argv[1] : "";
  const int rows = argc > 3 ? std::atoi(argv[2]) : 0;
  const int covariates = argc > 3 ? std::atoi(argv[3]) : 0;
  if (rows > 0 && covariates > 0) {
    if (what == "make" && argc == 5) return make(rows, covariates, argv[4]);
    if (what == "run" && argc == 4) return run(rows, covariates);
  }
  std::fprintf(stderr, "usage: param_against_r make ROWS COVARIATES FILE | run ROWS COVARIATES\n");
  return 2;
}
