// Curves, limits and medians against R's survfit and by hand.
#include <limits>
#include <optional>

#include "tests/analysis/life/data.h"
#include "tests/support/role.h"

namespace survmeth {
namespace {

using analysis::LifeAnswer;
using analysis::LifeRequest;
using engine::curves::Curve;
using engine::curves::Scale;
using test::Columns;
using test::Csv;
using test::near;
using test::oneGroup;

constexpr double kTolerance = 1e-10;
const double kInfinity = std::numeric_limits<double>::infinity();

LifeAnswer run(const Columns& columns, Scale limits = Scale::kLogLog, double alpha = 0.05) {
  LifeRequest request;
  request.limits = limits;
  request.alpha = alpha;
  return test::lifeOf(columns, request);
}

void matchesReference(const std::string& data, const std::string& reference,
                      const std::string& time, const std::string& event, const std::string& group) {
  std::vector<std::string> labels;
  const LifeAnswer result = run(test::fromFile(data, time, event, group, &labels));
  const Csv csv(SURVMETH_REFERENCE + ("/" + reference));
  std::map<std::string, std::size_t> next;
  for (std::size_t row = 0; row < csv.rows(); ++row) {
    const std::string& label = csv.text("group", row);
    const auto g =
        static_cast<std::size_t>(std::find(labels.begin(), labels.end(), label) - labels.begin());
    ASSERT_LT(g, labels.size()) << label;
    const Curve& curve = result.curves[g];
    const std::size_t i = next[label]++;
    ASSERT_LT(i, curve.time.size());
    EXPECT_EQ(curve.time[i], csv.number("time", row));
    EXPECT_EQ(curve.atRisk[i], csv.number("n.risk", row));
    EXPECT_EQ(curve.eventsAt[i], csv.number("n.event", row));
    EXPECT_EQ(curve.censoredAt[i], csv.number("n.censor", row));
    EXPECT_TRUE(near(curve.survival[i], csv.number("survival", row), kTolerance));
    EXPECT_TRUE(near(curve.standardError(i), csv.number("std.err", row), kTolerance));
    if (curve.survival[i] > 0) {
      EXPECT_TRUE(near(curve.logVariance[i], csv.number("greenwood.sum", row), kTolerance));
    }
  }
  for (std::size_t g = 0; g < labels.size(); ++g) {
    EXPECT_EQ(next[labels[g]], result.curves[g].time.size());
  }
}

TEST(SurvivalCurves, AreThoseOfTheReferenceForLeukaemia) {
  matchesReference("leukemia.csv", "km_leukemia.csv", "weeks", "relapse", "treatment");
}
TEST(SurvivalCurves, AreThoseOfTheReferenceForLungCancer) {
  matchesReference("lung.csv", "km_lung.csv", "time", "status", "sex");
}
TEST(SurvivalCurves, AreThoseOfTheReferenceForVeterans) {
  matchesReference("veteran.csv", "km_veteran.csv", "time", "status", "celltype");
}

TEST(SurvivalCurves, ByHand) {
  // 5 at risk: one event at 2, two of 4 at 3, a censoring at 5, the last event at 8.
  const LifeAnswer result = run(oneGroup({8, 3, 2, 3, 5}, {1, 1, 1, 1, 0}));
  const Curve& curve = result.curves[0];
  EXPECT_EQ(curve.time, (std::vector<double>{2, 3, 5, 8}));
  EXPECT_EQ(curve.atRisk, (std::vector<double>{5, 4, 2, 1}));
  EXPECT_TRUE(near(curve.survival[0], 4.0 / 5, 1e-15));
  EXPECT_TRUE(near(curve.survival[1], 2.0 / 5, 1e-15));
  EXPECT_TRUE(near(curve.survival[2], 2.0 / 5, 1e-15));
  EXPECT_EQ(curve.survival[3], 0);
  EXPECT_TRUE(near(curve.logVariance[1], 1.0 / 20 + 2.0 / 8, 1e-15));
  EXPECT_TRUE(std::isnan(curve.standardError(3)));
  EXPECT_EQ(curve.rows, 5u);
  EXPECT_EQ(curve.n, 5);
  EXPECT_EQ(curve.events, 4);
  EXPECT_EQ(curve.censored, 1);
  EXPECT_EQ(result.summaries[0].median.time, 3);
}

// Medians, their limits, and one row of each curve, for random data in all three kinds of limits.
TEST(SurvivalCurves, MediansAndLimitsAreThoseOfR) {
  const std::map<int, Columns> sets = test::randomData();
  const Csv csv(SURVMETH_REFERENCE + std::string("/curves_medians.csv"));
  ASSERT_GT(csv.rows(), 300u);
  for (std::size_t row = 0; row < csv.rows(); ++row) {
    const std::string& type = csv.text("type", row);
    SCOPED_TRACE(csv.text("id", row) + " " + type + " group " + csv.text("group", row));
    const Scale limits = type == "log"     ? Scale::kLog
                         : type == "plain" ? Scale::kPlain
                                           : Scale::kLogLog;
    const LifeAnswer result =
        run(sets.at(static_cast<int>(csv.number("id", row))), limits, csv.number("alpha", row));
    const auto g = static_cast<std::size_t>(csv.number("group", row));
    const Curve& curve = result.curves.at(g);
    EXPECT_EQ(curve.n, csv.number("n", row));
    EXPECT_EQ(curve.events, csv.number("events", row));
    EXPECT_TRUE(near(result.summaries[g].median.time, csv.number("median", row), kTolerance));
    EXPECT_TRUE(near(result.summaries[g].median.lower, csv.number("lower", row), kTolerance))
        << "lower";
    EXPECT_TRUE(near(result.summaries[g].median.upper, csv.number("upper", row), kTolerance))
        << "upper";
    const auto at = std::find(curve.time.begin(), curve.time.end(), csv.number("time", row));
    ASSERT_NE(at, curve.time.end());
    const auto i = static_cast<std::size_t>(at - curve.time.begin());
    EXPECT_EQ(curve.atRisk[i], csv.number("risk", row));
    EXPECT_TRUE(near(curve.survival[i], csv.number("survival", row), kTolerance));
    EXPECT_TRUE(near(curve.standardError(i), csv.number("error", row), kTolerance)) << "error";
    EXPECT_TRUE(near(curve.lower[i], csv.number("low", row), kTolerance)) << "low";
    EXPECT_TRUE(near(curve.upper[i], csv.number("high", row), kTolerance)) << "high";
  }
}

TEST(SurvivalCurves, MedianOfUncensoredDataIsTheMiddleValue) {
  EXPECT_EQ(run(oneGroup({1, 2, 3, 4}, {1, 1, 1, 1})).summaries[0].median.time, 2.5);
  EXPECT_EQ(run(oneGroup({5, 1, 3}, {1, 1, 1})).summaries[0].median.time, 3);
}

// (19/20)(18/19) ... (10/11) is not 1/2 in the last bit.
TEST(SurvivalCurves, MedianToleratesTheRoundingOfTheProduct) {
  for (const std::size_t n : {6u, 14u, 20u, 50u, 98u}) {
    Columns columns;
    for (std::size_t i = 1; i <= n; ++i) {
      columns.time.push_back(static_cast<double>(i));
      columns.event.push_back(1);
    }
    EXPECT_EQ(run(columns).summaries[0].median.time, static_cast<double>(n + 1) / 2) << n;
  }
}

TEST(SurvivalCurves, ACurveThatEndsAtOneHalfHasItsMedianInTheMiddleOfTheStretch) {
  EXPECT_EQ(run(oneGroup({2, 4}, {1, 0})).summaries[0].median.time, 3);
  EXPECT_EQ(run(oneGroup({2, 2}, {1, 0})).summaries[0].median.time, 2);
}

// S = 2/5 with Greenwood sum 3/10 from time 3 on: the plain upper limit 2/5 (1 + z sqrt(3/10)) is
// 1/2 for z = 1 / (4 sqrt(3/10)).
TEST(SurvivalCurves, ALimitThatRunsAtOneHalfGivesTheMiddleOfTheStretch) {
  const double z = 1 / (4 * std::sqrt(0.3));
  const Columns columns = oneGroup({1, 2, 3, 5, 6}, {1, 1, 1, 0, 0});
  const LifeAnswer result = run(columns, Scale::kPlain, std::erfc(z / std::sqrt(2.0)));
  EXPECT_TRUE(near(result.curves[0].upper[2], 0.5, 1e-12));
  EXPECT_EQ(result.summaries[0].median.upper, 0.5 * (3 + 6));
}

TEST(SurvivalCurves, ACurveThatStaysAboveOneHalfHasNoMedian) {
  const LifeAnswer result = run(oneGroup({1, 2, 3, 4}, {1, 0, 0, 0}));
  EXPECT_TRUE(std::isnan(result.summaries[0].median.time));
  EXPECT_TRUE(std::isnan(result.summaries[0].median.upper));
}

TEST(SurvivalCurves, LimitsDoNotExistAtZeroNorForLogLogAtOne) {
  const Columns columns = oneGroup({1, 2, 3}, {0, 1, 1});
  for (const Scale limits : {Scale::kLogLog, Scale::kLog, Scale::kPlain}) {
    const Curve curve = run(columns, limits).curves[0];
    EXPECT_TRUE(std::isnan(curve.lower[2]) && std::isnan(curve.upper[2]));
    if (limits == Scale::kLogLog) {
      EXPECT_TRUE(std::isnan(curve.lower[0]) && std::isnan(curve.upper[0]));
    } else {
      EXPECT_EQ(curve.lower[0], 1);
      EXPECT_EQ(curve.upper[0], 1);
    }
  }
}

TEST(SurvivalCurves, WholeWeightsEqualReplicatedRows) {
  std::size_t tested = 0;
  for (const auto& [id, columns] : test::randomData()) {
    SCOPED_TRACE(id);
    const LifeAnswer weighted = run(columns), replicated = run(columns.replicated());
    for (std::size_t g = 0; g < columns.groups; ++g) {
      const Curve &a = weighted.curves[g], &b = replicated.curves[g];
      EXPECT_EQ(a.time, b.time);
      EXPECT_EQ(a.atRisk, b.atRisk);
      EXPECT_EQ(a.survival, b.survival);
      EXPECT_EQ(a.n, b.n);
      EXPECT_EQ(a.events, b.events);
      EXPECT_TRUE(
          near(weighted.summaries[g].median.lower, replicated.summaries[g].median.lower, 0));
    }
    EXPECT_EQ(weighted.comparison.reason, replicated.comparison.reason);
    for (std::size_t t = 0; t < 3 && weighted.comparison.reason.empty(); ++t, ++tested) {
      // Each row adds its weight times an integral: rows of weight 1 add as many roundings of 1e-16
      // as there are of them, some hundreds.
      EXPECT_TRUE(near(weighted.comparison.tests[t].test.chiSquare,
                       replicated.comparison.tests[t].test.chiSquare, 1e-13));
    }
  }
  EXPECT_GT(tested, 60u);
}

TEST(SurvivalCurves, PermutingRowsChangesNothing) {
  for (const auto& [id, columns] : test::randomData()) {
    Columns turned = columns;
    std::reverse(turned.time.begin(), turned.time.end());
    std::reverse(turned.event.begin(), turned.event.end());
    std::reverse(turned.group.begin(), turned.group.end());
    std::reverse(turned.weight.begin(), turned.weight.end());
    const LifeAnswer a = run(columns), b = run(turned);
    for (std::size_t g = 0; g < columns.groups; ++g) {
      EXPECT_EQ(a.curves[g].survival, b.curves[g].survival);
      EXPECT_EQ(a.curves[g].atRisk, b.curves[g].atRisk);
    }
  }
}

// 0.1 + 0.2 + ... leaves a remainder in binary; the last row must have its own weight at risk.
TEST(SurvivalCurves, FractionalWeightsEndAtExactlyZero) {
  Columns columns = oneGroup({1, 2, 3, 4, 5, 6, 7}, {1, 1, 0, 1, 1, 0, 1});
  columns.weight = {0.1, 0.2, 0.3, 0.7, 0.1, 1.1, 0.3};
  const Curve curve = run(columns).curves[0];
  EXPECT_EQ(curve.atRisk.back(), curve.eventsAt.back());
  EXPECT_EQ(curve.survival.back(), 0);
  EXPECT_TRUE(near(curve.n, 2.8, 1e-15));
  EXPECT_TRUE(near(curve.survival[0], 2.7 / 2.8, 1e-15));
}

TEST(SurvivalCurves, RowsOfWeightZeroHaveNoEffect) {
  Columns columns = oneGroup({1, 2, 3, 9}, {1, 1, 0, 1});
  columns.weight = {1, 1, 1, 0};
  const LifeAnswer result = run(columns);
  const Curve& curve = result.curves[0];
  EXPECT_EQ(curve.time, (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(curve.n, 3);
  EXPECT_EQ(result.rows.groups.counts[0], 4u);
}

TEST(SurvivalCurves, MinusZeroIsTimeZero) {
  const Curve curve = run(oneGroup({-0.0, 0.0, 1}, {1, 1, 0})).curves[0];
  EXPECT_EQ(curve.time, (std::vector<double>{0, 1}));
  EXPECT_FALSE(std::signbit(curve.time[0]));
}

TEST(SurvivalCurves, OneRowInEachGroupIsEnough) {
  Columns columns = oneGroup({1, 2}, {1, 0});
  columns.group = {0, 1};
  columns.groups = 2;
  const LifeAnswer result = run(columns);
  EXPECT_EQ(result.curves[0].survival, (std::vector<double>{0}));
  EXPECT_EQ(result.curves[1].survival, (std::vector<double>{1}));
}

TEST(SurvivalCurves, WithoutAnEventTheCurvesStayAtOneAndThereIsNoTest) {
  Columns columns = oneGroup({1, 2, 3, 3}, {0, 0, 0, 0});
  columns.group = {0, 1, 0, 1};
  columns.groups = 2;
  const LifeAnswer result = run(columns);
  for (const Curve& curve : result.curves) {
    EXPECT_EQ(curve.survival, std::vector<double>(curve.time.size(), 1.0));
    EXPECT_EQ(curve.events, 0);
    EXPECT_EQ(curve.censored, 2);
  }
  for (const auto& group : result.summaries) EXPECT_TRUE(std::isnan(group.median.time));
  EXPECT_EQ(result.comparison.reason, "there is no event");
  EXPECT_TRUE(std::isnan(result.comparison.tests[0].test.pValue));
}

TEST(SurvivalCurves, AnEventOfWeightZeroIsNone) {
  Columns columns = oneGroup({1, 2, 3}, {1, 0, 1});
  columns.weight = {0, 1, 0};
  EXPECT_EQ(run(columns).curves[0].survival, (std::vector<double>{1}));
}

// A refused request: "member" or "member index".
std::string refusal(const Columns& columns) {
  try {
    run(columns);
  } catch (const survmeth::engine::Refusal& error) {
    return nameOf(error.role()) + (indexOf(error) ? " " + std::to_string(*indexOf(error)) : "") +
           ": " + error.what();
  }
  return "accepted";
}

Columns changed(void (*change)(Columns&)) {
  Columns columns = oneGroup({1, 2, 3}, {1, 0, 1});
  change(columns);
  return columns;
}

TEST(SurvivalCurves, WeightsLostBesideOthersAreNotCalledZero) {
  Columns columns = changed([](Columns& c) { c.group = {0, 1, 1}, c.groups = 2; });
  columns.weight = {1e307, 1, 2};
  EXPECT_EQ(refusal(columns),
            "group: the weights of the group \"b\" vanish beside the largest weights");
}

TEST(SurvivalCurves, RefusalsPointAtTheDataAtFault) {
  const std::string time = ": a time is negative or not finite";
  const std::string weight = ": a weight is negative or not finite";
  EXPECT_EQ(refusal(changed([](Columns&) {})), "accepted");
  EXPECT_EQ(refusal(changed([](Columns& c) { c.time[1] = -1; })), "time 1" + time);
  EXPECT_EQ(refusal(changed([](Columns& c) { c.time[2] = kNone; })), "time 2" + time);
  EXPECT_EQ(refusal(changed([](Columns& c) { c.time[0] = kInfinity; })), "time 0" + time);
  EXPECT_EQ(refusal(changed([](Columns& c) { c.weight = {1, -1, 1}; })), "weight 1" + weight);
  EXPECT_EQ(refusal(changed([](Columns& c) {
              c.weight = {kInfinity, 1, 1};
            })),
            "weight 0" + weight);
  EXPECT_EQ(refusal(changed([](Columns& c) {
              c.weight = {1e308, 1e308, 1e308};
            })),
            "weight: the weights' sum is not finite");
  EXPECT_EQ(refusal(changed([](Columns& c) {
              c.group = {0, 2, 0}, c.groups = 3;
            })),
            "group: the group \"b\" is empty: its rows have missing cells");
}

}  // namespace
}  // namespace survmeth
