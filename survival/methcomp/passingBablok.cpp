// Passing-Bablok regression.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "numerics/hot.h"
#include "survival/methcomp/cusum.h"
#include "survival/methcomp/methcomp.h"
#include "survival/methcomp/orderStatistics.h"

namespace {

// Values closer than this are tied, and a slope closer than this to -1 is -1.
constexpr double kTie = 1e-12;

// Later pairs are not looked at: callers with long columns count on the bounded time and memory.
constexpr double kMaxPairs = 2000000;

// slopes[j] of the line from (x0, y0) to each of x[count], y[count], NaN replaced by 0 where the
// pair is dropped; kept[j] tells.
SURVMETH_HOT void slopesFrom(double x0, double y0, const double* x, const double* y,
                             std::size_t count, double* slopes, unsigned char* kept) {
  for (std::size_t j = 0; j < count; ++j) {
    const double dx = x0 - x[j];
    const double dy = y0 - y[j];
    const double slope = dy / dx;
    slopes[j] = slope;
    kept[j] = static_cast<unsigned char>((std::fabs(dx) > kTie) & (std::fabs(dy) > kTie) &
                                         !(std::fabs(slope + 1.0) <= kTie));
  }
}

// Slopes of the pairs (1, 2), (1, 3), ..., the first kMaxPairs of them, in that order.
std::vector<double> pairSlopes(const std::vector<double>& x, const std::vector<double>& y) {
  const double n = static_cast<double>(x.size());
  auto budget = static_cast<std::size_t>(Min(n * (n - 1.0) / 2.0, kMaxPairs));
  std::vector<double> slopes(budget);
  std::vector<double> row(std::min(x.size(), budget));
  std::vector<unsigned char> kept(row.size());
  std::size_t found = 0;
  for (std::size_t i = 0; budget > 0; ++i) {
    const std::size_t pairs = std::min(x.size() - i - 1, budget);
    slopesFrom(x[i], y[i], x.data() + i + 1, y.data() + i + 1, pairs, row.data(), kept.data());
    for (std::size_t j = 0; j < pairs; ++j) {
      slopes[found] = row[j];
      found += kept[j];
    }
    budget -= pairs;
  }
  slopes.resize(found);
  return slopes;
}

std::vector<double> column(const matrix* m, int n) {
  std::vector<double> values;
  values.reserve(static_cast<std::size_t>(std::max(n, 0)));
  for (int i = 1; i <= n; ++i) values.push_back(m->vbget(i, 1));
  return values;
}

// Median of y - slope x.
double medianIntercept(const std::vector<double>& x, const std::vector<double>& y, double slope) {
  const int n = static_cast<int>(x.size());
  matrix intercepts(n, 1, 0);
  for (int i = 0; i < n; ++i) intercepts.vbset(i + 1, 1, y[i] - slope * x[i]);
  return V_Quantile(&intercepts, n, 0.5);
}

}  // namespace

int PassingBablok(matrix* xColumn, int n, matrix* yColumn, double alpha, double* intercept,
                  double* interceptLower, double* interceptUpper, double* slope, double* slopeLower,
                  double* slopeUpper, matrix* residuals, matrix* yMinusX, matrix* perpDistances,
                  matrix* fitted, double* cusumMax, double* cusumCritical, double* cusumPValue) {
  const std::vector<double> x = column(xColumn, n);
  const std::vector<double> y = column(yColumn, n);

  // K: how many slopes come before the first above -1. Positions past the list read as -1, which
  // callers take as "no line": nothing is clamped.
  const std::vector<double> slopes = pairSlopes(x, y);
  const survival::OrderStatistics sorted(slopes);
  const int N = static_cast<int>(slopes.size());
  const auto isAbove = [](double s) { return s > -1.0; };
  const long long K =
      std::any_of(slopes.begin(), slopes.end(), isAbove)
          ? std::count_if(slopes.begin(), slopes.end(), [](double s) { return s < -1.0; })
          : N;
  const double b = IsEven(N) != 0 ? (sorted.at(N / 2 + K) + sorted.at(N / 2 + K + 1)) / 2.0
                                  : sorted.at((N + 1) / 2 + K);
  const double pairs = static_cast<double>(static_cast<long long>(n) * (n - 1LL));
  const double W = InvCDFNormalStd(1.0 - alpha / 2.0) * sqr(2.0 * n + 5.0) * sqr(pairs / 18.0);
  const long long M1 = truncated(std::floor((N - W) / 2.0 + 0.5));
  const long long M2 = N - M1 + 1;
  *slope = b;
  *slopeLower = sorted.at(std::max(1LL, M1 + K));
  *slopeUpper = sorted.at(M2 + K);

  const double a = medianIntercept(x, y, b);
  *intercept = a;
  *interceptLower = medianIntercept(x, y, *slopeUpper);
  *interceptUpper = medianIntercept(x, y, *slopeLower);

  matrix distances(n, 1, 0);  // residuals, kept apart from an output that may be shorter
  matrix positions(n, 1, 0);
  for (int i = 1; i <= n; ++i) {
    const double xi = x[i - 1];
    const double yi = y[i - 1];
    const double line = a + b * xi;
    const double residual = yi - line;
    const double position = (yi + xi / b - a) / sqr(1.0 / (b * b) + 1.0);
    distances.vbset(i, 1, residual);
    positions.vbset(i, 1, position);
    fitted->vbset(i, 1, line);
    residuals->vbset(i, 1, residual);
    yMinusX->vbset(i, 1, yi - xi);
    perpDistances->vbset(
        i, 1,
        std::fabs(residual) <= survival::kOnLine
            ? 0.0
            : FSgn(residual) * sqr((yi - a) * (yi - a) + xi * xi - position * position));
  }
  survival::cusumTest(&distances, &positions, n, alpha, cusumMax, cusumCritical, cusumPValue);
  return 0;
}
