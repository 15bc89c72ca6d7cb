// ROC curves as people get them: pROC's areas, errors and comparisons, small tables by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "analysis/rocCurve.h"
#include "tests/support/csv.h"
#include "tests/support/role.h"

namespace {

using survmeth::RateInterval;
using survmeth::RocCurve;
using survmeth::RocRequest;
using survmeth::RocResult;
using survmeth::RocThreshold;
using survmeth::engine::Refusal;
using survmeth::test::Csv;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// Columns that own what a request points to.
struct Data {
  std::vector<std::uint8_t> positive;
  std::vector<std::vector<double>> markers;
  std::vector<bool> lower;
  std::vector<double> weight;
  RocRequest options;

  RocResult run() const {
    RocRequest request = options;
    request.positive = positive;
    request.weight = weight;
    for (std::size_t m = 0; m < markers.size(); ++m) {
      request.markers.push_back({markers[m], m < lower.size() && lower[m]});
    }
    return survmeth::rocCurves(request);
  }
  RocCurve curve() const { return run().curves.at(0); }
};

Data haemorrhage(const std::vector<std::string>& markers) {
  const Csv csv(SURVMETH_DATA "/sah.csv");
  Data data;
  for (std::size_t i = 0; i < csv.rows(); ++i) {
    data.positive.push_back(csv.text("outcome", i) == "Poor" ? 1 : 0);
  }
  for (const std::string& marker : markers) data.markers.push_back(csv.numbers(marker));
  return data;
}

// Negatives 1, 2, 4, positives 3, 3, 5: of 9 pairs 7 are in order.
Data byHand() { return {{0, 1, 0, 1, 0, 1}, {{4, 3, 1, 5, 2, 3}}, {}, {}, {}}; }

std::vector<double> negated(std::vector<double> values) {
  for (double& value : values) value = -value;
  return values;
}

TEST(RocCurve, AreasAndErrorsAreThoseOfPROC) {
  const Csv reference(SURVMETH_REFERENCE "/roc_sah.csv");
  ASSERT_EQ(reference.rows(), 3u);
  for (std::size_t i = 0; i < reference.rows(); ++i) {
    const RocCurve curve = haemorrhage({reference.text("marker", i)}).curve();
    EXPECT_NEAR(curve.area.value, reference.number("auc", i), 1e-9);
    EXPECT_NEAR(curve.standardError, reference.number("se.delong", i), 1e-9);
    EXPECT_EQ(curve.rows, 113u);
    EXPECT_EQ(curve.positives, 41);
    EXPECT_EQ(curve.negatives, 72);
  }
}

TEST(RocCurve, ComparisonsAreThoseOfPROC) {
  const Csv reference(SURVMETH_REFERENCE "/roc_sah_pairs.csv");
  const std::vector<std::string> names = {"wfns", "s100b", "ndka"};
  const RocResult result = haemorrhage(names).run();
  ASSERT_EQ(result.comparisons.size(), reference.rows());
  for (std::size_t i = 0; i < reference.rows(); ++i) {
    const survmeth::RocComparison& pair = result.comparisons[i];
    EXPECT_EQ(names[pair.first], reference.text("first", i));
    EXPECT_EQ(names[pair.second], reference.text("second", i));
    EXPECT_NEAR(pair.z, reference.number("z", i), 1e-9);
    EXPECT_NEAR(pair.pValue, reference.number("p", i), 1e-9);
    const double a = result.curves[pair.first].standardError;
    const double b = result.curves[pair.second].standardError;
    EXPECT_NEAR(pair.standardError, std::sqrt(a * a + b * b - 2 * reference.number("cov", i)),
                1e-9);
    const double half = 1.959963984540054 * pair.standardError;
    EXPECT_NEAR(pair.difference.lower, pair.firstArea - pair.secondArea - half, 1e-12);
    EXPECT_NEAR(pair.difference.upper, pair.firstArea - pair.secondArea + half, 1e-12);
  }
}

TEST(RocCurve, PValuesFarOutHaveAllTheirDigits) {
  const RocCurve curve = haemorrhage({"wfns"}).curve();
  EXPECT_NEAR(curve.pValue / 3.107660927663e-17, 1, 1e-9);  // R's pnorm
}

TEST(RocCurve, SixRowsByHand) {
  const RocCurve curve = byHand().curve();
  EXPECT_EQ(curve.area.value, 7.0 / 9);
  // V10 = 2/3, 2/3, 1 and V01 = 1, 1, 1/3: variance 1/81 + 4/81.
  EXPECT_NEAR(curve.standardError, std::sqrt(5.0) / 9, 1e-15);
  EXPECT_NEAR(curve.z, 2.5 / std::sqrt(5.0), 1e-14);
  EXPECT_NEAR(curve.area.lower, 7.0 / 9 - 1.959963984540054 * std::sqrt(5.0) / 9, 1e-14);
  EXPECT_EQ(curve.area.upper, 1);

  ASSERT_EQ(curve.thresholds.size(), 5u);
  const RocThreshold& all = curve.thresholds[0];
  EXPECT_EQ(all.threshold, 1);
  EXPECT_EQ(all.tp, 3);
  EXPECT_EQ(all.fp, 3);
  EXPECT_EQ(all.youden, 0);
  EXPECT_EQ(all.positiveRatio, 1);
  EXPECT_TRUE(std::isnan(all.negativeRatio));
  EXPECT_TRUE(std::isnan(all.negativeValue));
  const RocThreshold& three = curve.thresholds[2];
  EXPECT_EQ(three.threshold, 3);
  EXPECT_EQ(three.sensitivity.value, 1);
  EXPECT_EQ(three.specificity.value, 2.0 / 3);
  EXPECT_EQ(three.youden, 2.0 / 3);
  EXPECT_EQ(three.positiveRatio, 3);
  EXPECT_EQ(three.negativeRatio, 0);
  EXPECT_EQ(three.positiveValue, 0.75);
  EXPECT_EQ(three.negativeValue, 1);
  const RocThreshold& five = curve.thresholds[4];
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
  const RocThreshold three = data.curve().thresholds[2];
  EXPECT_NEAR(three.positiveValue, 0.25, 1e-15);
  EXPECT_EQ(three.negativeValue, 1);
  EXPECT_EQ(three.positiveRatio, 3);
  // Too rare for the entry point, whose denominators end at 1e-12.
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
  const RocCurve curve = low.curve(), high = byHand().curve();
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

TEST(RocCurve, MarkersOfOppositeDirectionAreComparedAsIfTurned) {
  const Csv reference(SURVMETH_REFERENCE "/roc_sah_pairs.csv");
  Data data = haemorrhage({"wfns", "s100b", "ndka"});
  data.markers[1] = negated(data.markers[1]);
  data.lower = {false, true, false};
  const RocResult result = data.run();
  for (std::size_t i = 0; i < reference.rows(); ++i) {
    EXPECT_NEAR(result.comparisons[i].z, reference.number("z", i), 1e-9);
    EXPECT_NEAR(result.comparisons[i].pValue, reference.number("p", i), 1e-9);
  }
}

TEST(RocCurve, TheUnitDoesNotMatter) {
  const RocResult plain = haemorrhage({"s100b", "ndka"}).run();
  Data tiny = haemorrhage({"s100b", "ndka"});
  for (std::vector<double>& marker : tiny.markers) {
    for (double& value : marker) value *= 1e-14;
  }
  const RocResult result = tiny.run();
  EXPECT_EQ(result.curves[0].area.value, plain.curves[0].area.value);
  EXPECT_EQ(result.curves[0].standardError, plain.curves[0].standardError);
  EXPECT_EQ(result.comparisons[0].z, plain.comparisons[0].z);
}

TEST(RocCurve, AMissingMarkerLeavesARowOutOfThatCurveOnly) {
  Data data = haemorrhage({"wfns", "ndka"});
  Data both = data;
  data.markers[0][3] = kNan;
  data.markers[1][5] = kNan;
  data.markers[1][80] = kNan;
  const RocResult result = data.run();
  EXPECT_EQ(result.curves[0].rows, 112u);
  EXPECT_EQ(result.curves[1].rows, 111u);
  EXPECT_EQ(result.comparisons[0].rows, 110u);

  // The pair is compared as if the three rows were not there, areas included.
  for (const std::ptrdiff_t row : {80, 5, 3}) {
    both.positive.erase(both.positive.begin() + row);
    for (std::vector<double>& marker : both.markers) marker.erase(marker.begin() + row);
  }
  const RocResult without = both.run();
  EXPECT_EQ(result.comparisons[0].firstArea, without.curves[0].area.value);
  EXPECT_EQ(result.comparisons[0].secondArea, without.curves[1].area.value);
  EXPECT_EQ(result.comparisons[0].z, without.comparisons[0].z);
  EXPECT_NE(result.comparisons[0].firstArea, result.curves[0].area.value);
}

TEST(RocCurve, WholeWeightsAreSoManyRows) {
  Data data = haemorrhage({"wfns", "s100b"});
  Data copies;
  copies.markers.resize(2);
  for (std::size_t i = 0; i < data.positive.size(); ++i) {
    const std::size_t weight = i % 4;
    data.weight.push_back(static_cast<double>(weight));
    for (std::size_t k = 0; k < weight; ++k) {
      copies.positive.push_back(data.positive[i]);
      for (std::size_t m : {0, 1}) copies.markers[m].push_back(data.markers[m][i]);
    }
  }
  const RocResult weighted = data.run(), rows = copies.run();
  EXPECT_TRUE(weighted.weightsAreCounts);
  EXPECT_EQ(weighted.curves[0].rows, 84u);  // those of weight 0 take no part
  EXPECT_EQ(weighted.curves[0].positives, rows.curves[0].positives);
  EXPECT_EQ(weighted.curves[0].area.value, rows.curves[0].area.value);
  EXPECT_EQ(weighted.curves[0].standardError, rows.curves[0].standardError);
  EXPECT_EQ(weighted.comparisons[0].pValue, rows.comparisons[0].pValue);
  EXPECT_EQ(weighted.curves[0].thresholds[1].sensitivity.lower,
            rows.curves[0].thresholds[1].sensitivity.lower);
}

TEST(RocCurve, OtherWeightsGiveAreasAndRatesOnly) {
  Data data = byHand();
  data.markers.push_back(data.markers[0]);
  data.weight = {0.5, 0.5, 1, 1, 1, 1.5};
  const RocResult result = data.run();
  EXPECT_FALSE(result.weightsAreCounts);
  const RocCurve& curve = result.curves[0];
  // 2.5 of negatives (4: 1/2, 1: 1, 2: 1) and 3 of positives (3: 2 of them, 5: 1).
  EXPECT_NEAR(curve.area.value, (2 * 2 + 1 * 2.5) / 7.5, 1e-15);
  EXPECT_EQ(curve.reason, "the weights are not counts of subjects");
  EXPECT_TRUE(std::isnan(curve.standardError));
  EXPECT_TRUE(std::isnan(curve.area.lower));
  EXPECT_TRUE(std::isnan(curve.pValue));
  EXPECT_EQ(curve.thresholds[2].tp, 3);
  EXPECT_EQ(curve.thresholds[2].fp, 0.5);
  EXPECT_EQ(curve.thresholds[2].specificity.value, 0.8);
  EXPECT_TRUE(std::isnan(curve.thresholds[2].specificity.upper));
  EXPECT_EQ(result.comparisons[0].difference.value, 0);
  EXPECT_TRUE(std::isnan(result.comparisons[0].z));

  data.weight = {1e7, 1, 1, 1, 1, 1};
  EXPECT_FALSE(data.run().weightsAreCounts);
  // Only their ratios matter.
  data.weight = {0.5e-200, 0.5e-200, 1e-200, 1e-200, 1e-200, 1.5e-200};
  EXPECT_NEAR(data.curve().area.value, curve.area.value, 1e-15);
}

TEST(RocCurve, APerfectMarkerHasAnErrorOf0AndNoTest) {
  const Data data{{0, 0, 1, 1}, {{1, 2, 3, 4}, {4, 3, 6, 5}}, {}, {}, {}};
  const RocResult result = data.run();
  EXPECT_EQ(result.curves[0].area.value, 1);
  EXPECT_EQ(result.curves[0].standardError, 0);
  EXPECT_EQ(result.curves[0].reason, "the standard error is 0");
  EXPECT_TRUE(std::isnan(result.curves[0].area.lower));
  EXPECT_TRUE(std::isnan(result.curves[0].pValue));
  EXPECT_EQ(result.comparisons[0].difference.value, 0);
  EXPECT_EQ(result.comparisons[0].reason, "the standard error is 0");
}

TEST(RocCurve, AMarkerEqualsItsOwnCube) {
  Data data = haemorrhage({"s100b", "s100b"});
  for (double& value : data.markers[1]) value = -value * value * value;
  data.lower = {false, true};
  const RocResult result = data.run();
  EXPECT_EQ(result.comparisons[0].difference.value, 0);
  EXPECT_EQ(result.comparisons[0].reason, "the standard error is 0");
}

TEST(RocCurve, AClassOfOneRowHasNoError) {
  const Data data{{0, 0, 1}, {{1, 3, 2}, {1, 2, 3}}, {}, {}, {}};
  const RocResult result = data.run();
  EXPECT_EQ(result.curves[0].area.value, 0.5);
  EXPECT_TRUE(std::isnan(result.curves[0].standardError));
  EXPECT_EQ(result.curves[0].reason, "a class of one row has no standard error");
  EXPECT_EQ(result.comparisons[0].difference.value, -0.5);
  EXPECT_EQ(result.comparisons[0].reason, "a class of one row has no standard error");
}

TEST(RocCurve, MarkersThatShareNoPositiveAreNotCompared) {
  const Data data{{0, 0, 1, 1}, {{1, 3, kNan, 2}, {1, 2, 3, kNan}}, {}, {}, {}};
  const RocResult result = data.run();
  EXPECT_EQ(result.comparisons[0].rows, 2u);
  EXPECT_TRUE(std::isnan(result.comparisons[0].difference.value));
  EXPECT_EQ(result.comparisons[0].reason, "no positive row has both markers");
}

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
    const RocCurve curve = data.curve();
    const auto row = std::find_if(curve.thresholds.begin(), curve.thresholds.end(),
                                  [](const RocThreshold& each) { return each.threshold == 0.22; });
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
    const RocCurve curve = data.curve();
    for (const RocThreshold& row : curve.thresholds) {
      for (const survmeth::Estimate& rate : {row.sensitivity, row.specificity}) {
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

void expectRefusal(const Data& data, const std::string& member,
                   std::optional<std::size_t> index = std::nullopt) {
  try {
    data.run();
    ADD_FAILURE() << "accepted, although " << member << " is wrong";
  } catch (const Refusal& refused) {
    EXPECT_EQ(nameOf(refused.role()), member) << refused.what();
    EXPECT_EQ(indexOf(refused), index);
  }
}

TEST(RocCurve, RefusesWhatHasNoCurve) {
  EXPECT_NO_THROW(byHand().run());
  expectRefusal({}, "positive");
  Data data = byHand();
  data.markers.clear();
  expectRefusal(data, "marker");
  data = byHand();
  data.markers[0].pop_back();
  expectRefusal(data, "positive");
  data = byHand();
  data.markers.push_back(data.markers[0]);
  data.markers[1][2] = kInf;
  expectRefusal(data, "marker", 1);
  data = byHand();
  data.positive.assign(6, 1);
  expectRefusal(data, "marker", 0);
  data = byHand();
  for (const std::size_t i : {0, 2, 4}) data.markers[0][i] = kNan;
  expectRefusal(data, "marker", 0);
  data.markers[0].assign(6, kNan);
  expectRefusal(data, "marker", 0);
}

TEST(RocCurve, RefusesOptionsOutOfTheirRange) {
  for (const double bad : {-1.0, kNan, kInf}) {
    Data data = byHand();
    data.weight = {1, 1, bad, 1, 1, 1};
    expectRefusal(data, "weight", 2);
  }
  Data data = byHand();
  data.weight = {1, 1};
  expectRefusal(data, "weight");
  data.weight.assign(6, 1e308);
  expectRefusal(data, "weight");
  data.weight.assign(6, 0);
  expectRefusal(data, "marker", 0);
  for (const double bad : {0.0, 1.0, -0.5, kNan}) {
    data = byHand();
    data.options.alpha = bad;
    expectRefusal(data, "alpha");
    data = byHand();
    data.options.prevalence = bad;
    expectRefusal(data, "prevalence");
  }
  data = byHand();
  data.options.costs.fn = kInf;
  expectRefusal(data, "cost");
}

}  // namespace
