// Histories through states: probabilities, hazards and times in states as etm has them, by hand, and
// what is wrong with histories.
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "tests/engine/states/data.h"
#include "tests/support/role.h"

namespace survmeth {
namespace {

using engine::Refusal;
using engine::states::Estimates;
using engine::states::Fault;
using engine::states::Histories;
using engine::states::kNowhere;
using engine::states::Options;
using test::Csv;

using test::states::Codes;
using test::states::Data;
using test::states::dataSet;
using test::states::kFolder;
using test::states::Numbers;

// Sums of some hundred terms on either side: 1e-11 of the value; of a variance that is 0 rounding
// leaves the last place of its terms, which are below 0.01.
void expectNear(const Numbers& actual, const Numbers& expected, const std::string& what) {
  ASSERT_EQ(actual.size(), expected.size()) << what;
  for (std::size_t i = 0; i < actual.size(); ++i) {
    EXPECT_NEAR(actual[i], expected[i], 1e-11 * std::fabs(expected[i]) + 1e-17) << what << " " << i;
  }
}

TEST(States, AgreeWithEtmAndTheDefinition) {
  const Csv file(kFolder + "states.csv");
  std::map<std::string, std::map<std::string, Numbers>> cases;
  for (std::size_t i = 0; i < file.rows(); ++i) {
    cases[file.text("set", i) + " " + file.text("start", i) + " " + file.text("first", i)]
         [file.text("item", i)]
             .push_back(file.number("value", i));
  }
  ASSERT_EQ(cases.size(), 12u);
  for (const auto& [name, items] : cases) {
    const Data data = dataSet(name.substr(0, name.find(' ')));
    Options options;
    options.start = std::stod(name.substr(name.find(' ')));
    options.horizon = items.at("tau")[0];
    if (name.back() != '0') options.initial = items.at("initial");
    const Estimates found = data.estimate(options);
    expectNear(found.initial, items.at("initial"), name + " initial");
    Numbers probability, variance, hazard, hazardVariance, stay, stayError;
    for (const double time : items.at("time")) {
      const auto at = static_cast<std::size_t>(
          std::find(found.time.begin(), found.time.end(), time) - found.time.begin());
      ASSERT_LT(at, found.time.size());
      for (const auto& state : found.states) {
        probability.push_back(state.probability[at]);
        variance.push_back(state.variance[at]);
      }
    }
    expectNear(probability, items.at("probability"), name + " probability");
    expectNear(variance, items.at("variance"), name + " variance");
    for (const auto& each : found.stays) {
      stay.push_back(each.time);
      stayError.push_back(each.standardError);
    }
    expectNear(stay, items.at("stay"), name + " stay");
    expectNear(stayError, items.at("stayError"), name + " error of stay");
    if (items.count("hazard") == 0) continue;
    for (const double time : items.at("time")) {
      for (const auto& transition : found.transitions) {
        const auto after = std::upper_bound(transition.time.begin(), transition.time.end(), time);
        const auto count = static_cast<std::size_t>(after - transition.time.begin());
        hazard.push_back(count == 0 ? 0.0 : transition.hazard[count - 1]);
        hazardVariance.push_back(count == 0 ? 0.0 : transition.hazardVariance[count - 1]);
      }
    }
    expectNear(hazard, items.at("hazard"), name + " hazard");
    expectNear(hazardVariance, items.at("hazardVariance"), name + " variance of hazard");
  }
}

// Ill (state 2) at 1 of 2 who are well, who dies (3) at 3; the other leaves at 4.
Data illness() { return {{0, 1, 0}, {1, 3, 4}, {1, 2, 1}, {2, 3, 0}, {0, 0, 1}, 3}; }

TEST(States, AreSharesWhereNobodyIsCensored) {
  Options options;
  options.horizon = 4;
  const Estimates found = illness().estimate(options);
  EXPECT_EQ(found.time, (Numbers{1, 3}));
  EXPECT_EQ(found.states[0].probability, (Numbers{0.5, 0.5}));
  EXPECT_EQ(found.states[1].probability, (Numbers{0.5, 0}));
  EXPECT_EQ(found.states[2].probability, (Numbers{0, 0.5}));
  EXPECT_NEAR(found.states[2].variance[1], 0.5 * 0.5 / 2, 1e-16);
  EXPECT_EQ(found.states[0].atRisk, (Numbers{2, 1}));
  EXPECT_EQ(found.stays[0].time, 1 + 3 * 0.5);
  EXPECT_EQ(found.stays[1].time, 1);
  EXPECT_EQ(found.stays[2].time, 0.5);
  EXPECT_FALSE(found.extended);
  EXPECT_EQ(found.followed, 4);
  ASSERT_EQ(found.transitions.size(), 2u);
  EXPECT_EQ(found.transitions[1].from, 1u);
  EXPECT_EQ(found.transitions[1].time, Numbers{3});
  EXPECT_EQ(found.transitions[1].hazard, Numbers{1});
}

TEST(States, AreCarriedOnWhereSomebodyIsLeft) {
  Options options;
  options.horizon = 5;
  EXPECT_TRUE(illness().estimate(options).extended);  // one was well at 4
  Data data = illness();
  data.to[2] = 3;  // and dies then
  EXPECT_FALSE(data.estimate(options).extended);
}

TEST(States, AFrequencyStandsForAsManyRows) {
  Data data = dataSet("made");
  Data rows = data;
  for (std::size_t i = 0; i < data.exit.size(); ++i) {
    data.weight.push_back(static_cast<double>(i % 3));
    if (i % 3 == 2) {
      rows.entry.push_back(data.entry[i]);
      rows.exit.push_back(data.exit[i]);
      rows.from.push_back(data.from[i]);
      rows.to.push_back(data.to[i]);
    }
  }
  for (std::size_t i = data.exit.size(); i-- > 0;) {
    if (i % 3 != 0) continue;
    const auto at = static_cast<std::ptrdiff_t>(i);
    rows.entry.erase(rows.entry.begin() + at);
    rows.exit.erase(rows.exit.begin() + at);
    rows.from.erase(rows.from.begin() + at);
    rows.to.erase(rows.to.begin() + at);
  }
  const Estimates a = data.estimate({}), b = rows.estimate({});
  for (std::size_t j = 0; j < 4; ++j) {
    EXPECT_EQ(a.states[j].probability, b.states[j].probability);  // the same whole numbers
    EXPECT_EQ(a.states[j].variance, b.states[j].variance);
  }
}

std::string refusalOf(const Data& data, const Options& options = {}) {
  try {
    data.check();
    data.estimate(options);
  } catch (const Refusal& refused) {
    const std::string row =
        refused.row() == Refusal::kNone ? "" : " " + std::to_string(refused.row());
    return nameOf(refused.role()) + row + ": " + refused.what();
  }
  return "taken";
}

TEST(States, RefuseWhatIsNoHistory) {
  const Data good = illness();
  EXPECT_EQ(refusalOf(good), "taken");
  Data data = good;
  data.from.pop_back();
  EXPECT_EQ(refusalOf(data), "time: the columns differ in length");
  data = good;
  data.from[1] = 4;
  EXPECT_EQ(refusalOf(data), "event 1: a state code is out of range");
  data = good;
  data.to[1] = 4;
  EXPECT_EQ(refusalOf(data), "event 1: a state code is out of range");
  data = good;
  data.to[1] = 2;
  EXPECT_EQ(refusalOf(data), "event 1: a row leads to the state that it is in");
  data = good;
  data.subject[2] = 100;
  EXPECT_EQ(refusalOf(data), "subject 2: a subject code is out of range");
  data = good;
  data.entry[2] = 4;
  EXPECT_EQ(refusalOf(data), "entry 2: entry is not before exit");
  EXPECT_EQ(refusalOf(good, {.start = 2, .initial = {}, .horizon = 2}),
            "another role: the horizon is not after the start");
  EXPECT_EQ(refusalOf(good, {.start = 9, .initial = {}}),
            "another role: nobody is at risk at the start");
  for (const Numbers& initial : {Numbers{1, 0}, Numbers{1, 1, 0}, Numbers{2, -1, 0}}) {
    EXPECT_EQ(refusalOf(good, {.start = 0, .initial = initial}),
              "another role: the initial probabilities are not one of each state, of sum 1");
  }
}

TEST(States, FaultsOfHistoriesAreNamedWithTheirRows) {
  // Of subject 0 the second row overlaps; of 1 there is a gap; 2 jumps; 3 moves without a
  // transition; 4 is fine, in another order.
  const Data data{{0, 1, 0, 4, 0, 2, 0, 2, 3, 0}, {2, 3, 3, 5, 2, 4, 2, 4, 5, 3},
                  {1, 2, 1, 1, 1, 1, 1, 2, 2, 1}, {2, 0, 0, 0, 2, 0, 0, 0, 0, 2},
                  {0, 0, 1, 1, 2, 2, 3, 3, 4, 4}, 3};
  const std::vector<Fault> faults = data.check();
  ASSERT_EQ(faults.size(), 4u);
  const Fault::Kind kinds[] = {Fault::Kind::kOverlap, Fault::Kind::kGap, Fault::Kind::kJump,
                               Fault::Kind::kJump};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(faults[i].kind, kinds[i]) << i;
    EXPECT_EQ(faults[i].first, 2 * i);
    EXPECT_EQ(faults[i].second, 2 * i + 1);
  }
}

}  // namespace
}  // namespace survmeth
