// Gray's test by cmprsk's numbers, and a word for every test that does not exist.
#include "engine/incidence/gray.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/csv.h"
#include "tests/support/role.h"

namespace survmeth {
namespace {

using engine::Refusal;
using engine::incidence::GrayTest;
using test::Csv;

// Columns that own what the spans look at.
struct Data {
  std::vector<double> time;
  std::vector<std::uint32_t> status, group;
  std::size_t groups = 2;
  engine::incidence::GrayOptions options = {};
  std::vector<double> weight = {};
  std::vector<std::uint32_t> stratum = {};
  std::size_t strata = 1;

  engine::Response response() const { return {{}, time, status, 2}; }
  engine::Rows rows() const {
    engine::Rows rows;
    rows.weight = weight;
    rows.stratum = stratum;
    rows.strata = strata;
    return rows;
  }
  GrayTest test() const {
    return engine::incidence::grayTest(response(), rows(), {group, groups}, options);
  }
};

Data liverTrial(const std::string& group = "trt") {
  const Csv csv(SURVMETH_DATA "/pbc.csv");
  Data data;
  data.groups = group == "stage" ? 4 : 2;
  data.time = csv.numbers("time");
  for (std::size_t i = 0; i < csv.rows(); ++i) {
    data.status.push_back(static_cast<std::uint32_t>(csv.number("status", i)));
    data.group.push_back(static_cast<std::uint32_t>(csv.number(group, i)) - 1);
  }
  return data;
}

void expectNone(const GrayTest& result, const std::string& reason) {
  EXPECT_NE(result.reason.find(reason), std::string::npos) << result.reason;
  EXPECT_TRUE(std::isnan(result.chiSquare));
  EXPECT_TRUE(std::isnan(result.degreesOfFreedom));
  EXPECT_TRUE(std::isnan(result.pValue));
}

TEST(Gray, TheLiverTrialAgreesWithCmprsk) {
  const Csv reference(SURVMETH_REFERENCE "/gray_pbc.csv");
  ASSERT_EQ(reference.rows(), 6u);
  for (std::size_t i = 0; i < reference.rows(); ++i) {
    Data data = liverTrial(reference.text("group", i));
    data.options.cause = static_cast<std::uint32_t>(reference.number("event", i));
    data.options.rho = reference.number("rho", i);
    const GrayTest result = data.test();
    EXPECT_EQ(result.reason, "");
    EXPECT_NEAR(result.chiSquare, reference.number("stat", i), 1e-10);
    EXPECT_NEAR(result.pValue, reference.number("pv", i), 1e-10);
    EXPECT_EQ(result.degreesOfFreedom, reference.number("df", i));
    EXPECT_EQ(result.included, std::vector<bool>(data.groups, true));
  }
}

TEST(Gray, ThreeGroupsAgreeWithCmprsk) {
  const Data data{{1, 1, 2, 3, 4, 5, 6, 1}, {1, 2, 1, 0, 1, 1, 2, 0}, {0, 0, 0, 0, 1, 1, 1, 2}, 3};
  const GrayTest result = data.test();
  EXPECT_NEAR(result.chiSquare, 2.0433503616783355, 1e-12);
  EXPECT_NEAR(result.pValue, 0.3599913841125166, 1e-12);
  EXPECT_EQ(result.degreesOfFreedom, 2);
}

TEST(Gray, WhichGroupComesLastDoesNotMatter) {
  Data data{{1, 1, 2, 3, 4, 5, 6, 1}, {1, 2, 1, 0, 1, 1, 2, 0}, {0, 0, 0, 0, 1, 1, 1, 2}, 3};
  const double chiSquare = data.test().chiSquare;
  for (std::uint32_t& group : data.group) group = (group + 1) % 3;
  EXPECT_NEAR(data.test().chiSquare, chiSquare, 1e-13);
}

// Where the entry point, given the group, would say "no difference".
TEST(Gray, AGroupThatHasLeftBeforeTheFirstEventHasNoPart) {
  const Data three{
      {1, 1, 2, 3, 4, 5, 6, 0.5, 0.7}, {1, 2, 1, 0, 1, 1, 2, 0, 2}, {0, 0, 0, 0, 2, 2, 2, 1, 1}, 4};
  const GrayTest result = three.test();
  EXPECT_EQ(result.included, (std::vector<bool>{true, false, true, false}));
  EXPECT_EQ(result.degreesOfFreedom, 1);
  // cmprsk on the two groups that are left.
  EXPECT_NEAR(result.chiSquare, 1.7667838419961799, 1e-12);
  EXPECT_NEAR(result.pValue, 0.1837806052575719, 1e-12);
}

TEST(Gray, EqualGroupsDifferByNothing) {
  const Data data{{1, 2, 3, 4, 1, 2, 3, 4}, {1, 2, 1, 0, 1, 2, 1, 0}, {0, 0, 0, 0, 1, 1, 1, 1}};
  const GrayTest result = data.test();
  EXPECT_EQ(result.reason, "");
  EXPECT_NEAR(result.chiSquare, 0, 1e-14);
  EXPECT_NEAR(result.pValue, 1, 1e-7);
}

TEST(Gray, NoneExistsWithoutAnEventOfTheType) {
  Data data{{1, 2, 3, 4}, {2, 2, 0, 2}, {0, 1, 0, 1}};
  expectNone(data.test(), "no event of the type");
  EXPECT_EQ(data.test().included, std::vector<bool>(2, false));
}

TEST(Gray, NoneExistsWithOneGroupAtRisk) {
  const Data gone{{1, 2, 3, 4}, {2, 0, 1, 1}, {0, 0, 1, 1}};
  expectNone(gone.test(), "only one group");
  const Data one{{1, 2, 3, 4}, {1, 0, 1, 1}, {0, 0, 0, 0}, 1};
  expectNone(one.test(), "only one group");
}

TEST(Gray, NoneExistsWhenAllAtRiskFallTogether) {
  const Data data{{1, 2, 5, 5, 5, 5}, {0, 0, 1, 1, 1, 1}, {0, 1, 0, 0, 1, 1}};
  expectNone(data.test(), "all who are at risk have the event together");
  // Three groups need competing events in two.
  const Data three{{1, 5, 5, 5, 5}, {2, 1, 1, 1, 1}, {0, 0, 1, 1, 2}, 3};
  expectNone(three.test(), "all who are at risk have the event together");
}

TEST(Gray, CompetingEventsBeforeThatMakeUpAVariance) {
  const Data data{
      {1, 1, 2, 5, 5, 5, 5, 5, 5}, {2, 2, 2, 1, 1, 1, 1, 1, 1}, {0, 0, 1, 0, 0, 1, 1, 1, 1}};
  EXPECT_NEAR(data.test().chiSquare, 0.6906935621193263, 1e-12);  // cmprsk
}

// cmprsk reports a negative statistic here.
TEST(Gray, NoneExistsWhereTheCorrectionForTiesTurnsTheVarianceNegative) {
  const Data data{
      {2, 2, 2, 2, 2, 1, 1, 1, 1}, {1, 1, 1, 1, 1, 0, 1, 1, 2}, {0, 2, 2, 2, 1, 0, 2, 1, 0}, 3};
  expectNone(data.test(), "not a positive number");
}

TEST(Gray, AfterTheLastEventThatFindsTwoGroupsNothingCounts) {
  // cmprsk on the rows censored after time 3; the incidence is 1 at time 5, where the weight is
  // infinite.
  Data data{{5, 3, 4, 2, 4, 1, 2, 3}, {1, 1, 1, 1, 1, 1, 2, 1}, {0, 1, 0, 1, 0, 1, 1, 0}};
  data.options.rho = -1;
  EXPECT_NEAR(data.test().chiSquare, 2.000509517498852, 1e-12);
  for (std::uint32_t& group : data.group) group = 1 - group;
  EXPECT_NEAR(data.test().chiSquare, 2.000509517498852, 1e-12);
}

TEST(Gray, AnOverflowingWeightIsNoTest) {
  Data data = liverTrial();
  data.options.cause = 2;
  data.options.rho = -1e4;
  expectNone(data.test(), "not a positive number");
}

TEST(Gray, TheOrderOfTheRowsDoesNotMatter) {
  Data data = liverTrial();
  data.options.cause = 2;
  const double chiSquare = data.test().chiSquare;
  std::vector<double> time(data.time.rbegin(), data.time.rend());
  std::vector<std::uint32_t> status(data.status.rbegin(), data.status.rend());
  std::vector<std::uint32_t> group(data.group.rbegin(), data.group.rend());
  data.time = time;
  data.status = status;
  data.group = group;
  EXPECT_NEAR(data.test().chiSquare, chiSquare, 1e-13);
}

TEST(Gray, StrataThatCompareTheSameTwoGroupsAddUp) {
  // A stratum of its own copy doubles score and variance, and so the statistic.
  Data data{{1, 2, 3, 4, 5, 6}, {1, 2, 1, 0, 1, 1}, {0, 1, 1, 0, 0, 1}};
  const double once = data.test().chiSquare;
  Data twice = data;
  for (auto* column : {&twice.status, &twice.group}) {
    const std::vector<std::uint32_t> copy = *column;
    column->insert(column->end(), copy.begin(), copy.end());
  }
  const std::vector<double> times = data.time;
  twice.time.insert(twice.time.end(), times.begin(), times.end());
  twice.stratum.assign(12, 0);
  std::fill(twice.stratum.begin() + 6, twice.stratum.end(), 1u);
  twice.strata = 2;
  EXPECT_NEAR(twice.test().chiSquare, 2 * once, 1e-14 * once);  // the same sums twice
}

TEST(Gray, GroupsThatNoStratumComparesMakeSetsOfTheirOwn) {
  // Groups 0 and 1 meet in the first stratum only, 2 and 3 in the second.
  const std::vector<double> time = {1, 2, 3, 4, 5, 6};
  const std::vector<std::uint32_t> status = {1, 2, 1, 0, 1, 1}, group = {0, 1, 1, 0, 0, 1};
  const double once = Data{time, status, group}.test().chiSquare;
  Data data{time, status, group, 4};
  data.strata = 2;
  for (std::size_t i = 0; i < 6; ++i) {
    data.time.push_back(time[i]);
    data.status.push_back(status[i]);
    data.group.push_back(group[i] + 2);
  }
  for (std::uint32_t i = 0; i < 12; ++i) data.stratum.push_back(i / 6);
  const GrayTest result = data.test();
  EXPECT_EQ(result.degreesOfFreedom, 2);
  EXPECT_NEAR(result.chiSquare, 2 * once, 1e-14 * once);
  EXPECT_EQ(result.included, std::vector<bool>(4, true));
}

TEST(Gray, AFrequencyStandsForAsManyRows) {
  Data data = liverTrial("stage");
  data.options.cause = 2;
  data.options.rho = 1;
  Data rows{{}, {}, {}, 4, data.options};
  for (std::size_t i = 0; i < data.time.size(); ++i) {
    data.weight.push_back(static_cast<double>(i % 3));  // 0 takes no part
    for (std::size_t k = 0; k < i % 3; ++k) {
      rows.time.push_back(data.time[i]);
      rows.status.push_back(data.status[i]);
      rows.group.push_back(data.group[i]);
    }
  }
  EXPECT_NEAR(data.test().chiSquare, rows.test().chiSquare, 1e-12 * rows.test().chiSquare);
}

TEST(Gray, SeveralCausesAreTestedAsOneByOne) {
  Data data = liverTrial("stage");
  const std::vector<std::uint32_t> causes = {2, 1};
  const auto tests = engine::incidence::grayTests(data.response(), data.rows(), {data.group, 4},
                                                  causes, data.options);
  ASSERT_EQ(tests.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    data.options.cause = causes[i];
    EXPECT_EQ(tests[i].chiSquare, data.test().chiSquare);
  }
}

TEST(Gray, PairsLookAtTheirOwnRowsOnly) {
  const Data data{
      {1, 1, 2, 3, 4, 5, 6, 0.5, 0.7}, {1, 2, 1, 0, 1, 1, 2, 0, 2}, {0, 0, 0, 0, 2, 2, 2, 1, 1}, 3};
  const auto pairs = engine::incidence::grayPairs(data.response(), data.rows(), {data.group, 3}, {},
                                                  engine::curves::Adjustment::kBonferroni);
  ASSERT_EQ(pairs.size(), 3u);
  EXPECT_TRUE(std::isnan(pairs[0].pValue));                    // group 1 has left
  EXPECT_NEAR(pairs[1].chiSquare, 1.7667838419961799, 1e-12);  // cmprsk
  EXPECT_EQ(pairs[1].adjusted, pairs[1].pValue);               // the only one there is
  EXPECT_TRUE(std::isnan(pairs[2].pValue));
}

std::string refusalOf(const engine::Response& response, const engine::Rows& rows,
                      const engine::incidence::GrayOptions& options) {
  const std::vector<std::uint32_t> group(response.rows(), 0);
  try {
    engine::incidence::grayTest(response, rows, {group, 2}, options);
  } catch (const Refusal& refused) {
    return nameOf(refused.role()) + ": " + refused.what();
  }
  return "taken";
}

TEST(Gray, RefusesWhatItCannotTake) {
  const std::vector<double> time = {1, 2, 3}, entry = {0, 0, 1}, weight = {1, 1, 2};
  const std::vector<std::uint32_t> status = {1, 2, 0}, cluster = {0, 0, 1};
  const engine::Response response{{}, time, status, 2};
  EXPECT_EQ(refusalOf(response, {}, {}), "taken");
  EXPECT_EQ(refusalOf({entry, time, status, 2}, {}, {}), "entry: Gray's test takes no late entry");
  engine::Rows rows;
  rows.weight = weight;
  rows.weightKind = engine::WeightKind::kSampling;
  EXPECT_EQ(refusalOf(response, rows, {}), "weight: Gray's test takes no sampling weights");
  rows = {};
  rows.cluster = cluster;
  rows.clusters = 2;
  EXPECT_EQ(refusalOf(response, rows, {}), "cluster: Gray's test takes no clusters");
  for (const std::uint32_t cause : {0u, 3u}) {
    EXPECT_EQ(refusalOf(response, {}, {.cause = cause}),
              "event: the cause that is tested is none of the causes");
  }
  for (const double rho :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(refusalOf(response, {}, {.rho = rho}), "rho: rho is not finite");
  }
  rows = {};
  rows.offset = weight;
  try {
    engine::incidence::Ordered(response, rows, {});
    ADD_FAILURE() << "taken";
  } catch (const Refusal& refused) {
    EXPECT_EQ(refused.role(), engine::Role::kOffset);
    EXPECT_STREQ(refused.what(), "Incidences take no offset");
  }
}

TEST(Gray, OneOrderServesTestsPairsAndCurves) {
  const Data data = liverTrial("stage");
  const engine::incidence::Groups groups{data.group, data.groups};
  const engine::incidence::Ordered ordered(data.response(), data.rows(), groups);
  const std::vector<std::uint32_t> causes{2, 1};
  const std::vector<GrayTest> tests = engine::incidence::grayTests(ordered, causes, {});
  Data second = data;
  second.options.cause = 2;
  EXPECT_EQ(tests[0].chiSquare, second.test().chiSquare);
  EXPECT_EQ(tests[1].chiSquare, data.test().chiSquare);
  EXPECT_EQ(engine::incidence::Causes(ordered).sample.time,
            engine::incidence::Causes(data.response(), data.rows(), groups).sample.time);
  const auto pairs = engine::incidence::grayPairs(ordered, {}, engine::curves::Adjustment::kNone);
  const auto apart = engine::incidence::grayPairs(data.response(), data.rows(), groups, {},
                                                  engine::curves::Adjustment::kNone);
  ASSERT_EQ(pairs.size(), 6u);
  for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(pairs[i].chiSquare, apart[i].chiSquare);
}

}  // namespace
}  // namespace survmeth
