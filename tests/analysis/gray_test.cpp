// Gray's test as people get it: R's numbers, and a word for every test that does not exist.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "analysis/grayTest.h"
#include "tests/support/csv.h"
#include "tests/support/role.h"

namespace {

using survmeth::GrayRequest;
using survmeth::GrayResult;
using survmeth::engine::Refusal;
using survmeth::test::Csv;

// Columns that own what a request points to.
struct Data {
  std::vector<double> time;
  std::vector<std::uint32_t> status, group;
  std::size_t groups = 2;
  std::uint32_t event = 1;
  double rho = 0;

  GrayRequest request() const {
    return {.time = time,
            .status = status,
            .group = group,
            .groups = groups,
            .event = event,
            .rho = rho};
  }
  GrayResult test() const { return survmeth::grayTest(request()); }
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

void expectNone(const GrayResult& result, const std::string& reason) {
  EXPECT_NE(result.reason.find(reason), std::string::npos) << result.reason;
  EXPECT_TRUE(std::isnan(result.chiSquare));
  EXPECT_TRUE(std::isnan(result.degreesOfFreedom));
  EXPECT_TRUE(std::isnan(result.pValue));
}

TEST(GrayTest, TheLiverTrialAgreesWithCmprsk) {
  const Csv reference(SURVMETH_REFERENCE "/gray_pbc.csv");
  ASSERT_EQ(reference.rows(), 6u);
  for (std::size_t i = 0; i < reference.rows(); ++i) {
    Data data = liverTrial(reference.text("group", i));
    data.event = static_cast<std::uint32_t>(reference.number("event", i));
    data.rho = reference.number("rho", i);
    const GrayResult result = data.test();
    EXPECT_EQ(result.reason, "");
    EXPECT_NEAR(result.chiSquare, reference.number("stat", i), 1e-10);
    EXPECT_NEAR(result.pValue, reference.number("pv", i), 1e-10);
    EXPECT_EQ(result.degreesOfFreedom, reference.number("df", i));
    EXPECT_EQ(result.included, std::vector<bool>(data.groups, true));
  }
}

TEST(GrayTest, ThreeGroupsAgreeWithCmprsk) {
  const Data data{{1, 1, 2, 3, 4, 5, 6, 1}, {1, 2, 1, 0, 1, 1, 2, 0}, {0, 0, 0, 0, 1, 1, 1, 2}, 3};
  const GrayResult result = data.test();
  EXPECT_NEAR(result.chiSquare, 2.0433503616783355, 1e-12);
  EXPECT_NEAR(result.pValue, 0.3599913841125166, 1e-12);
  EXPECT_EQ(result.degreesOfFreedom, 2);
}

TEST(GrayTest, WhichGroupComesLastDoesNotMatter) {
  Data data{{1, 1, 2, 3, 4, 5, 6, 1}, {1, 2, 1, 0, 1, 1, 2, 0}, {0, 0, 0, 0, 1, 1, 1, 2}, 3};
  const double chiSquare = data.test().chiSquare;
  for (std::uint32_t& group : data.group) group = (group + 1) % 3;
  EXPECT_NEAR(data.test().chiSquare, chiSquare, 1e-13);
}

// Where the entry point, given the group, would say "no difference".
TEST(GrayTest, AGroupThatHasLeftBeforeTheFirstEventHasNoPart) {
  const Data three{
      {1, 1, 2, 3, 4, 5, 6, 0.5, 0.7}, {1, 2, 1, 0, 1, 1, 2, 0, 2}, {0, 0, 0, 0, 2, 2, 2, 1, 1}, 4};
  const GrayResult result = three.test();
  EXPECT_EQ(result.included, (std::vector<bool>{true, false, true, false}));
  EXPECT_EQ(result.degreesOfFreedom, 1);
  // cmprsk on the two groups that are left.
  EXPECT_NEAR(result.chiSquare, 1.7667838419961799, 1e-12);
  EXPECT_NEAR(result.pValue, 0.1837806052575719, 1e-12);
}

TEST(GrayTest, EqualGroupsDifferByNothing) {
  const Data data{{1, 2, 3, 4, 1, 2, 3, 4}, {1, 2, 1, 0, 1, 2, 1, 0}, {0, 0, 0, 0, 1, 1, 1, 1}};
  const GrayResult result = data.test();
  EXPECT_EQ(result.reason, "");
  EXPECT_NEAR(result.chiSquare, 0, 1e-14);
  EXPECT_NEAR(result.pValue, 1, 1e-7);
}

TEST(GrayTest, NoneExistsWithoutAnEventOfTheType) {
  Data data{{1, 2, 3, 4}, {2, 2, 0, 2}, {0, 1, 0, 1}};
  expectNone(data.test(), "no event of the type");
  EXPECT_EQ(data.test().included, std::vector<bool>(2, false));
}

TEST(GrayTest, NoneExistsWithOneGroupAtRisk) {
  const Data gone{{1, 2, 3, 4}, {2, 0, 1, 1}, {0, 0, 1, 1}};
  expectNone(gone.test(), "only one group");
  const Data one{{1, 2, 3, 4}, {1, 0, 1, 1}, {0, 0, 0, 0}, 1};
  expectNone(one.test(), "only one group");
}

TEST(GrayTest, NoneExistsWhenAllAtRiskFallTogether) {
  const Data data{{1, 2, 5, 5, 5, 5}, {0, 0, 1, 1, 1, 1}, {0, 1, 0, 0, 1, 1}};
  expectNone(data.test(), "all who are at risk have the event together");
  // Three groups need competing events in two.
  const Data three{{1, 5, 5, 5, 5}, {2, 1, 1, 1, 1}, {0, 0, 1, 1, 2}, 3};
  expectNone(three.test(), "all who are at risk have the event together");
}

TEST(GrayTest, CompetingEventsBeforeThatMakeUpAVariance) {
  const Data data{
      {1, 1, 2, 5, 5, 5, 5, 5, 5}, {2, 2, 2, 1, 1, 1, 1, 1, 1}, {0, 0, 1, 0, 0, 1, 1, 1, 1}};
  EXPECT_NEAR(data.test().chiSquare, 0.6906935621193263, 1e-12);  // cmprsk
}

// cmprsk reports a negative statistic here.
TEST(GrayTest, NoneExistsWhereTheCorrectionForTiesTurnsTheVarianceNegative) {
  const Data data{
      {2, 2, 2, 2, 2, 1, 1, 1, 1}, {1, 1, 1, 1, 1, 0, 1, 1, 2}, {0, 2, 2, 2, 1, 0, 2, 1, 0}, 3};
  expectNone(data.test(), "not a positive number");
}

TEST(GrayTest, AfterTheLastEventThatFindsTwoGroupsNothingCounts) {
  // cmprsk on the rows censored after time 3; the incidence is 1 at time 5, where the weight is
  // infinite.
  Data data{{5, 3, 4, 2, 4, 1, 2, 3}, {1, 1, 1, 1, 1, 1, 2, 1}, {0, 1, 0, 1, 0, 1, 1, 0}};
  data.rho = -1;
  EXPECT_NEAR(data.test().chiSquare, 2.000509517498852, 1e-12);
  for (std::uint32_t& group : data.group) group = 1 - group;
  EXPECT_NEAR(data.test().chiSquare, 2.000509517498852, 1e-12);
}

TEST(GrayTest, AnOverflowingWeightIsNoTest) {
  Data data = liverTrial();
  data.event = 2;
  data.rho = -1e4;
  expectNone(data.test(), "not a positive number");
}

TEST(GrayTest, TheOrderOfTheRowsDoesNotMatter) {
  Data data = liverTrial();
  data.event = 2;
  const double chiSquare = data.test().chiSquare;
  std::vector<double> time(data.time.rbegin(), data.time.rend());
  std::vector<std::uint32_t> status(data.status.rbegin(), data.status.rend());
  std::vector<std::uint32_t> group(data.group.rbegin(), data.group.rend());
  data.time = time;
  data.status = status;
  data.group = group;
  EXPECT_NEAR(data.test().chiSquare, chiSquare, 1e-13);
}

void expectRefusal(const Data& data, const std::string& member,
                   std::optional<std::size_t> index = std::nullopt) {
  try {
    data.test();
    ADD_FAILURE() << "accepted, although " << member << " is wrong";
  } catch (const Refusal& refused) {
    EXPECT_EQ(nameOf(refused.role()), member);
    EXPECT_EQ(indexOf(refused), index);
  }
}

TEST(GrayTest, RefusesWhatIsNoData) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const Data good{{1, 2, 3, 4}, {1, 2, 1, 0}, {0, 0, 1, 1}};
  EXPECT_NO_THROW(good.test());
  for (const double bad : {-1.0, nan, inf}) {
    Data data = good;
    data.time[2] = bad;
    expectRefusal(data, "time", 2);
  }
  expectRefusal({}, "time");
  Data data = good;
  data.status.pop_back();
  expectRefusal(data, "time");
  data = good;
  data.group[1] = 2;
  expectRefusal(data, "group", 1);
  data = good;
  data.event = 0;
  expectRefusal(data, "event");
  for (const double bad : {nan, inf}) {
    data = good;
    data.rho = bad;
    expectRefusal(data, "rho");
  }
}

}  // namespace
