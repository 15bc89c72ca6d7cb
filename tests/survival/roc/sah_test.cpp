// The markers of the subarachnoid haemorrhage data: reference areas, errors and comparisons, and
// the worked example of the documentation.
#include <map>
#include <string>

#include "tests/support/columns.h"
#include "tests/survival/roc/support.h"

namespace {

using namespace survmeth::test::roc;
using survmeth::test::Columns;
using Doubles = std::vector<double>;

struct Sah {
  Sah() {
    const Columns data(SURVMETH_DATA "/sah.csv");
    for (const std::string& outcome : data.texts("outcome")) {
      status.push_back(outcome == "Poor" ? 1.0 : 0.0);
    }
    for (const char* name : {"wfns", "s100b", "ndka"}) marker[name] = data.numbers(name);
  }
  Doubles status;
  std::map<std::string, Doubles> marker;
};

TEST(RocSah, AreasAndDeLongErrorsAreThoseOfTheReference) {
  Sah sah;
  ASSERT_EQ(sah.status.size(), 113u);
  const Columns reference(SURVMETH_REFERENCE "/roc_sah.csv");
  ASSERT_EQ(reference.texts("marker").size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    for (const int rule : {2, 3}) {
      Curve curve(sah.status, sah.marker.at(reference.texts("marker")[i]));
      curve.positiveRule = rule;
      ASSERT_EQ(curve.run().code, 0);
      EXPECT_NEAR(curve.area(), reference.numbers("auc")[i], 1e-9);
      EXPECT_NEAR(curve.error(), reference.numbers("se.delong")[i], 1e-9);
    }
  }
}

TEST(RocSah, PairedComparisonsAreThoseOfTheReference) {
  Sah sah;
  const Columns reference(SURVMETH_REFERENCE "/roc_sah_pairs.csv");
  ASSERT_EQ(reference.texts("first").size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    Comparison comparison;
    comparison.status = sah.status;
    for (const char* side : {"first", "second"}) {
      const Doubles& values = sah.marker.at(reference.texts(side)[i]);
      Curve curve(sah.status, values);
      curve.run();
      comparison.tests.push_back(values);
      comparison.aucs.push_back(curve.area());
    }
    comparison.run();
    EXPECT_NEAR(comparison.at(comparison.zStat, 1, 2), reference.numbers("z")[i], 1e-9);
    EXPECT_NEAR(comparison.at(comparison.pValue, 1, 2), reference.numbers("p")[i], 1e-9);
    EXPECT_NEAR(comparison.at(comparison.covariance, 1, 2), reference.numbers("cov")[i], 1e-9);
  }
}

// The worked example of docs/statistics/roc.md, to the digits printed there.
TEST(RocSah, TheWorkedExampleOfTheDocumentation) {
  Sah sah;
  Curve curve(sah.status, sah.marker.at("s100b"));
  curve.ciMethod = 2;
  curve.run();
  const std::ptrdiff_t T = curve.T();
  const std::ptrdiff_t k =
      std::find(curve.thresholds.begin(), curve.thresholds.end(), 0.22) - curve.thresholds.begin();
  ASSERT_LT(k, T);
  EXPECT_EQ(T, 50);
  EXPECT_EQ(curve.tp[k], 26);
  EXPECT_EQ(curve.fp[k], 14);
  EXPECT_EQ(curve.fn[k], 15);
  EXPECT_EQ(curve.tn[k], 58);
  const auto expectDigits = [](double value, double printed, double unit) {
    EXPECT_NEAR(value, printed, unit / 2);
  };
  expectDigits(curve.sensitivity[k], 0.634, 0.001);
  expectDigits(curve.sensitivity[T + k], 0.481, 0.001);
  expectDigits(curve.sensitivity[2 * T + k], 0.764, 0.001);
  expectDigits(curve.specificity[k], 0.806, 0.001);
  expectDigits(curve.specificity[T + k], 0.700, 0.001);
  expectDigits(curve.specificity[2 * T + k], 0.880, 0.001);
  expectDigits(curve.predictiveValues[k], 0.650, 0.001);
  expectDigits(curve.predictiveValues[T + k], 0.795, 0.001);
  expectDigits(curve.likelihoodRatios[k], 3.26, 0.01);
  expectDigits(curve.likelihoodRatios[T + k], 0.454, 0.001);
  expectDigits(curve.area(), 0.731, 0.001);
  expectDigits(curve.error(), 0.052, 0.001);
  expectDigits(curve.aucSummary[2], 0.630, 0.001);
  expectDigits(curve.aucSummary[3], 0.833, 0.001);
  expectDigits(curve.aucSummary[4], 4.48, 0.01);
  expectDigits(curve.aucSummary[7], 7.5e-6, 1e-7);

  curve.values = sah.marker.at("s100b");
  curve.prevalence = 0.05;
  curve.run();
  expectDigits(curve.predictiveValues[k], 0.147, 0.001);
  expectDigits(curve.predictiveValues[T + k], 0.977, 0.001);

  Comparison comparison;
  comparison.status = sah.status;
  comparison.tests = {sah.marker.at("wfns"), sah.marker.at("s100b")};
  comparison.aucs = {0.823678861788618, 0.731368563685637};
  comparison.run();
  expectDigits(comparison.at(comparison.aucDiff, 1, 2), 0.092, 0.001);
  expectDigits(comparison.at(comparison.halfWidth, 1, 2), 0.082, 0.001);
  expectDigits(comparison.at(comparison.zStat, 1, 2), 2.21, 0.01);
  expectDigits(comparison.at(comparison.pValue, 1, 2), 0.027, 0.001);
  EXPECT_EQ(comparison.flag(1, 2), 0);
}

}  // namespace
