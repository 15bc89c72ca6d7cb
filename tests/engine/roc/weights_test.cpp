// Rows that stand for several, or for a part of one.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <vector>

#include "engine/roc/curves.h"
#include "tests/bits/sequence.h"
#include "tests/engine/roc/data.h"

namespace survmeth::engine::roc {
namespace {

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
  const Result weighted = data.run(), rows = copies.run();
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
  const Result result = data.run();
  EXPECT_FALSE(result.weightsAreCounts);
  const Curve& curve = result.curves[0];
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

TEST(RocCurve, RatesOfAnyWeightsLieBetween0And1AndReachBoth) {
  // Sums of these in two orders differ in the last place, which must not show as 1.0000000000000002.
  test::Sequence sequence(5);
  for (int set = 0; set < 50; ++set) {
    Data data;
    data.markers.resize(1);
    for (int i = 0; i < 40; ++i) {
      data.positive.push_back(i % 3 == 0 ? 1 : 0);
      data.markers[0].push_back(sequence.share() + 0.2 * (i % 3 == 0));
      data.weight.push_back(0.1 + sequence.share());
    }
    const Curve curve = data.curve();
    EXPECT_EQ(curve.thresholds.front().sensitivity.value, 1);
    EXPECT_EQ(curve.thresholds.front().specificity.value, 0);
    for (const Threshold& row : curve.thresholds) {
      EXPECT_LE(row.sensitivity.value, 1);
      EXPECT_LE(row.specificity.value, 1);
    }
  }
}

TEST(RocCurve, SaysWhyWeightsAreNoCounts) {
  Data data = byHand();
  EXPECT_EQ(data.run().reason, "");
  data.weight = {1, 1, 0, 1, 1, 0.5};
  EXPECT_EQ(data.run().reason, "the weights are not whole numbers");
  EXPECT_EQ(data.run().rows, 5u);
  data.weight = {1e7, 1, 1, 1, 1, 1};
  EXPECT_EQ(data.run().reason, "the weights add up to more than 10,000,000");
}

}  // namespace
}  // namespace survmeth::engine::roc
