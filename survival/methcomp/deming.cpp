// The two Deming estimators.
#include "survival/methcomp/deming.h"

#include <algorithm>
#include <cmath>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "survival/methcomp/methcomp.h"

namespace survival {

Line demingLine(const double* x, const double* y, const double* w, std::size_t m, double lambda) {
  double weight = 0.0;
  double xSum = 0.0;
  double ySum = 0.0;
  for (std::size_t i = 0; i < m; ++i) {
    weight += w[i];
    xSum += w[i] * x[i];
    ySum += w[i] * y[i];
  }
  const double xMean = xSum / weight;
  const double yMean = ySum / weight;
  double xx = 0.0;
  double yy = 0.0;
  double xy = 0.0;
  for (std::size_t i = 0; i < m; ++i) {
    const double dx = x[i] - xMean;
    const double dy = y[i] - yMean;
    xx += w[i] * (dx * dx);
    yy += w[i] * (dy * dy);
    xy += w[i] * dx * dy;
  }
  const double difference = yy - lambda * xx;
  const double slope =
      (difference + sqr(difference * difference + 4.0 * lambda * (xy * xy))) / (2.0 * xy);
  return {yMean - slope * xMean, slope};
}

std::vector<Subject> withReplicateVariances(const std::vector<double>& xs,
                                            const std::vector<double>& ys,
                                            const std::vector<int>& counts,
                                            const std::vector<double>& xRep,
                                            const std::vector<double>& yRep, double divisor) {
  std::vector<Subject> subjects;
  subjects.reserve(xs.size());
  std::size_t row = 0;
  const auto squares = [](const double* values, std::size_t count) {
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) sum += values[i];
    const double mean = sum / static_cast<double>(count);
    double total = 0.0;
    for (std::size_t i = 0; i < count; ++i) total += (values[i] - mean) * (values[i] - mean);
    return total;
  };
  for (std::size_t i = 0; i < xs.size(); ++i) {
    const std::size_t count =
        std::min(static_cast<std::size_t>(std::max(counts[i], 0)), xRep.size() - row);
    subjects.push_back({xs[i], ys[i], squares(xRep.data() + row, count) / divisor,
                        squares(yRep.data() + row, count) / divisor});
    row += count;
  }
  return subjects;
}

Line weightedDemingLine(const std::vector<Subject>& subjects, int maxIterations, double tolerance) {
  std::vector<double> weights(subjects.size(), 0.0);
  Line line;
  for (int iteration = 0; iteration < maxIterations; ++iteration) {
    double weight = 0.0;
    double xSum = 0.0;
    double ySum = 0.0;
    for (std::size_t i = 0; i < subjects.size(); ++i) {
      const Subject& s = subjects[i];
      const double denominator = s.yVariance + line.slope * line.slope * s.xVariance;
      // A subject without any variance keeps the weight it had, 0 at first.
      if (denominator != 0.0) weights[i] = 1.0 / denominator;
      weight += weights[i];
      xSum += weights[i] * s.x;
      ySum += weights[i] * s.y;
    }
    const double xMean = weight == 0.0 ? 0.0 : xSum / weight;
    const double yMean = weight == 0.0 ? 0.0 : ySum / weight;
    double numerator = 0.0;
    double denominator = 0.0;
    for (std::size_t i = 0; i < subjects.size(); ++i) {
      const Subject& s = subjects[i];
      const double u = s.x - xMean;
      const double v = s.y - yMean;
      const double t = weights[i] * (line.slope * s.xVariance * v + s.yVariance * u);
      numerator += weights[i] * t * v;
      denominator += weights[i] * t * u;
    }
    const double previous = line.slope;
    line.slope = denominator == 0.0 ? 0.0 : numerator / denominator;
    line.intercept = yMean - line.slope * xMean;
    if (std::fabs(line.slope - previous) < tolerance) break;
    // Once it is not a number it stays so: the remaining iterations would change nothing.
    if (std::isnan(line.slope) && std::isnan(previous)) break;
  }
  return line;
}

}  // namespace survival

int Deming(matrix* x, matrix* y, matrix* w, int m, double lambda, double* a, double* b) {
  std::vector<double> values[3];
  for (int i = 1; i <= m; ++i) {
    values[0].push_back(x->vbget(i, 1));
    values[1].push_back(y->vbget(i, 1));
    values[2].push_back(w->vbget(i, 1));
  }
  const survival::Line line = survival::demingLine(values[0].data(), values[1].data(),
                                                   values[2].data(), values[0].size(), lambda);
  *a = line.intercept;
  *b = line.slope;
  return 0;
}

int WeightedDeming(matrix* xs, matrix* ys, int m, matrixInt* counts, matrix* xRep, matrix* yRep,
                   int maxIterations, double tolerance, double* a, double* b) {
  std::vector<double> x;
  std::vector<double> y;
  std::vector<int> rows;
  for (int i = 1; i <= m; ++i) {
    x.push_back(xs->vbget(i, 1));
    y.push_back(ys->vbget(i, 1));
    rows.push_back(counts->vbget(i, 1));
  }
  const int replicates = std::min({xRep->rows(), yRep->rows(), xRep->count(), yRep->count()});
  const std::vector<double> xRows(xRep->data(), xRep->data() + replicates);
  const std::vector<double> yRows(yRep->data(), yRep->data() + replicates);
  // The divisor counts subjects, not replicates: published fits of the add-in's users rest on it.
  const survival::Line line = survival::weightedDemingLine(
      survival::withReplicateVariances(x, y, rows, xRows, yRows, m - 1.0), maxIterations,
      tolerance);
  *a = line.intercept;
  *b = line.slope;
  return 0;
}
