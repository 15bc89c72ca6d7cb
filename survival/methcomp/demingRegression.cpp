// Deming regression: descriptive statistics, the line, its jackknife and the linearity test.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "numerics/elementary.h"
#include "numerics/hot.h"
#include "survival/methcomp/cusum.h"
#include "survival/methcomp/deming.h"
#include "survival/methcomp/methcomp.h"

namespace numerics = survmeth::numerics;

namespace {

using survival::Line;

enum ReplicateMode { kMeans = 1, kFirsts = 2, kFirstAndMean = 3 };  // others: mean x and first y

std::vector<double> column(const matrix* m, int n) {
  std::vector<double> values;
  values.reserve(static_cast<std::size_t>(std::max(n, 0)));
  for (int i = 1; i <= n; ++i) values.push_back(m->vbget(i, 1));
  return values;
}

double pearson(const std::vector<double>& x, const std::vector<double>& y) {
  return V_PearsonRho(x.data(), y.data(), static_cast<int>(x.size()));
}

struct Range {
  double smallest = kInfinite;
  double largest = kMissing;
};

Range rangeOf(const std::vector<double>& values) {
  Range range;
  for (const double value : values) {
    if (value < range.smallest) range.smallest = value;
    if (value > range.largest) range.largest = value;
  }
  return range;
}

struct SubjectValues {
  std::vector<double> x;
  std::vector<double> y;
};

// One value of each method for each subject; rows of one subject stand together, and rows past
// the end do not count.
SubjectValues aggregate(const std::vector<double>& x, const std::vector<double>& y,
                        const std::vector<int>& counts, int mode) {
  SubjectValues values;
  const bool xFirst = mode == kFirsts || mode == kFirstAndMean;
  const bool yFirst = mode != kMeans && mode != kFirstAndMean;
  std::size_t row = 0;
  const auto valueOf = [&row](const std::vector<double>& rows, std::size_t count, bool first) {
    if (first) return row < rows.size() ? rows[row] : -1.0;
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) sum += rows[row + i];
    return sum / static_cast<double>(count);
  };
  for (const int wanted : counts) {
    const std::size_t count =
        std::min(static_cast<std::size_t>(std::max(wanted, 0)), x.size() - row);
    values.x.push_back(valueOf(x, count, xFirst));
    values.y.push_back(valueOf(y, count, yFirst));
    row += count;
  }
  return values;
}

// Lines without each subject in turn: its weight is 0.
std::vector<Line> leaveOneOut(const SubjectValues& subjects, double lambda) {
  const std::size_t m = subjects.x.size();
  std::vector<double> weights(m, 1.0);
  std::vector<Line> lines;
  lines.reserve(m);
  for (std::size_t j = 0; j < m; ++j) {
    weights[j] = 0.0;
    lines.push_back(
        survival::demingLine(subjects.x.data(), subjects.y.data(), weights.data(), m, lambda));
    weights[j] = 1.0;
  }
  return lines;
}

// The same of the reweighted estimator: each subject's rows are removed, so its divisor drops.
std::vector<Line> weightedLeaveOneOut(const SubjectValues& subjects, const std::vector<int>& counts,
                                      const std::vector<double>& x, const std::vector<double>& y,
                                      int maxIterations, double tolerance) {
  const std::size_t m = subjects.x.size();
  std::vector<survival::Subject> all = survival::withReplicateVariances(
      subjects.x, subjects.y, counts, x, y, static_cast<double>(m) - 2.0);
  std::vector<Line> lines;
  lines.reserve(m);
  std::vector<survival::Subject> others;
  others.reserve(m);
  for (std::size_t j = 0; j < m; ++j) {
    others.assign(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(j));
    others.insert(others.end(), all.begin() + static_cast<std::ptrdiff_t>(j) + 1, all.end());
    lines.push_back(survival::weightedDemingLine(others, maxIterations, tolerance));
  }
  return lines;
}

// Value and limits value -+ halfWidth of a jackknifed coefficient; kMissing without spread.
struct Interval {
  double lower;
  double upper;
};

