// Limits of sensitivity and specificity.
#include <gtest/gtest.h>

#include <algorithm>

#include "engine/roc/curves.h"
#include "tests/engine/roc/data.h"

namespace survmeth::engine::roc {
namespace {

struct Limits {
  RateInterval interval;
  double alpha, lower, upper;
};

TEST(RocCurve, LimitsOfRatesAreThoseOfTheTextbook) {
  // 26 of 41 at s100b >= 0.22, from R: prop.test, binom.test and the formulas with qnorm.
  const Limits expected[] = {
      {RateInterval::kWilson, 0.05, 0.48120701087912016, 0.76410168980310544},
      {RateInterval::kClopperPearson, 0.05, 0.46936254803283345, 0.77877213793893474},
      {RateInterval::kClopperPearson, 0.1, 0.49387569038708673, 0.75919104025084316},
      {RateInterval::kAgresti, 0.05, 0.48078080827105463, 0.76452789241117103},
      {RateInterval::kAgresti, 0.1, 0.50544428364935401, 0.74624003670587657},
      {RateInterval::kWald, 0.05, 0.48670997832621632, 0.78158270460061297},
      {RateInterval::kWald, 0.1, 0.51041384506876009, 0.75787883785806920},
  };
  for (const Limits& limits : expected) {
    Data data = haemorrhage({"s100b"});
    data.options.interval = limits.interval;
    data.options.alpha = limits.alpha;
    const Curve curve = data.curve();
    const auto row = std::find_if(curve.thresholds.begin(), curve.thresholds.end(),
                                  [](const Threshold& each) { return each.threshold == 0.22; });
    ASSERT_NE(row, curve.thresholds.end());
    EXPECT_EQ(row->tp, 26);
    EXPECT_NEAR(row->sensitivity.lower, limits.lower, 1e-12);
    EXPECT_NEAR(row->sensitivity.upper, limits.upper, 1e-12);
  }
}

TEST(RocCurve, LimitsOfRatesStayBetween0And1) {
  for (const RateInterval interval : {RateInterval::kWilson, RateInterval::kWald,
                                      RateInterval::kClopperPearson, RateInterval::kAgresti}) {
    Data data = haemorrhage({"s100b"});
    data.options.interval = interval;
    const Curve curve = data.curve();
    for (const Threshold& row : curve.thresholds) {
      for (const Estimate& rate : {row.sensitivity, row.specificity}) {
        EXPECT_GE(rate.lower, 0);
        EXPECT_LE(rate.lower, rate.value);
        EXPECT_GE(rate.upper, rate.value);
        EXPECT_LE(rate.upper, 1);
      }
    }
    // All of 41; R's binom.test gives 0.91395616370597155.
    EXPECT_EQ(curve.thresholds[0].sensitivity.upper, 1);
    if (interval != RateInterval::kClopperPearson) continue;
    EXPECT_NEAR(curve.thresholds[0].sensitivity.lower, 0.91395616370597155, 1e-12);
  }
}

}  // namespace
}  // namespace survmeth::engine::roc
