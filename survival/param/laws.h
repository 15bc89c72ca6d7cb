// The terms of one observation under each law: log-likelihood and derivatives.
//
// With z = (time - eta) / sigma, the derivatives in eta and sigma follow from those in z by
// dz/deta = -1/sigma and dz/dsigma = -z/sigma; docs/parametric-derivatives.md derives them.
#ifndef SURVIVAL_PARAM_LAWS_H_
#define SURVIVAL_PARAM_LAWS_H_

#include "Dist/Dist"
#include "numerics/elementary.h"
#include "survival/param/model.h"

namespace survival::param {

namespace numerics = survmeth::numerics;

struct Row {
  double time;
  double status;
  const double* lower;
  const double* upper;
  double weight;
  double eta;
  double hazard;  // e^z at the time, of the extreme-value laws
};

// Unweighted derivatives of a row's log-likelihood.
struct Terms {
  double eta;
  double etaEta;
  double sigma;
  double etaSigma;
  double sigmaSigma;
};

// Which derivatives a row has: e^x is not formed for x of 700 or more, and what it would have
// entered is left out.
enum class Extent { kNone, kWithoutEtaEta, kAll };

// One end of an interval: density f at z and f'.
struct End {
  double z;
  double density;
  double slope;
};

// An end at infinity.
inline constexpr End kOpen{0.0, 0.0, 0.0};

// What derivatives in z are multiplied by: 1 / sigma, and 1 / sigma^2 in eta alone and with sigma.
struct Scale {
  double first;
  double second;
  double secondOfSigma;
};

// Derivatives of ln G, where G is the probability between two ends.
inline Terms ofProbability(double probability, const End& lower, const End& upper,
                           const Scale& scale) {
  const double density = lower.density - upper.density;
  const double moment = lower.z * lower.density - upper.z * upper.density;
  const double slope = lower.slope - upper.slope;
  const double slopeMoment = lower.z * lower.slope - upper.z * upper.slope;
  const double slopeSquare = lower.z * lower.z * lower.slope - upper.z * upper.z * upper.slope;
  const double inEta = density / probability;
  const double inSigma = moment / probability;
  return {inEta * scale.first, -(slope / probability + inEta * inEta) * scale.second,
          inSigma * scale.first,
          -((density + slopeMoment) / probability + inEta * inSigma) * scale.secondOfSigma,
          -((2.0 * moment + slopeSquare) / probability + inSigma * inSigma) * scale.secondOfSigma};
}

// The minimum extreme-value law at z: hazard u = e^z, survival S = e^-u.
struct ExtremeValue {
  explicit ExtremeValue(double at) : ExtremeValue(at, numerics::exp(at)) {}
  ExtremeValue(double at, double u) : z(at), hazard(u), survival(numerics::exp(-u)) {}
  End end() const {
    const double density = hazard * survival;
    return {z, density, density - hazard * density};
  }
  double z;
  double hazard;
  double survival;
};

// sigma is 1. The value carries the last term of every status into all later rows: the
// log-likelihood of mixed statuses is defined by it, fits depend on the order of the rows.
class Exponential {
 public:
  static constexpr bool kHasScale = false;
  static constexpr bool kHasHazard = true;
  explicit Exponential(double) {}

  // Of each row z, the exponent of its hazard.
  static void standardise(const double* time, const double* eta, int count, double* z) {
    for (int i = 0; i < count; ++i) z[i] = time[i] - eta[i];
  }

