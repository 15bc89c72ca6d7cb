// From the values of an axis to places along it.
#ifndef PICTURES_SCALE_H_
#define PICTURES_SCALE_H_

#include <vector>

#include "report/report.h"

namespace survmeth::pictures {

class Scale {
 public:
  Scale() : Scale(report::Scale::kLinear, 0, 1) {}
  // In  least < most, both places of the scale (log: above 0; cloglog and probit: within 0 and 1)
  Scale(report::Scale kind, double least, double most);

  // 0 at `least`, 1 at `most`. NaN for a value that the scale does not know, infinite at its ends.
  double place(double value) const;

  report::Scale kind() const { return kind_; }
  double least() const { return least_; }
  double most() const { return most_; }

 private:
  double transformed(double value) const;

  report::Scale kind_;
  double least_, most_;
  int exponent_ = 0;  // linear values are halved this often, so that no difference overflows
  double from_ = 0, to_ = 1;
};

// Whether the scale has a finite place for a value.
bool knows(report::Scale kind, double value);

// Limits that hold the values: those wanted where given, otherwise the values' own with `margin`
// (a part of the axis) beside them. Values that the scale does not know are passed over. Limits
// that are equal or too close for doubles to tell ticks between them apart are spread.
struct Limits {
  double least = 0, most = 1;
};
Limits limitsOf(const report::Axis& axis, const std::vector<double>& values, double margin);

}  // namespace survmeth::pictures

#endif  // PICTURES_SCALE_H_