Interval jackknifeInterval(double value, matrix* leftOut, int m, double t) {
  const double variance = V_Var2(leftOut, m, 0, 0);
  if (variance <= 0.0) return {kMissing, kMissing};
  const double halfWidth = t * sqr(variance * (m - 1.0));
  return {value - halfWidth, value + halfWidth};
}

// fits[j] := the line without subject j at the point whose error-free x follows from (x, y). The
// numerator keeps the full-data slope: the band's published form.
SURVMETH_HOT void leaveOneOutFits(double x, double y, double slope, double lambda,
                                  const Line* lines, std::size_t m, double* fits) {
  for (std::size_t j = 0; j < m; ++j) {
    const double a = lines[j].intercept;
    const double b = lines[j].slope;
    const double projected = x + ((y - a) - b * x) * slope / (b * b + lambda);
    fits[j] = a + b * projected;
  }
}

}  // namespace

int DemingRegression(matrix* xColumn, int n, matrix* yColumn, matrix* subjectIds,
                     short hasReplicates, int m, matrixInt* replicateCounts, int replicateMode,
                     short weighted, double alpha, double varianceRatio, double tolerance,
                     int maxIterations, double xPred1, double xPred2, double* intercept,
                     double* interceptLower, double* interceptUpper, double* slope,
                     double* slopeLower, double* slopeUpper, matrix* yMinusX, matrix* biasAndSe,
                     matrix* residuals, matrix* fitted, matrix* band, double* cusumMax,
                     double* cusumCritical, double* cusumPValue, double* pearsonR, double* xMin,
                     double* xMax, double* xMean, double* xSd, double* yMin, double* yMax,
                     double* yMean, double* ySd, double* maxAbsDiff, double* yPred1,
                     double* yPred1Lower, double* yPred1Upper, double* yPred2, double* yPred2Lower,
                     double* yPred2Upper, double* varA, double* varB, double* covAB) {
  std::vector<double> x = column(xColumn, n);
  std::vector<double> y = column(yColumn, n);

  *pearsonR = pearson(x, y);
  // Differences are written before the rows are sorted, in the caller's order.
  *maxAbsDiff = 0.0;
  for (int i = 1; i <= n; ++i) {
    const double difference = y[i - 1] - x[i - 1];
    yMinusX->vbset(i, 1, difference);
    if (std::fabs(difference) > *maxAbsDiff) *maxAbsDiff = std::fabs(difference);
  }
  const Range xRange = rangeOf(x);
  const Range yRange = rangeOf(y);
  *xMin = xRange.smallest;
  *xMax = xRange.largest;
  *yMin = yRange.smallest;
  *yMax = yRange.largest;
  *xMean = V_Mean2(xColumn, n);
  *yMean = V_Mean2(yColumn, n);
  *xSd = sqr(V_Var2(xColumn, n, 0, 0));
  *ySd = sqr(V_Var2(yColumn, n, 0, 0));

  SubjectValues subjects{x, y};
  std::vector<int> counts;
  if (hasReplicates == kTrue) {
    SortQ(xColumn, n, 1, 1, n, subjectIds, yColumn, 1, 0, kTrue);
    x = column(xColumn, n);
    y = column(yColumn, n);
    for (int i = 1; i <= m; ++i) counts.push_back(replicateCounts->vbget(i, 1));
    subjects = aggregate(x, y, counts, replicateMode);
  } else {
    m = std::max(n, 0);
    counts.assign(static_cast<std::size_t>(m), 1);
  }
  m = static_cast<int>(subjects.x.size());

  const bool reweighted = weighted == kTrue;
  const double lambda = 1.0 / varianceRatio;
  Line line;
  std::vector<Line> lines;
  if (reweighted) {
    line = survival::weightedDemingLine(
        survival::withReplicateVariances(subjects.x, subjects.y, counts, x, y, m - 1.0),
        maxIterations, tolerance);
    lines = weightedLeaveOneOut(subjects, counts, x, y, maxIterations, tolerance);
  } else {
    *pearsonR = pearson(subjects.x, subjects.y);
    const std::vector<double> ones(subjects.x.size(), 1.0);
    line = survival::demingLine(subjects.x.data(), subjects.y.data(), ones.data(),
                                subjects.x.size(), lambda);
    lines = leaveOneOut(subjects, lambda);
  }
  const double a = line.intercept;
  const double b = line.slope;
  *intercept = a;
  *slope = b;

  matrix distances(n, 1, 0);  // residuals, kept apart from an output that may be shorter
  matrix positions(n, 1, 0);
  const double distance = sqr(numerics::pow(b, -2.0) + 1.0);
  for (int i = 1; i <= n; ++i) {
    const double xi = x[i - 1];
    const double yi = y[i - 1];
    const double projected = xi + ((yi - a) - b * xi) * b / (b * b + lambda);
    const double fit = a + b * projected;
    fitted->vbset(i, 1, fit);
    residuals->vbset(i, 1, yi - fit);
    distances.vbset(i, 1, yi - fit);
    biasAndSe->vbset(i, 1, a + (b - 1.0) * xi);
    positions.vbset(i, 1, (yi + xi / b - a) / distance);
  }

  const double t = InvCDFStudent(1.0 - alpha / 2.0, m - 2.0);
  matrix leftOut(m, 1, 0);
  for (int j = 1; j <= m; ++j) leftOut.vbset(j, 1, lines[j - 1].intercept);
  const Interval interceptLimits = jackknifeInterval(a, &leftOut, m, t);
  *interceptLower = interceptLimits.lower;
  *interceptUpper = interceptLimits.upper;
  for (int j = 1; j <= m; ++j) leftOut.vbset(j, 1, lines[j - 1].slope);
  const Interval slopeLimits = jackknifeInterval(b, &leftOut, m, t);
  *slopeLower = slopeLimits.lower;
  *slopeUpper = slopeLimits.upper;

  // The band, the components and the standard errors exist for the unweighted line only; the
  // caller's components stay as they are otherwise, and the predictions use them.
  if (!reweighted) {
    double crossProduct = 0.0;
    for (int r = 1; r <= m; ++r) {
      crossProduct += (xColumn->vbget(r, 1) - *xMean) * (yColumn->vbget(r, 1) - *yMean);
    }
    const double c = crossProduct / m;
    const double xVariance = *xSd * *xSd;
    const double yVariance = *ySd * *ySd;
    const double unexplained = yVariance * xVariance - c * c;
    *varA = (1.0 / m) * (yVariance - 2.0 * b * std::fabs(c) + b * b * xVariance +
                         (*xMean * *xMean * (b * b) / (c * c)) * unexplained);
    *varB = (b * b / (c * c)) / m * (xVariance * yVariance - c * c);
    *covAB = -*varB * *xMean;

    // Rows of the sorted data, not subjects.
    for (int r = 1; r <= m; ++r) {
      const double xr = xColumn->vbget(r, 1);
      leaveOneOutFits(xr, yColumn->vbget(r, 1), b, lambda, lines.data(), lines.size(),
                      leftOut.data());
      const double halfWidth = t * sqr(V_Var2(&leftOut, m, kTrue, 0) * (m - 1.0));
      band->vbset(r, 1, fitted->vbget(r, 1) - halfWidth);
      band->vbset(r, 2, fitted->vbget(r, 1) + halfWidth);
      biasAndSe->vbset(r, 2, sqr(*varA + *varB * (xr * xr) + 2.0 * xr * *covAB));
    }
  }

  const auto predict = [&](double at, double* value, double* lower, double* upper) {
    *value = a + b * at;
    const double halfWidth = t * sqr(2.0 * *covAB * at + *varB * (at * at) + *varA);
    *lower = *value - halfWidth;
    *upper = *value + halfWidth;
  };
  predict(xPred1, yPred1, yPred1Lower, yPred1Upper);
  predict(xPred2, yPred2, yPred2Lower, yPred2Upper);

  survival::cusumTest(&distances, &positions, n, alpha, cusumMax, cusumCritical, cusumPValue);
  return 0;
}
