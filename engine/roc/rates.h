// Rates at a threshold with their limits, and what a threshold costs.
#ifndef ENGINE_ROC_RATES_H_
#define ENGINE_ROC_RATES_H_

#include "engine/roc/curves.h"

namespace survmeth::engine::roc {

// What the thresholds of a curve share.
class Rates {
 public:
  // P positives and N negatives.
  Rates(const Request& request, double P, double N, bool counts);

  // The row of a threshold from the counts and the value that are in it.
  void complete(Threshold& row) const;

  // A cost, and what rounding may have made of it.
  struct Cost {
    double value, rounding;
  };
  Cost costOf(const Threshold& row) const;

 private:
  Estimate rate(double x, double m) const;

  const Request& request_;
  double P_, N_;
  bool counts_;
  double z_;
};

}  // namespace survmeth::engine::roc

#endif  // ENGINE_ROC_RATES_H_
