// Summary of the statistics of B bootstrap samples.
#include <algorithm>
#include <cstddef>
#include <vector>

#include "Klikro/Klikro"
#include "survival/validation/validation.h"

namespace {

constexpr int kStatistics = 5;

// Columns of the summary.
enum Column { kMean = 1, kVariance, kLower, kUpper };

// Adds to the summary's cell what it holds already: callers pass zeros. Every sample counts in the
// divisor, also where its statistic is missing; callers know the mean as pulled towards 0 then.
void addMean(const matrix* statistics, int B, int c, matrix* summary) {
  double sum = summary->vbget(c, kMean);
  for (int b = 1; b <= B; ++b) {
    const double value = statistics->vbget(b, c);
    if (!isMissing(value)) sum += value;
  }
  summary->vbset(c, kMean, sum / B);
}

void addVariance(const matrix* statistics, int B, int c, matrix* summary) {
  const double mean = summary->vbget(c, kMean);
  double sum = summary->vbget(c, kVariance);
  for (int b = 1; b <= B; ++b) {
    const double value = statistics->vbget(b, c);
    if (!isMissing(value)) sum += (value - mean) * (value - mean);
  }
  summary->vbset(c, kVariance, sum / (static_cast<double>(B) - 1.0));
}

}  // namespace

int ComputeBootOut(int B, double alpha, matrix* statistics, matrix* summary) {
  for (int c = 1; c <= kStatistics; ++c) addMean(statistics, B, c, summary);
  for (int c = 1; c <= kStatistics; ++c) addVariance(statistics, B, c, summary);

  const int samples = std::max(B, 0);
  matrix values(samples, 1, 0);
  std::vector<short> skip(static_cast<std::size_t>(samples));
  for (int c = 1; c <= kStatistics; ++c) {
    M_ExtractMatToMatByColDbl(statistics, samples, c, c, &values);
    InitVectorToFalse(skip.data(), samples);
    for (int b = 1; b <= samples; ++b) {
      if (isMissing(values.vbget(b, 1))) skip[b - 1] = kTrue;
    }
    summary->vbset(c, kLower, V_QuantileM(&values, samples, skip.data(), alpha * 0.5));
    summary->vbset(c, kUpper, V_QuantileM(&values, samples, skip.data(), 1.0 - alpha * 0.5));
  }
  return 0;
}
