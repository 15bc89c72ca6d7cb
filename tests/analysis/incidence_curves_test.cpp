// Cumulative incidence under competing risks, by hand and as R's cmprsk has it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "analysis/incidenceCurves.h"
#include "engine/input.h"
#include "tests/support/csv.h"

namespace {

using survmeth::IncidenceCurve;
using survmeth::engine::Refusal;
using survmeth::test::Csv;

struct Data {
  std::vector<double> time;
  std::vector<std::uint32_t> status, group;
  std::size_t groups = 1;

  std::vector<IncidenceCurve> curves(std::uint32_t event) const {
    return survmeth::incidenceCurves({time, status, group, groups, event});
  }
};

using Numbers = std::vector<double>;

TEST(IncidenceCurves, AreSumsOfSurvivalTimesTheShareWhoHaveTheEvent) {
  // 5 at risk: 1 of type 1 at 2, S = 4/5; at 3 one of each of 4, then 1 left; censored at 5; 4 hits
  // the last one at 8.
  const Data data{{3, 2, 8, 3, 5}, {2, 1, 1, 1, 0}, {0, 0, 0, 0, 0}};
  const IncidenceCurve one = data.curves(1)[0], two = data.curves(2)[0];
  EXPECT_EQ(one.time, (Numbers{2, 3, 5, 8}));
  EXPECT_EQ(one.atRisk, (Numbers{5, 4, 2, 1}));
  EXPECT_EQ(one.censored, (Numbers{0, 0, 1, 0}));
  const Numbers ones = {1.0 / 5, 2.0 / 5, 2.0 / 5, 4.0 / 5}, twos = {0, 1.0 / 5, 1.0 / 5, 1.0 / 5};
  for (std::size_t i = 0; i < ones.size(); ++i) {
    EXPECT_NEAR(one.incidence[i], ones[i], 1e-15);  // a few roundings of numbers below 1
    EXPECT_NEAR(two.incidence[i], twos[i], 1e-15);
  }
}

TEST(IncidenceCurves, OfRowsThatAreAllCensoredStayAtZero) {
  const Data data{{1, 2}, {0, 0}, {0, 0}};
  EXPECT_EQ(data.curves(1)[0].incidence, (Numbers{0, 0}));
}

TEST(IncidenceCurves, AgreeWithCmprsk) {
  const Csv reference(SURVMETH_REFERENCE "/incidence.csv");
  const Csv random(SURVMETH_REFERENCE "/gray_random_data.csv"), trial(SURVMETH_DATA "/pbc.csv");
  std::size_t compared = 0;
  for (const std::string set : {"pbc", "1", "14", "35"}) {
    const bool isTrial = set == "pbc";
    const Csv& csv = isTrial ? trial : random;
    Data data;
    for (std::size_t i = 0; i < csv.rows(); ++i) {
      if (!isTrial && csv.text("set", i) != set) continue;
      const double group = csv.number(isTrial ? "trt" : "group", i);
      if (std::isnan(group)) continue;
      data.time.push_back(csv.number("time", i));
      data.status.push_back(static_cast<std::uint32_t>(csv.number("status", i)));
      data.group.push_back(static_cast<std::uint32_t>(group) - 1);
      data.groups = std::max<std::size_t>(data.groups, data.group.back() + 1);
    }
    const std::vector<IncidenceCurve> curves[] = {data.curves(1), data.curves(2)};
    for (std::size_t i = 0; i < reference.rows(); ++i) {
      if (reference.text("set", i) != set) continue;
      const auto event = static_cast<std::size_t>(reference.number("event", i));
      const auto group = static_cast<std::size_t>(reference.number("group", i));
      const IncidenceCurve& curve = curves[event - 1].at(group - 1);
      const auto at =
          std::lower_bound(curve.time.begin(), curve.time.end(), reference.number("time", i)) -
          curve.time.begin();
      ASSERT_EQ(curve.time.at(static_cast<std::size_t>(at)), reference.number("time", i));
      // Some hundred roundings of sums below 1, here and there.
      EXPECT_NEAR(curve.incidence[static_cast<std::size_t>(at)], reference.number("incidence", i),
                  1e-13)
          << set << " group " << group << " event " << event;
      ++compared;
    }
  }
  EXPECT_EQ(compared, reference.rows());
}

TEST(IncidenceCurves, RefuseWhatIsNoRequest) {
  const auto refused = [](const Data& data, std::uint32_t event) -> std::string {
    try {
      data.curves(event);
    } catch (const Refusal& refusal) {
      return refusal.what();
    }
    return "taken";
  };
  EXPECT_EQ(refused({{}, {}, {}}, 1), "there are no rows");
  EXPECT_EQ(refused({{1}, {1, 0}, {0}}, 1), "the columns differ in length");
  EXPECT_EQ(refused({{1}, {1}, {0}}, 0), "type 0 is censoring, not an event");
  EXPECT_EQ(refused({{-1}, {1}, {0}}, 1), "a time is negative or not finite");
  EXPECT_EQ(refused({{1}, {1}, {3}}, 1), "a group code is out of range");
  EXPECT_EQ(refused({{1}, {1}, {0}, 2}, 1), "a group has no rows");
}

}  // namespace
