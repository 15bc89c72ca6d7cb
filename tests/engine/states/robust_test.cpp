// Robust errors of states by survfit's influences, and by what must hold of them.
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "tests/engine/states/data.h"

namespace survmeth {
namespace {

using engine::states::Estimates;
using engine::states::Options;
using test::Csv;
using test::states::Data;
using test::states::dataSet;
using test::states::kFolder;
using test::states::Numbers;

// Sums of some hundred influences on either side: 1e-10 of the value, which is the fourth root of
// nothing that cancels; an error that is 0 is the root of what rounding leaves of squares below
// 0.01.
void expectNear(const Numbers& actual, const Numbers& expected, const std::string& what) {
  ASSERT_EQ(actual.size(), expected.size()) << what;
  for (std::size_t i = 0; i < actual.size(); ++i) {
    EXPECT_NEAR(actual[i], expected[i], 1e-10 * std::fabs(expected[i]) + 1e-10) << what << " " << i;
  }
}

Data robustSet(const std::string& name, bool weighted, bool clustered) {
  Data data = dataSet(name);
  const double weights[] = {0.5, 1, 2.5, 1.5};
  data.clusters = clustered ? 7 : 0;
  data.weightKind = engine::WeightKind::kSampling;
  for (const std::uint32_t id : data.subject) {
    if (weighted) data.weight.push_back(weights[id % 4]);
    if (clustered) data.cluster.push_back(id % 7);
  }
  return data;
}

TEST(RobustStates, AgreeWithSurvfit) {
  const Csv file(kFolder + "states_robust.csv");
  std::map<std::string, std::map<std::string, Numbers>> cases;
  for (std::size_t i = 0; i < file.rows(); ++i) {
    cases[file.text("set", i) + " " + file.text("start", i) + " " + file.text("weighted", i) + " " +
          file.text("clustered", i)][file.text("item", i)]
        .push_back(file.number("value", i));
  }
  ASSERT_EQ(cases.size(), 16u);
  for (const auto& [name, items] : cases) {
    const std::string tail = name.substr(name.find(' ') + 1);  // "start weighted clustered"
    const Data data =
        robustSet(name.substr(0, name.find(' ')), tail[tail.size() - 3] == '1', tail.back() == '1');
    Options options;
    options.start = std::stod(tail);
    options.horizon = items.at("tau")[0];
    options.robust = true;
    const Estimates found = data.estimate(options);
    EXPECT_TRUE(found.robust);
    Numbers probability, error, stayError, hazardError;
    for (const double time : items.at("time")) {
      const auto at = static_cast<std::size_t>(
          std::find(found.time.begin(), found.time.end(), time) - found.time.begin());
      ASSERT_LT(at, found.time.size());
      for (const auto& state : found.states) {
        probability.push_back(state.probability[at]);
        error.push_back(std::sqrt(state.variance[at]));
      }
      for (const auto& transition : found.transitions) {
        const auto after = std::upper_bound(transition.time.begin(), transition.time.end(), time);
        const auto count = after - transition.time.begin();
        hazardError.push_back(
            count == 0 ? 0.0
                       : std::sqrt(transition.hazardVariance[static_cast<std::size_t>(count - 1)]));
      }
    }
    for (const auto& each : found.stays) stayError.push_back(each.standardError);
    expectNear(found.initial, items.at("initial"), name + " initial");
    expectNear(probability, items.at("probability"), name + " probability");
    expectNear(error, items.at("error"), name + " error");
    expectNear(stayError, items.at("stayError"), name + " error of stay");
    expectNear(hazardError, items.at("hazardError"), name + " error of hazard");
  }
}

TEST(RobustStates, ErrorsFollowFromClustersAndSamplingWeightsUnasked) {
  EXPECT_TRUE(robustSet("sir", true, false).estimate({}).robust);
  EXPECT_TRUE(robustSet("sir", false, true).estimate({}).robust);
  EXPECT_FALSE(robustSet("sir", false, false).estimate({}).robust);
}

TEST(RobustStates, AShareOfPeopleHasTheBinomialError) {
  // Two of eight are ill from time 1 on, nobody is censored.
  Data data;
  data.states = 2;
  for (std::uint32_t i = 0; i < 8; ++i) {
    data.entry.push_back(0);
    data.exit.push_back(i < 2 ? 1 : 2);
    data.from.push_back(1);
    data.to.push_back(i < 2 ? 2 : 0);
    data.subject.push_back(i);
  }
  Options options;
  options.robust = true;
  options.horizon = 2;
  const Estimates found = data.estimate(options);
  EXPECT_NEAR(found.states[1].variance[0], 0.25 * 0.75 / 8, 1e-17);
  EXPECT_NEAR(found.stays[1].standardError, std::sqrt(0.25 * 0.75 / 8), 1e-16);
}

// Runs of steps are summarised above 256 times.
TEST(RobustStates, LongHistoriesTimesApartGiveWhatTheSameTimesScaledGive) {
  Data data;
  data.states = 3;
  data.subjects = 900;
  for (std::uint32_t i = 0; i < 900; ++i) {
    const double ill = 1 + (i * 7919) % 907, dead = ill + 1 + (i * 104729) % 911;
    data.entry.insert(data.entry.end(), {0, ill});
    data.exit.insert(data.exit.end(), {ill, dead});
    data.from.insert(data.from.end(), {1, 2});
    data.to.insert(data.to.end(), {2, i % 3 == 0 ? 0u : 3u});
    data.subject.insert(data.subject.end(), {i, i});
  }
  Options options;
  options.robust = true;
  options.horizon = 1500;
  const Estimates found = data.estimate(options);
  // By the definition: the influences of all subjects, step by step.
  const std::size_t n = 900;
  std::vector<std::vector<double>> u(n, std::vector<double>(3, 0.0)), area = u;
  std::vector<double> p{1, 0, 0};
  double before = 0;
  for (std::size_t s = 0; s <= found.time.size(); ++s) {
    const double now = s < found.time.size() ? std::min(found.time[s], 1500.0) : 1500.0;
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < 3; ++j) area[i][j] += std::max(now - before, 0.0) * u[i][j];
    }
    before = std::max(before, now);
    if (s == found.time.size()) break;
    double atRisk[2] = {}, events[2] = {};
    const auto inState = [&](std::size_t row) {
      return data.entry[row] < found.time[s] && found.time[s] <= data.exit[row];
    };
    const auto moves = [&](std::size_t row) {
      return data.exit[row] == found.time[s] && data.to[row] != 0;
    };
    for (std::size_t row = 0; row < 2 * n; ++row) {
      if (!inState(row)) continue;
      atRisk[row % 2] += 1;
      if (moves(row)) events[row % 2] += 1;
    }
    double share[2];
    for (std::size_t h = 0; h < 2; ++h) share[h] = atRisk[h] > 0 ? events[h] / atRisk[h] : 0;
    const std::vector<double> was = p;
    for (std::size_t i = 0; i < n; ++i) {
      const std::vector<double> old = u[i];
      for (std::size_t h = 0; h < 2; ++h) {
        double moved = old[h] * share[h];
        if (inState(2 * i + h)) {
          moved += was[h] / atRisk[h] * ((moves(2 * i + h) ? 1 : 0) - share[h]);
        }
        u[i][h] -= moved;
        u[i][h + 1] += moved;
      }
    }
    for (std::size_t h = 2; h-- > 0;) {
      p[h + 1] += was[h] * share[h];
      p[h] -= was[h] * share[h];
    }
    Numbers expected(3, 0.0), actual;
    for (std::size_t j = 0; j < 3; ++j) {
      for (std::size_t i = 0; i < n; ++i) expected[j] += u[i][j] * u[i][j];
      expected[j] = std::sqrt(expected[j]);
      actual.push_back(std::sqrt(found.states[j].variance[s]));
    }
    expectNear(actual, expected, "time " + std::to_string(found.time[s]));
  }
  for (std::size_t j = 0; j < 3; ++j) {
    double expected = 0;
    for (std::size_t i = 0; i < n; ++i) expected += area[i][j] * area[i][j];
    EXPECT_NEAR(found.stays[j].standardError, std::sqrt(expected), 1e-10 * std::sqrt(expected));
  }
}

}  // namespace
}  // namespace survmeth
