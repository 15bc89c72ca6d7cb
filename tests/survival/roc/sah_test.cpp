// The markers of the subarachnoid haemorrhage data: reference areas, errors and comparisons, and
// the worked example of the documentation.
#include <map>
#include <numeric>
#include <string>

#include "tests/support/csv.h"
#include "tests/support/page.h"
#include "tests/survival/roc/support.h"

namespace {

using namespace survmeth::test::roc;
using survmeth::test::Csv;
using survmeth::test::Page;
using Doubles = std::vector<double>;

struct Sah {
  Sah() {
    const Csv data(SURVMETH_DATA "/sah.csv");
    for (const std::string& outcome : data.texts("outcome")) {
      status.push_back(outcome == "Poor" ? 1.0 : 0.0);
    }
    for (const char* name : {"wfns", "s100b", "ndka"}) marker[name] = data.numbers(name);
  }
  Doubles status;
  std::map<std::string, Doubles> marker;
};

// Sums of at most 41 x 72 pairs, in another order.
void expectNear(double value, double expected) {
  EXPECT_NEAR(value, expected, 1e-12 * std::fabs(expected));
}

TEST(RocSah, AreasAndDeLongErrorsAreThoseOfTheReference) {
  Sah sah;
  ASSERT_EQ(sah.status.size(), 113u);
  const Csv reference(SURVMETH_REFERENCE "/roc_sah.csv");
  ASSERT_EQ(reference.rows(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    for (const int rule : {2, 3}) {
      Curve curve(sah.status, sah.marker.at(reference.text("marker", i)));
      curve.positiveRule = rule;
      ASSERT_EQ(curve.run().code, 0);
      expectNear(curve.area(), reference.number("auc", i));
      expectNear(curve.error(), reference.number("se.delong", i));
    }
  }
}

TEST(RocSah, PairedComparisonsAreThoseOfTheReference) {
  Sah sah;
  const Csv reference(SURVMETH_REFERENCE "/roc_sah_pairs.csv");
  ASSERT_EQ(reference.rows(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    Comparison comparison;
    comparison.status = sah.status;
    for (const char* side : {"first", "second"}) {
      const Doubles& values = sah.marker.at(reference.text(side, i));
      Curve curve(sah.status, values);
      curve.run();
      comparison.tests.push_back(values);
      comparison.aucs.push_back(curve.area());
    }
    comparison.run();
    expectNear(comparison.at(comparison.zStat, 1, 2), reference.number("z", i));
    expectNear(comparison.at(comparison.pValue, 1, 2), reference.number("p", i));
    expectNear(comparison.at(comparison.covariance, 1, 2), reference.number("cov", i));
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
  const Page page("roc");
  page.says("%zu patients after subarachnoid haemorrhage, %.0f with a poor outcome",
            sah.status.size(), std::accumulate(sah.status.begin(), sah.status.end(), 0.0));
  page.says("S100B with %td distinct values", T);
  page.says("%.0f true and %.0f false positives, %.0f false and %.0f true negatives", curve.tp[k],
            curve.fp[k], curve.fn[k], curve.tn[k]);
  page.says("| sensitivity | %.3f | %.3f to %.3f |", curve.sensitivity[k], curve.sensitivity[T + k],
            curve.sensitivity[2 * T + k]);
  page.says("| specificity | %.3f | %.3f to %.3f |", curve.specificity[k], curve.specificity[T + k],
            curve.specificity[2 * T + k]);
  page.says("| positive, negative predictive value | %.3f, %.3f | |", curve.predictiveValues[k],
            curve.predictiveValues[T + k]);
  page.says("| positive, negative likelihood ratio | %.2f, %.3f | |", curve.likelihoodRatios[k],
            curve.likelihoodRatios[T + k]);
  page.says("| area under the curve (DeLong, error %.3f) | %.3f | %.3f to %.3f |", curve.error(),
            curve.area(), curve.aucSummary[2], curve.aucSummary[3]);
  page.says("The test of an area of 0.5 gives Z = %.2f, p %s.", curve.aucSummary[4],
            survmeth::test::pText(curve.aucSummary[7]).replace(0, 1, "< ").c_str());

  const auto youden = [&](std::ptrdiff_t i) {
    return curve.sensitivity[i] + curve.specificity[i] - 1;
  };
  for (std::ptrdiff_t i = 0; i < T; ++i) {
    if (i == k) continue;
    EXPECT_LT(youden(i), youden(k)) << "threshold " << curve.thresholds[i];
  }
  curve.values = sah.marker.at("s100b");
  curve.costFP = 1;
  curve.costFN = 2;
  curve.run();
  EXPECT_EQ(std::min_element(curve.cost.begin(), curve.cost.end()) - curve.cost.begin(), k);
  page.says(
      "has the largest Youden index, %.3f, and with costs of %.0f for a false positive and %.0f "
      "for a false negative also the least cost, %.0f; as the best of %td",
      youden(k), curve.costFP, curve.costFN, curve.cost[k], T);

  curve.values = sah.marker.at("s100b");
  curve.prevalence = 0.05;
  curve.run();
  page.says("| the same at a prevalence of 5 %% | %.3f, %.3f | |", curve.predictiveValues[k],
            curve.predictiveValues[T + k]);

  Comparison comparison;
  comparison.status = sah.status;
  comparison.tests = {sah.marker.at("wfns"), sah.marker.at("s100b")};
  comparison.aucs = {0.823678861788618, 0.731368563685637};
  comparison.run();
  page.says("larger by %.3f (half-width %.3f): z = %.2f, p = %.3f.",
            comparison.at(comparison.aucDiff, 1, 2), comparison.at(comparison.halfWidth, 1, 2),
            comparison.at(comparison.zStat, 1, 2), comparison.at(comparison.pValue, 1, 2));
  page.says("The flag of significance at alpha = 0.05 is %d all the same", comparison.flag(1, 2));
  EXPECT_EQ(comparison.flag(1, 2), 0);
}

}  // namespace
