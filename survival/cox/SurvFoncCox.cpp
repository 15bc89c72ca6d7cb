// Breslow's baseline survival of a Cox model.
#include <algorithm>
#include <cmath>

#include "Klikro/Klikro"
#include "numerics/elementary.h"
#include "survival/cox/cox.h"
#include "survival/cox/strata.h"

namespace numerics = survmeth::numerics;

namespace {

// Linear predictor of the covariates' means over the whole data set.
double predictorOfMeans(int n, int q, const matrix* X, const matrix* beta) {
  // Past its end the matrix reads -1 throughout.
  const int reached = static_cast<int>(
      std::min<survival::cox::Row>(n, survival::cox::Row{X->count()} + survival::cox::kReach));
  double predictor = 0.0;
  for (int j = 1; j <= q; ++j) {
    double sum = 0.0;
    for (int i = 1; i <= reached; ++i) sum += X->vbget(i, j);
    predictor += sum / n * beta->vbget(j, 1);
  }
  return predictor;
}

}  // namespace

void SurvFoncCox(int n, int q, matrix* X, matrix* stratumSizes, int S, matrix* beta,
                 matrixInt* distinctTimes, matrixInt* groupStart, matrixInt* groupEvents, int,
                 matrix* baselineSurvival, matrix* meanSurvival) {
  using survival::cox::Group;
  q = survival::cox::coefficientsWithin(q, X, beta);
  const double mean = predictorOfMeans(n, q, X, beta);

  survival::cox::ReachedRows rows;
  survival::cox::GuardedRiskSums riskSums;
  survival::cox::Strata strata({stratumSizes, S, distinctTimes, groupStart, nullptr, groupEvents});
  while (strata.next()) {
    rows.load(strata, X, q, nullptr, beta);
    riskSums.load(rows, strata.groups(), 0);
    double hazard = 0.0;
    int k = 0;
    for (const Group& group : strata.groups()) {
      const double atRisk = riskSums.total(k);
      ++k;
      if (std::fabs(atRisk) > kEpsilon) hazard += group.events / atRisk;
      const double survival = numerics::exp(-hazard);
      baselineSurvival->vbset(strata.number(), k, survival);
      if (mean < survival::cox::kLargestPredictor) {
        meanSurvival->vbset(strata.number(), k, numerics::pow(survival, numerics::exp(mean)));
      }
    }
  }
}