  template <bool kValue, bool kDerivatives>
  Extent add(const Row& row, double* logLik, Terms* terms) {
    Extent extent = Extent::kNone;
    const double d = row.time - row.eta;
    if (row.status == 1.0) {
      const bool formed = d < kExpLimit;
      const double u = formed ? row.hazard : 0.0;
      if constexpr (kValue) event_ = formed ? d - u : event_ + d;
      if constexpr (kDerivatives) {
        *terms = {formed ? -1.0 + u : -1.0, -u, 0.0, 0.0, 0.0};
        extent = formed ? Extent::kAll : Extent::kWithoutEtaEta;
      }
    } else if (row.status == 0.0) {
      if (d < kExpLimit) {
        const double u = row.hazard;
        if constexpr (kValue) right_ = -u;
        if constexpr (kDerivatives) {
          *terms = {u, -u, 0.0, 0.0, 0.0};
          extent = Extent::kAll;
        }
      }
    } else if (row.status == 2.0) {
      const ExtremeValue at(d, row.hazard);
      const double probability = 1.0 - at.survival;
      if constexpr (kValue) {
        if (d < kExpLimit) left_ = numerics::log(probability);
      }
      if constexpr (kDerivatives) {
        *terms = ofProbability(probability, kOpen, at.end(), kUnitScale);
        extent = Extent::kAll;
      }
    } else if (row.status == 3.0) {
      const ExtremeValue lower(*row.lower - row.eta);
      const ExtremeValue upper(*row.upper - row.eta);
      const double probability = lower.survival - upper.survival;
      if constexpr (kValue) {
        if (upper.z < kExpLimit) interval_ = numerics::log(probability);
      }
      if constexpr (kDerivatives) {
        *terms = ofProbability(probability, lower.end(), upper.end(), kUnitScale);
        extent = Extent::kAll;
      }
    }
    if constexpr (kValue) *logLik += row.weight * carried();
    return extent;
  }

  // What a row without a term of its own adds, times its weight.
  double carried() const { return event_ + right_ + left_ + interval_; }

 private:
  static constexpr Scale kUnitScale{1.0, 1.0, 1.0};
  double event_ = 0.0;
  double right_ = 0.0;
  double left_ = 0.0;
  double interval_ = 0.0;
};

// Events count the Jacobian of the logarithm. In the value, left- and interval-censored rows are
// not weighted: fits of weighted data are defined by it.
class Weibull {
 public:
  static constexpr bool kHasScale = true;
  static constexpr bool kHasHazard = true;
  explicit Weibull(double sigma)
      : sigma_(sigma),
        logSigma_(numerics::log(sigma)),
        scale_{1.0 / sigma, 1.0 / (sigma * sigma), 1.0 / (sigma * sigma)} {}

  void standardise(const double* time, const double* eta, int count, double* z) const {
    for (int i = 0; i < count; ++i) z[i] = (time[i] - eta[i]) / sigma_;
  }

  template <bool kValue, bool kDerivatives>
  Extent add(const Row& row, double* logLik, Terms* terms) const {
    if (row.status == 1.0) {
      const double d = row.time - row.eta;
      const double z = d / sigma_;
      const double u = row.hazard;
      if constexpr (kValue) {
        *logLik += -row.weight * logSigma_ + row.weight * d / sigma_ - row.weight * row.time;
        if (!(z >= kExpLimit)) *logLik -= row.weight * u;
      }
      if constexpr (!kDerivatives) return Extent::kNone;
      if (z < kExpLimit) {
        const double zu = z * u;
        *terms = {-scale_.first + u * scale_.first, -u * scale_.second,
                  -scale_.first - z * scale_.first + zu * scale_.first,
                  (1.0 - u - zu) * scale_.second,
                  (1.0 + 2.0 * z - 2.0 * zu - z * zu) * scale_.second};
        return Extent::kAll;
      }
      *terms = {-scale_.first, 0.0, -scale_.first - z * scale_.first, scale_.second,
                (1.0 + 2.0 * z) * scale_.second};
      return Extent::kWithoutEtaEta;
    }
    if (row.status == 0.0) {
      const double z = (row.time - row.eta) / sigma_;
      const double u = row.hazard;
      if constexpr (kValue) {
        if (!(z >= kExpLimit)) *logLik -= row.weight * u;
      }
      if constexpr (!kDerivatives) return Extent::kNone;
      if (!(z < kExpLimit)) return Extent::kNone;
      const double zu = z * u;
      *terms = {u * scale_.first, -u * scale_.second, zu * scale_.first, -(u + zu) * scale_.second,
                -(2.0 * zu + z * zu) * scale_.second};
      return Extent::kAll;
    }
    if (row.status == 2.0) {
      const ExtremeValue at((row.time - row.eta) / sigma_, row.hazard);
      const double probability = 1.0 - at.survival;
      if constexpr (kValue) *logLik += numerics::log(probability);
      if constexpr (!kDerivatives) return Extent::kNone;
      *terms = ofProbability(probability, kOpen, at.end(), scale_);
      return Extent::kAll;
    }
    if (row.status == 3.0) {
      const ExtremeValue lower((*row.lower - row.eta) / sigma_);
      const ExtremeValue upper((*row.upper - row.eta) / sigma_);
      const double probability = lower.survival - upper.survival;
      if constexpr (kValue) *logLik += numerics::log(probability);
      if constexpr (!kDerivatives) return Extent::kNone;
      *terms = ofProbability(probability, lower.end(), upper.end(), scale_);
      return Extent::kAll;
    }
    return Extent::kNone;
  }

