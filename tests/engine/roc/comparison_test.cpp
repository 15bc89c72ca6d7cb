// Areas of markers on the same subjects, and rows that lack one of them.
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

TEST(RocCurve, ComparisonsAreThoseOfPROC) {
  const test::Csv reference(SURVMETH_REFERENCE "/roc_sah_pairs.csv");
  const std::vector<std::string> names = {"wfns", "s100b", "ndka"};
  const Result result = haemorrhage(names).run();
  ASSERT_EQ(result.comparisons.size(), reference.rows());
  for (std::size_t i = 0; i < reference.rows(); ++i) {
    const Comparison& pair = result.comparisons[i];
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

TEST(RocCurve, MarkersOfOppositeDirectionAreComparedAsIfTurned) {
  const test::Csv reference(SURVMETH_REFERENCE "/roc_sah_pairs.csv");
  Data data = haemorrhage({"wfns", "s100b", "ndka"});
  data.markers[1] = negated(data.markers[1]);
  data.lower = {false, true, false};
  const Result result = data.run();
  for (std::size_t i = 0; i < reference.rows(); ++i) {
    EXPECT_NEAR(result.comparisons[i].z, reference.number("z", i), 1e-9);
    EXPECT_NEAR(result.comparisons[i].pValue, reference.number("p", i), 1e-9);
  }
}

TEST(RocCurve, AMissingMarkerLeavesARowOutOfThatCurveOnly) {
  Data data = haemorrhage({"wfns", "ndka"});
  Data both = data;
  data.markers[0][3] = kNan;
  data.markers[1][5] = kNan;
  data.markers[1][80] = kNan;
  const Result result = data.run();
  EXPECT_EQ(result.curves[0].rows, 112u);
  EXPECT_EQ(result.curves[1].rows, 111u);
  EXPECT_EQ(result.comparisons[0].rows, 110u);

  // The pair is compared as if the three rows were not there, areas included.
  for (const std::ptrdiff_t row : {80, 5, 3}) {
    both.positive.erase(both.positive.begin() + row);
    for (std::vector<double>& marker : both.markers) marker.erase(marker.begin() + row);
  }
  const Result without = both.run();
  EXPECT_EQ(result.comparisons[0].firstArea, without.curves[0].area.value);
  EXPECT_EQ(result.comparisons[0].secondArea, without.curves[1].area.value);
  EXPECT_EQ(result.comparisons[0].z, without.comparisons[0].z);
  EXPECT_NE(result.comparisons[0].firstArea, result.curves[0].area.value);
}

TEST(RocCurve, AMarkerEqualsItsOwnCube) {
  Data data = haemorrhage({"s100b", "s100b"});
  for (double& value : data.markers[1]) value = -value * value * value;
  data.lower = {false, true};
  const Result result = data.run();
  EXPECT_EQ(result.comparisons[0].difference.value, 0);
  EXPECT_EQ(result.comparisons[0].reason, "the standard error is 0");
}

TEST(RocCurve, MarkersThatShareNoPositiveAreNotCompared) {
  const Data data{{0, 0, 1, 1}, {{1, 3, kNan, 2}, {1, 2, 3, kNan}}, {}, {}, {}};
  const Result result = data.run();
  EXPECT_EQ(result.comparisons[0].rows, 2u);
  EXPECT_TRUE(std::isnan(result.comparisons[0].difference.value));
  EXPECT_EQ(result.comparisons[0].reason, "no positive row has both markers");
}

}  // namespace
}  // namespace survmeth::engine::roc
