// Cusum test of linearity.
#include "survival/methcomp/cusum.h"

#include <cmath>

#include "Dist/Dist"
#include "Klikro/Klikro"

namespace survival {
namespace {

// How far the upper tail of Kolmogorov's law at h lies above alpha.
double excess(double h, double alpha) { return 1.0 - CDFKolmogorov(h) - alpha; }

// The h whose upper tail is alpha, by the steps of the search; the first h they try where alpha is
// not a number. It has no end for an alpha below 0 or above 1.
double kolmogorovCritical(double alpha) {
  // Published to these digits; callers compare with the printed tables.
  if (alpha == 0.01) return 1.62762361151;
  if (alpha == 0.05) return 1.35809863932;
  if (alpha == 0.1) return 1.2238478702091;

  constexpr double tolerance = 1e-12;
  double lo = 1.0;
  while (excess(lo, alpha) < 0.0) lo /= 2.0;
  if (!(excess(lo, alpha) > tolerance)) return lo;
  double hi = 4.0;
  while (excess(hi, alpha) > 0.0) hi *= 2.0;
  for (;;) {
    const double mid = (lo + hi) / 2.0;
    const double difference = excess(mid, alpha);
    (difference >= 0.0 ? lo : hi) = mid;
    if (std::fabs(difference) < tolerance) return mid;
  }
}

}  // namespace

void cusumTest(matrix* residuals, matrix* positions, int n, double alpha, double* cusumMax,
               double* cusumCritical, double* cusumPValue) {
  int above = 0;
  int below = 0;
  for (int i = 1; i <= n; ++i) {
    if (residuals->vbget(i, 1) > kOnLine) ++above;
    if (residuals->vbget(i, 1) < -kOnLine) ++below;
  }

  // Scores that sum to 0 over the two sides of the line.
  matrix scores(n, 1, 0);
  const double up = sqr(static_cast<double>(below) / above);
  const double down = -sqr(static_cast<double>(above) / below);
  for (int i = 1; i <= n; ++i) {
    if (residuals->vbget(i, 1) > kOnLine) scores.vbset(i, 1, up);
    if (residuals->vbget(i, 1) < -kOnLine) scores.vbset(i, 1, down);
  }
  SortQ(&scores, n, 1, 1, n, positions, nullptr, 0, 0, 0);

  double sum = 0.0;
  for (int i = 1; i <= n; ++i) {
    sum += scores.vbget(i, 1);
    scores.vbset(i, 1, std::fabs(sum));
  }
  *cusumMax = V_Max2(&scores, n);

  const double scale = sqr(static_cast<double>(above) + below);
  *cusumPValue = 1.0 - CDFKolmogorov(*cusumMax / scale);
  *cusumCritical = alpha < 0.0 || alpha > 1.0 ? kMissing : kolmogorovCritical(alpha) * scale;
}

}  // namespace survival
