// Calls of the ROC entry points with arrays that are filled beforehand, so that a cell left
// untouched shows.
#ifndef TESTS_SURVIVAL_ROC_SUPPORT_H_
#define TESTS_SURVIVAL_ROC_SUPPORT_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "Klikro/utilities.h"
#include "survival/calls/roc.h"

namespace survmeth::test::roc {

inline constexpr double kUntouched = 4321.5;
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();
// Normal quantiles, to 17 digits.
inline constexpr double kZ975 = 1.9599639845400545;
inline constexpr double kZ95 = 1.6448536269514722;

inline double normalBelow(double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); }

// Equal, two NaN included.
inline ::testing::AssertionResult same(double a, double b) {
  if (a == b || (std::isnan(a) && std::isnan(b))) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << std::hexfloat << a << " against " << b
                                       << std::defaultfloat << " (" << a << " against " << b << ")";
}

// Equal to `tolerance` of the larger of 1 and the magnitude.
inline ::testing::AssertionResult near(double a, double b, double tolerance) {
  if (same(a, b)) return ::testing::AssertionSuccess();
  if (std::fabs(a - b) <= tolerance * std::max(1.0, std::fabs(b))) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << a << " against " << b;
}

// One call of Cpp_ComputeROC; unset options are those of an unweighted test with rule >=.
struct Curve {
  std::vector<double> status;
  std::vector<double> values;
  std::vector<double> weights;  // all 1 where empty
  int thresholdCount = -1;      // -1: counted
  int positiveRule = 2;
  double alpha = 0.05;
  int alternative = 0;
  int ciMethod = 0;
  short continuityCorrection = 0;
  int aucSeMethod = 2;
  double prevalence = 0.0;
  double costTP = 0.0, costFP = 0.0, costFN = 0.0, costTN = 0.0;

  std::vector<double> thresholds, rocPoints, sensitivity, specificity, tp, tn, fp, fn,
      likelihoodRatios, predictiveValues, aucSummary, cost;
  int code = 0;

  Curve(std::vector<double> statuses, std::vector<double> results,
        std::vector<double> caseWeights = {})
      : status(std::move(statuses)), values(std::move(results)), weights(std::move(caseWeights)) {}

  int T() const { return thresholdCount; }
  double area() const { return aucSummary[0]; }
  double error() const { return aucSummary[1]; }

  Curve& run() {
    if (weights.empty()) weights.assign(values.size(), 1.0);
    if (thresholdCount == -1) {
      std::set<double> distinct;
      for (const double v : values) {
        if (!isMissing(v) && !std::isnan(v)) distinct.insert(v);
      }
      thresholdCount = static_cast<int>(distinct.size());
    }
    const std::size_t t = static_cast<std::size_t>(std::max(thresholdCount, 1));
    for (auto* column : {&thresholds, &tp, &tn, &fp, &fn, &cost}) column->assign(t, kUntouched);
    for (auto* pair : {&likelihoodRatios, &predictiveValues}) pair->assign(2 * t, kUntouched);
    for (auto* triple : {&sensitivity, &specificity}) triple->assign(3 * t, kUntouched);
    rocPoints.assign(2 * (static_cast<std::size_t>(std::max(thresholdCount, 0)) + 1), kUntouched);
    aucSummary.assign(9, kUntouched);
    code = Cpp_ComputeROC(status.data(), static_cast<int>(values.size()), thresholdCount,
                          values.data(), weights.data(), positiveRule, alpha, alternative, ciMethod,
                          continuityCorrection, aucSeMethod, prevalence, costTP, costFP, costFN,
                          costTN, thresholds.data(), rocPoints.data(), sensitivity.data(),
                          specificity.data(), tp.data(), tn.data(), fp.data(), fn.data(),
                          likelihoodRatios.data(), predictiveValues.data(), aucSummary.data(),
                          cost.data());
    return *this;
  }

  // Every output, for comparisons of whole calls.
  std::vector<std::vector<double>> outputs() const {
    return {thresholds, rocPoints, sensitivity,      specificity,      tp,         tn,
            fp,         fn,        likelihoodRatios, predictiveValues, aucSummary, cost};
  }
};

// Four negatives 1, 2, 2, 4 and four positives 2, 3, 4, 5: ties within and between the classes.
inline Curve tiedCurve() { return Curve({1, 0, 0, 1, 1, 0, 1, 0}, {2, 2, 1, 5, 3, 4, 4, 2}); }

// One call of Cpp_ComputeROCComparisonsDep2.
struct Comparison {
  std::vector<double> status;
  std::vector<std::vector<double>> tests;
  std::vector<double> weights;
  std::vector<double> sampleSizes;
  double alpha = 0.05;
  short paired = -1;
  std::vector<double> aucs;
  std::vector<double> aucVariances;
  std::vector<int> selected;

  std::vector<double> aucDiff, zStat, halfWidth, covariance, pValue;
  std::vector<int> significant;

  std::size_t k() const { return aucs.size(); }
  // Cell (i, j), from 1.
  double at(const std::vector<double>& m, std::size_t i, std::size_t j) const {
    return m[(i - 1) + (j - 1) * k()];
  }
  int flag(std::size_t i, std::size_t j) const { return significant[(i - 1) + (j - 1) * k()]; }

  Comparison& run() {
    if (weights.empty()) weights.assign(status.size(), 1.0);
    if (sampleSizes.empty()) sampleSizes.assign(k(), 0.0);
    if (aucVariances.empty()) aucVariances.assign(k(), kUntouched);
    if (selected.empty()) selected.assign(k(), 1);
    for (auto* m : {&aucDiff, &zStat, &halfWidth, &covariance, &pValue}) {
      m->assign(k() * k(), kUntouched);
    }
    significant.assign(k() * k(), 77);
    std::vector<double> values;
    for (const auto& test : tests) values.insert(values.end(), test.begin(), test.end());
    if (values.empty()) values.assign(status.size() * k(), 0.0);
    Cpp_ComputeROCComparisonsDep2(status.data(), static_cast<int>(status.size()), values.data(),
                                  weights.data(), sampleSizes.data(), static_cast<int>(k()), alpha,
                                  paired, aucs.data(), aucVariances.data(), selected.data(),
                                  aucDiff.data(), zStat.data(), halfWidth.data(), covariance.data(),
                                  pValue.data(), significant.data());
    return *this;
  }
};

}  // namespace survmeth::test::roc

#endif  // TESTS_SURVIVAL_ROC_SUPPORT_H_
