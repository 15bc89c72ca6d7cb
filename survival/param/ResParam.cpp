// Residuals, fitted probabilities and predicted percentiles.
#include <algorithm>
#include <iterator>
#include <vector>

#include "Klikro/Klikro"
#include "numerics/elementary.h"
#include "survival/param/param.h"
#include "survival/param/predictor.h"

namespace numerics = survmeth::numerics;

namespace {

// ln(-ln P) at the survival probabilities P = .99 .95 .9 .75 .5 .25 .1 .05 .01, in the digits that
// the add-in's own tables show.
constexpr double kQuantiles[] = {-4.600149226776579,  -2.9701952490421637,  -2.2503673273124454,
                                 -1.2458993237072382, -0.36651292058166435, 0.32663425997828094,
                                 0.834032445247956,   1.0971887003649483,   1.5271796258079011};
constexpr int kQuantileCount = static_cast<int>(std::size(kQuantiles));

}  // namespace

void ResParam(matrix* times, int n, int p, int distribution, short logTimes, matrix* covariates,
              matrix* parameters, matrix* survivalOut, matrix* probabilitiesOut,
              matrix* residualsOut, matrix* quantilesOut) {
  using namespace survival::param;
  // Rows past the end of every output leave nothing.
  const int rows = std::min(n, std::max({survivalOut->count(), probabilitiesOut->count(),
                                         residualsOut->count(), quantilesOut->count()}));
  if (rows < 1) return;
  requireMatrix(rows, p);
  const Coefficients coefficients(parameters, p);
  // The log-normal law goes through the extreme-value formulas with scale 1 as well: what callers
  // keep with its fits was computed so.
  const double sigma =
      distribution == kWeibull && coefficients.sigma != 0.0 ? coefficients.sigma : 1.0;
  Predictor predictor(covariates, coefficients);
  const int limit = predictor.blockRows();
  std::vector<double> eta(limit);
  std::vector<double> scratch(limit);
  for (int first = 0; first < rows; first += std::min(limit, rows - first)) {
    const int count = std::min(limit, rows - first);
    const double* time = rowsOf(times, 1, first, count, scratch.data());
    predictor.read(first, count, eta.data(), nullptr);
    for (int i = 0; i < count; ++i) {
      const int row = first + i + 1;
      const double residual = (time[i] - eta[i]) / sigma;
      const double hazard = numerics::exp(residual);
      const double survival = numerics::exp(-hazard);
      residualsOut->vbset(row, 1, residual);
      survivalOut->vbset(row, 1, survival);
      probabilitiesOut->vbset(row, 1, 1.0 - survival);
      probabilitiesOut->vbset(row, 2, hazard * (1.0 / sigma) * survival);
      if (survival > 0.0) residualsOut->vbset(row, 2, -numerics::log(survival));
      for (int c = 0; c < kQuantileCount; ++c) {
        double value = eta[i] + sigma * kQuantiles[c];
        if (logTimes == kTrue) value = value >= kExpLimit ? kMissing : numerics::exp(value);
        quantilesOut->vbset(row, c + 1, value);
      }
    }
  }
}
