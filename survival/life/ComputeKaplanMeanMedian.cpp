// Mean and quartiles of survival from a Kaplan-Meier table.
#include <algorithm>
#include <cmath>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "survival/life/life.h"
#include "survival/life/stratum.h"

namespace {

// The columns of the table that count here. A row past the end reads as -1, and the scans below
// rely on it at their last row.
class Curve {
 public:
  Curve(const matrix* table, int r)
      : table_(table), last_(r), lastPresent_(std::min(r, table->count())) {}

  double time(int k) const { return table_->vbget(k, 1); }
  double events(int k) const { return table_->vbget(k, 4); }
  double atRisk(int k) const { return table_->vbget(k, 6); }
  double survival(int k) const { return table_->vbget(k, 8); }
  double greenwood(int k) const { return table_->vbget(k, 11); }

  int end() const { return survival::indexSum(last_, 1); }
  // The last k of the scans: past it every read is -1, which adds nothing to any of them.
  int lastScanned() const { return lastPresent_; }

 private:
  const matrix* table_;
  int last_;
  int lastPresent_;
};

double restriction(const Curve& curve) {
  double cut = 0.0;
  if (!(curve.survival(curve.end()) > kEpsilon)) return cut;
  for (int k = 2; k <= curve.lastScanned(); ++k) {
    // Callers get the cut that follows a group later than the cut before it.
    if (curve.events(k + 1) == 0.0 && curve.time(k) > cut) cut = curve.time(k + 1);
  }
  return cut;
}

void writeMean(const Curve& curve, double alpha, int nObs, double cut, matrix* meanResult) {
  const auto counts = [&](int k) { return cut == 0.0 || curve.time(k + 1) < cut; };
  const auto area = [&](int k) { return curve.survival(k) * (curve.time(k + 1) - curve.time(k)); };
  double mean = curve.time(2);
  for (int k = 2; k <= curve.lastScanned(); ++k) {
    if (counts(k)) mean += area(k);
  }
  meanResult->vbset(1, 1, mean);

  if (nObs < 2) {
    for (int i = 2; i <= 4; ++i) meanResult->vbset(i, 1, kMissing);
    return;
  }
  // From the right, so that the area beyond each group is at hand.
  double beyond = 0.0;
  double variance = 0.0;
  for (int k = curve.lastScanned(); k >= 2; --k) {
    if (!counts(k)) continue;
    beyond += area(k);
    const double events = curve.events(k);
    const double surviving = curve.atRisk(k) - events;
    if (std::fabs(surviving) > kEpsilon) {
      variance += beyond * beyond * events / (surviving * curve.atRisk(k));
    }
  }
  variance = nObs * variance / (nObs - 1.0);
  const double error = sqr(variance);
  const double z = InvCDFNormalStd(1.0 - alpha / 2.0);
  const double lower = mean - z * error;
  meanResult->vbset(2, 1, error);
  meanResult->vbset(3, 1, lower <= 0.0 ? 0.0 : lower);
  meanResult->vbset(4, 1, mean + z * error);
}

void writeQuartile(const Curve& curve, int j, double chiSquare, matrix* quartiles) {
  const double level = 0.25 * j;
  double estimate = kMissing;
  double lower = kMissing;
  double upper = kMissing;
  const int end = curve.end();
  if (!(curve.survival(end) > level)) {
    constexpr double notYet = -1.0;
    estimate = lower = upper = notYet;
    const auto inside = [&](int k) {
      const double s = curve.survival(k);
      return (s - level) * (s - level) <= s * s * chiSquare * curve.greenwood(k);
    };
    for (int k = 2; k <= curve.lastScanned(); ++k) {
      if (curve.survival(k) >= level && level > curve.survival(k + 1) &&
          curve.events(k + 1) > 0.0) {
        estimate = curve.time(k + 1);
      }
      if (!inside(k)) continue;
      if (lower == notYet) lower = curve.time(k);
      if (upper == notYet && k >= 3 && curve.time(k) > 0.0 && !inside(k + 1)) {
        upper = curve.time(k + 1);
      }
    }
    if (estimate == notYet) estimate = kMissing;
    if (lower == notYet) lower = curve.events(2) > 0.0 ? 0.0 : kMissing;
    if (upper == notYet) upper = curve.events(end) > 0.0 ? curve.time(end) : kMissing;
  }
  quartiles->vbset(j, 1, (4 - j) * 0.25);
  quartiles->vbset(j, 2, estimate);
  quartiles->vbset(j, 3, lower);
  quartiles->vbset(j, 4, upper);
}

}  // namespace

int cComputeKaplanMeanMedian(matrix* table, double alpha, int nObs, int r, double* cut,
                             matrix* meanResult, matrix* quartiles) {
  const Curve curve(table, r);
  *cut = restriction(curve);
  writeMean(curve, alpha, nObs, *cut, meanResult);
  const double chiSquare = InvCDFChiSq(1.0 - alpha, 1.0);
  for (int j = 1; j <= 3; ++j) writeQuartile(curve, j, chiSquare, quartiles);
  return 0;
}
