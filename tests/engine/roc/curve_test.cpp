// ROC curves of one marker: small tables by hand, pROC's areas and errors.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "engine/roc/curves.h"
#include "tests/engine/roc/data.h"
#include "tests/support/csv.h"

namespace survmeth::engine::roc {
namespace {

TEST(RocCurve, AreasAndErrorsAreThoseOfPROC) {
  const test::Csv reference(SURVMETH_REFERENCE "/roc_sah.csv");
  ASSERT_EQ(reference.rows(), 3u);
  for (std::size_t i = 0; i < reference.rows(); ++i) {
    const Curve curve = haemorrhage({reference.text("marker", i)}).curve();
    EXPECT_NEAR(curve.area.value, reference.number("auc", i), 1e-9);
    EXPECT_NEAR(curve.standardError, reference.number("se.delong", i), 1e-9);
    EXPECT_EQ(curve.rows, 113u);
    EXPECT_EQ(curve.positives, 41);
    EXPECT_EQ(curve.negatives, 72);
  }
}

TEST(RocCurve, PValuesFarOutHaveAllTheirDigits) {
  const Curve curve = haemorrhage({"wfns"}).curve();
  EXPECT_NEAR(curve.pValue / 3.107660927663e-17, 1, 1e-9);  // R's pnorm
}

TEST(RocCurve, SixRowsByHand) {
  const Curve curve = byHand().curve();
  EXPECT_EQ(curve.area.value, 7.0 / 9);
  // V10 = 2/3, 2/3, 1 and V01 = 1, 1, 1/3: variance 1/81 + 4/81.
  EXPECT_NEAR(curve.standardError, std::sqrt(5.0) / 9, 1e-15);
  EXPECT_NEAR(curve.z, 2.5 / std::sqrt(5.0), 1e-14);
  EXPECT_NEAR(curve.area.lower, 7.0 / 9 - 1.959963984540054 * std::sqrt(5.0) / 9, 1e-14);
  EXPECT_EQ(curve.area.upper, 1);

  ASSERT_EQ(curve.thresholds.size(), 5u);
  const Threshold& all = curve.thresholds[0];
  EXPECT_EQ(all.threshold, 1);
  EXPECT_EQ(all.tp, 3);
  EXPECT_EQ(all.fp, 3);
  EXPECT_EQ(all.youden, 0);
  EXPECT_EQ(all.positiveRatio, 1);
  EXPECT_TRUE(std::isnan(all.negativeRatio));
  EXPECT_TRUE(std::isnan(all.negativeValue));
  const Threshold& three = curve.thresholds[2];
  EXPECT_EQ(three.threshold, 3);
  EXPECT_EQ(three.sensitivity.value, 1);
  EXPECT_EQ(three.specificity.value, 2.0 / 3);
  EXPECT_EQ(three.youden, 2.0 / 3);
  EXPECT_EQ(three.positiveRatio, 3);
  EXPECT_EQ(three.negativeRatio, 0);
  EXPECT_EQ(three.positiveValue, 0.75);
  EXPECT_EQ(three.negativeValue, 1);
  const Threshold& five = curve.thresholds[4];
  EXPECT_EQ(five.positiveRatio, kInf);
  EXPECT_EQ(five.negativeRatio, 2.0 / 3);
  EXPECT_EQ(curve.best, std::vector<std::size_t>{2});
}

TEST(RocCurve, TiedValuesAreHalfAPair) {
  const Data data{{1, 0, 1, 0}, {{1, 1, 2, 0}}, {}, {}, {}};
  EXPECT_EQ(data.curve().area.value, 3.5 / 4);
  const Data same{{1, 0, 1, 0}, {{1, 1, 1, 1}}, {}, {}, {}};
  EXPECT_EQ(same.curve().area.value, 0.5);
  EXPECT_TRUE(same.curve().best.empty());
}

TEST(RocCurve, ThePrevalenceChangesThePredictiveValuesNotTheRatios) {
  Data data = byHand();
  data.options.prevalence = 0.1;
  const Threshold three = data.curve().thresholds[2];
  EXPECT_NEAR(three.positiveValue, 0.25, 1e-15);
  EXPECT_EQ(three.negativeValue, 1);
  EXPECT_EQ(three.positiveRatio, 3);
  // Denominators of any size.
  data.options.prevalence = 1e-14;
  EXPECT_NEAR(data.curve().thresholds[2].positiveValue, 3e-14, 1e-25);
}

TEST(RocCurve, TheCheapestCutMayBeToCallNobodyPositive) {
  Data data = byHand();
  data.options.costs = {.fp = 1, .fn = 2};
  EXPECT_EQ(data.curve().cheapest, std::vector<std::size_t>{2});
  EXPECT_EQ(data.curve().leastCost, 1);
  data.options.costs = {.fp = 10, .fn = 1};
  EXPECT_EQ(data.curve().cheapest, std::vector<std::size_t>{4});
  EXPECT_EQ(data.curve().leastCost, 2);
  data.options.costs = {.tp = 5, .fp = 10, .fn = 1};
  EXPECT_TRUE(data.curve().cheapest.empty());
  EXPECT_EQ(data.curve().leastCost, 3);
}

TEST(RocCurve, BestCutsThatTieAreAllGiven) {
  const Data data{{0, 1, 0, 1}, {{1, 2, 3, 4}}, {}, {}, {}};
  EXPECT_EQ(data.curve().best, (std::vector<std::size_t>{1, 3}));
}

TEST(RocCurve, LowerIsPositiveTurnsTheValuesNotTheTest) {
  Data low = byHand();
  low.markers[0] = negated(low.markers[0]);
  low.lower = {true};
  const Curve curve = low.curve(), high = byHand().curve();
  EXPECT_EQ(curve.area.value, high.area.value);
  EXPECT_EQ(curve.standardError, high.standardError);
  EXPECT_EQ(curve.pValue, high.pValue);
  ASSERT_EQ(curve.thresholds.size(), 5u);
  for (std::size_t k = 0; k < 5; ++k) {
    EXPECT_EQ(curve.thresholds[k].threshold, -high.thresholds[4 - k].threshold);
    EXPECT_EQ(curve.thresholds[k].tp, high.thresholds[4 - k].tp);
    EXPECT_EQ(curve.thresholds[k].fp, high.thresholds[4 - k].fp);
  }
  EXPECT_EQ(curve.best, std::vector<std::size_t>{2});
}

TEST(RocCurve, TheUnitDoesNotMatter) {
  const Result plain = haemorrhage({"s100b", "ndka"}).run();
  Data tiny = haemorrhage({"s100b", "ndka"});
  for (std::vector<double>& marker : tiny.markers) {
    for (double& value : marker) value *= 1e-14;
  }
  const Result result = tiny.run();
  EXPECT_EQ(result.curves[0].area.value, plain.curves[0].area.value);
  EXPECT_EQ(result.curves[0].standardError, plain.curves[0].standardError);
  EXPECT_EQ(result.comparisons[0].z, plain.comparisons[0].z);
}

TEST(RocCurve, APerfectMarkerHasAnErrorOf0AndNoTest) {
  const Data data{{0, 0, 1, 1}, {{1, 2, 3, 4}, {4, 3, 6, 5}}, {}, {}, {}};
  const Result result = data.run();
  EXPECT_EQ(result.curves[0].area.value, 1);
  EXPECT_EQ(result.curves[0].standardError, 0);
  EXPECT_EQ(result.curves[0].reason, "the standard error is 0");
  EXPECT_TRUE(std::isnan(result.curves[0].area.lower));
  EXPECT_TRUE(std::isnan(result.curves[0].pValue));
  EXPECT_EQ(result.comparisons[0].difference.value, 0);
  EXPECT_EQ(result.comparisons[0].reason, "the standard error is 0");
}

TEST(RocCurve, AClassOfOneRowHasNoError) {
  const Data data{{0, 0, 1}, {{1, 3, 2}, {1, 2, 3}}, {}, {}, {}};
  const Result result = data.run();
  EXPECT_EQ(result.curves[0].area.value, 0.5);
  EXPECT_TRUE(std::isnan(result.curves[0].standardError));
  EXPECT_EQ(result.curves[0].reason, "a class of one row has no standard error");
  EXPECT_EQ(result.comparisons[0].difference.value, -0.5);
  EXPECT_EQ(result.comparisons[0].reason, "a class of one row has no standard error");
}

TEST(RocCurve, GivesTheCutsThatItChose) {
  Data data = byHand();
  data.options.costs = {.fp = 1, .fn = 2};
  Curve curve = data.curve();
  ASSERT_EQ(curve.bestCuts().size(), 1u);
  EXPECT_EQ(curve.bestCuts()[0].threshold, 3);
  ASSERT_EQ(curve.cheapestCuts().size(), 1u);
  EXPECT_EQ(curve.cheapestCuts()[0].threshold, 3);
  EXPECT_EQ(curve.cheapestCuts()[0].cost, 1);
  // Calling nobody positive is a row without a threshold.
  data.options.costs = {.tp = 5, .fp = 10, .fn = 1};
  curve = data.curve();
  ASSERT_EQ(curve.cheapestCuts().size(), 1u);
  EXPECT_TRUE(std::isnan(curve.cheapestCuts()[0].threshold));
  EXPECT_EQ(curve.cheapestCuts()[0].cost, 3);
}

TEST(RocCurve, TellsThatAMarkerSpeaksForTheOtherClass) {
  Data data = byHand();
  EXPECT_FALSE(data.curve().belowHalf());
  data.lower = {true};
  EXPECT_TRUE(data.curve().belowHalf());
  const Data same{{1, 0, 1, 0}, {{1, 1, 1, 1}}, {}, {0.1, 0.2, 0.3, 0.4}, {}};
  EXPECT_FALSE(same.curve().belowHalf());
}

TEST(RocCurve, PointsRunFromCornerToCornerAndThinOut) {
  const Curve curve = byHand().curve();
  const Curve::Points all = curve.points(0);
  EXPECT_EQ(all.x, (std::vector<double>{0, 0, 1.0 / 3, 1.0 / 3, 2.0 / 3, 1}));
  EXPECT_EQ(all.y, (std::vector<double>{0, 1.0 / 3, 1.0 / 3, 1, 1, 1}));
  const Curve::Points few = curve.points(0.5);
  EXPECT_EQ(few.x, (std::vector<double>{0, 1.0 / 3, 1}));
  EXPECT_EQ(few.y, (std::vector<double>{0, 1, 1}));
}

}  // namespace
}  // namespace survmeth::engine::roc
