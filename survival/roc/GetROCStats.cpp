// Thirteen statistics of a 2 x 2 classification table, each with its interval.
#include "Dist/Dist"
#include "survival/roc/intervals.h"
#include "survival/roc/roc.h"

namespace {

using survival::roc::Bounds;
using survival::roc::IntervalOptions;

// Proportions, and products of proportions, at or below this are taken as zero.
constexpr double kTiny = 1e-12;

// Interval of a simple proportion. Code 0 is Wilson here and Wald for sensitivity and
// specificity: callers choose one code for the whole table and know both meanings.
Bounds proportionInterval(const IntervalOptions& options, double p, double m) {
  Bounds bounds{};
  if (options.method == 0) {
    GetInfSupWilson(options.z, p, m, options.continuity, &bounds.lower, &bounds.upper);
  } else {
    GetInfSupWald(options.z, p, m, &bounds.lower, &bounds.upper);
  }
  return bounds;
}

void setRow(matrix* stats, int row, double value, const Bounds& bounds) {
  stats->vbset(row, 1, value);
  stats->vbset(row, 2, bounds.lower);
  stats->vbset(row, 3, bounds.upper);
}

void setProportion(matrix* stats, int row, const IntervalOptions& options, double p, double m) {
  setRow(stats, row, p, proportionInterval(options, p, m));
}

// Interval of a ratio from the standard error s of its logarithm.
void setLogInterval(matrix* stats, int row, const IntervalOptions& options, double ratio,
                    double s) {
  Bounds bounds{};
  GetInfSupLog(options.z, ratio, s, &bounds.lower, &bounds.upper);
  setRow(stats, row, ratio, bounds);
}

// Rate `p` and its complement, both seen on m cases.
void setRateAndComplement(matrix* stats, int row, int complementRow, const IntervalOptions& options,
                          double p, double m) {
  setRow(stats, row, p, survival::roc::rateInterval(options, p, m));
  setProportion(stats, complementRow, options, 1.0 - p, survival::roc::intervalCases(options, m));
}

}  // namespace

int GetROCStats(matrix* table, double alpha, int ciMethod, short continuityCorrection,
                double prevalence, matrix* stats, matrix* proportions) {
  for (int row = 1; row <= 13; ++row) {
    for (int col = 1; col <= 3; ++col) stats->vbset(row, col, kMissing);
  }

  const double total =
      table->vbget(1, 1) + table->vbget(1, 2) + table->vbget(2, 1) + table->vbget(2, 2);
  const double p11 = table->vbget(1, 1) / total;
  const double p12 = table->vbget(1, 2) / total;
  const double p21 = table->vbget(2, 1) / total;
  const double p22 = table->vbget(2, 2) / total;
  const double positives = p11 + p21;
  const double negatives = p12 + p22;
  const double testPositives = p11 + p12;
  const double testNegatives = p21 + p22;
  proportions->vbset(1, 1, p11);
  proportions->vbset(1, 2, p12);
  proportions->vbset(2, 1, p21);
  proportions->vbset(2, 2, p22);
  proportions->vbset(3, 1, positives);
  proportions->vbset(3, 2, negatives);
  proportions->vbset(1, 3, testPositives);
  proportions->vbset(2, 3, testNegatives);
  proportions->vbset(3, 3, 1.0);

  const IntervalOptions options(alpha, ciMethod, continuityCorrection);
  setProportion(stats, 1, options, p11 + p22, total);
  setProportion(stats, 2, options, p21 + p12, total);

  double Se = 0.0;
  if (!(positives <= kTiny)) {
    Se = p11 / positives;
    setRateAndComplement(stats, 3, 6, options, Se, total * positives);
  }
  double Sp = 0.0;
  if (!(negatives <= kTiny)) {
    Sp = p22 / negatives;
    setRateAndComplement(stats, 4, 5, options, Sp, total * negatives);
  }

  // The prevalence shown is that of the sample, even where another one is given for the
  // predictive values.
  setProportion(stats, 7, options, positives, total);
  const double pi = prevalence <= 0.0 ? positives : prevalence;
  double ppv = kMissing;
  if (testPositives > kTiny) {
    ppv = pi * Se / ((1.0 - pi) * (1.0 - Sp) + pi * Se);
    setProportion(stats, 8, options, ppv, total * testPositives);
  }
  double npv = kMissing;
  if (testNegatives > kTiny) {
    npv = (1.0 - pi) * Sp / ((1.0 - Se) * pi + (1.0 - pi) * Sp);
    setProportion(stats, 9, options, npv, total * testNegatives);
  }

  if (positives * p12 * negatives > kTiny) {
    const double ratio = Se / (p12 / negatives);
    stats->vbset(10, 1, ratio);
    if (p11 > kTiny) {
      setLogInterval(stats, 10, options, ratio, sqr(((1.0 - Se) / p11 + Sp / p12) / total));
    }
  }
  if (positives * p22 * negatives > kTiny) {
    const double ratio = (p21 / positives) / Sp;
    stats->vbset(11, 1, ratio);
    if (p21 > kTiny) {
      setLogInterval(stats, 11, options, ratio, sqr(((1.0 - Sp) / p22 + Se / p21) / total));
    }
  }

  const double a = total * p11;
  const double b = total * p12;
  const double c = total * p21;
  const double d = total * p22;
  if (p21 * testPositives * testNegatives > kTiny) {
    const double ratio = (p11 / testPositives) / (p21 / testNegatives);
    stats->vbset(12, 1, ratio);
    if (p11 > kTiny) {
      const double s =
          ciMethod == 0
              ? sqr((npv / p21 + (1.0 - ppv) / p11) / total)
              : sqr(1.0 / (a + 0.5) + 1.0 / (c + 0.5) - 1.0 / (a + b + 0.5) - 1.0 / (c + d + 0.5));
      setLogInterval(stats, 12, options, ratio, s);
    }
  }
  if (p21 * p12 > kTiny) {
    const double ratio = (p11 * p22) / (p21 * p12);
    stats->vbset(13, 1, ratio);
    if (p11 * p22 > kTiny) {
      const double s =
          ciMethod == 0
              ? sqr((1.0 / p22 + 1.0 / p12 + 1.0 / p11 + 1.0 / p21) / total)
              : sqr(1.0 / (a + 0.5) + 1.0 / (b + 0.5) + 1.0 / (c + 0.5) + 1.0 / (d + 0.5));
      setLogInterval(stats, 13, options, ratio, s);
    }
  }
  return 0;
}