  double carried() const { return 0.0; }

 private:
  double sigma_;
  double logSigma_;
  Scale scale_;
};

// In the value the term of a left-censored row is subtracted, unlike every other: fits with such
// rows are defined by it. No Jacobian.
class LogNormal {
 public:
  static constexpr bool kHasScale = true;
  static constexpr bool kHasHazard = false;
  // The derivatives with respect to sigma go by way of sigma^3 and overflow with its inverse.
  explicit LogNormal(double sigma)
      : sigma_(sigma),
        scale_{1.0 / sigma, 1.0 / (sigma * sigma), sigma / numerics::pow(sigma, 3)} {}

  template <bool kValue, bool kDerivatives>
  Extent add(const Row& row, double* logLik, Terms* terms) const {
    if (row.status == 1.0) {
      const double z = (row.time - row.eta) / sigma_;
      if constexpr (kValue) *logLik += row.weight * numerics::log(PDFNormalStd(z) / sigma_);
      if constexpr (!kDerivatives) return Extent::kNone;
      *terms = {z * scale_.first, -scale_.second, (z * z - 1.0) * scale_.first,
                -2.0 * z * scale_.secondOfSigma, (1.0 - 3.0 * z * z) * scale_.secondOfSigma};
      return Extent::kAll;
    }
    if (row.status == 0.0 || row.status == 2.0) {
      const double z = (row.time - row.eta) / sigma_;
      const bool right = row.status == 0.0;
      const double below = CDFNormalStd(z);
      const double probability = right ? 1.0 - below : below;
      if constexpr (kValue) {
        const double term = row.weight * numerics::log(probability);
        *logLik += right ? term : -term;
      }
      if constexpr (!kDerivatives) return Extent::kNone;
      const End end = endAt(z);
      *terms = right ? ofProbability(probability, end, kOpen, scale_)
                     : ofProbability(probability, kOpen, end, scale_);
      return Extent::kAll;
    }
    if (row.status == 3.0) {
      const double lower = (*row.lower - row.eta) / sigma_;
      const double upper = (*row.upper - row.eta) / sigma_;
      const double probability = CDFNormalStd(upper) - CDFNormalStd(lower);
      if constexpr (kValue) *logLik += row.weight * numerics::log(probability);
      if constexpr (!kDerivatives) return Extent::kNone;
      *terms = ofProbability(probability, endAt(lower), endAt(upper), scale_);
      return Extent::kAll;
    }
    return Extent::kNone;
  }

  double carried() const { return 0.0; }

 private:
  static End endAt(double z) {
    const double density = PDFNormalStd(z);
    return {z, density, -z * density};
  }

  double sigma_;
  Scale scale_;
};

}  // namespace survival::param

#endif  // SURVIVAL_PARAM_LAWS_H_
