// Response, rows and design of a formula, held against survival::Surv, strata() and model.frame of
// R.
#include "model/response.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "frame/select.h"
#include "tests/model/data.h"
#include "tests/support/csv.h"

namespace survmeth::model {
namespace {

using Strings = std::vector<std::string>;
using Codes = std::vector<std::uint32_t>;
using Numbers = std::vector<double>;
constexpr double kNa = std::numeric_limits<double>::quiet_NaN();

ModelData modelOf(const std::string& text, const frame::Frame& data,
                  const Strings& eventValues = {}) {
  return modelData(Coding::learn(parseFormula(text), data), data, eventValues);
}

frame::Frame sample() {
  return frameOf(
      {frame::numberColumn("entry", {0, 1, 2, 0}), frame::numberColumn("time", {5, 6, 7, 8}),
       frame::numberColumn("status", {0, 1, 2, 1}), frame::numberColumn("dead", {1, 2, 2, 1}),
       labelled("end", {"alive", "dead", "tx", "dead"}), labelled("site", {"B", "A", "B", "A"}),
       labelled("sex", {"f", "m", "m", "m"}), frame::numberColumn("w", {1, 2, 4, 8})});
}

TEST(CompleteRows, AreAsManyAsInTheModelFrameOfR) {
  const frame::Frame data = patients();
  const auto jobs = tabbed("counts.txt");
  ASSERT_GE(jobs.size(), 8U);
  for (const Strings& job : jobs) {
    EXPECT_EQ(completeRows(parseFormula(job[0]), data).size(), std::stoul(job[1])) << job[0];
  }
}

TEST(Strata, CrossAllColumnsAsInR) {
  const frame::Frame data = patients();
  const ModelData made = modelOf("Surv(time, status > 0) ~ age + strata(site, sex)", data);
  const test::Csv want(reference("strata.csv"));
  Strings names;
  std::ifstream lines(reference("strata_names.txt"));
  for (std::string line; std::getline(lines, line);) names.push_back(line);
  EXPECT_EQ(made.strataNames, names);
  ASSERT_EQ(made.stratum.size(), want.rows());
  for (std::size_t i = 0; i < want.rows(); ++i) {
    ASSERT_EQ(made.stratum[i], want.number("strata", i));
    ASSERT_EQ(made.stratum[i], want.number("crossed", i));
  }
  EXPECT_EQ(made.rows().strata, names.size());
  const ModelData apart = modelOf("Surv(time, status > 0) ~ strata(site) + strata(sex)", data);
  EXPECT_EQ(apart.stratum, made.stratum);
  EXPECT_EQ(apart.strataNames, made.strataNames);
}

TEST(Strata, AreOnlyThoseThatOccurInTheOrderOfTheirLabels) {
  const ModelData made = modelOf("~ strata(site, sex, w > 2)", sample());
  EXPECT_EQ(made.strataNames, (Strings{"site=A, sex=m, w > 2=FALSE", "site=A, sex=m, w > 2=TRUE",
                                       "site=B, sex=f, w > 2=FALSE", "site=B, sex=m, w > 2=TRUE"}));
  EXPECT_EQ(made.stratum, (Codes{2, 0, 3, 1}));
}

TEST(Strata, OfNumbersStandInTheirOrder) {
  const ModelData made = modelOf("~ strata(w)", sample());
  EXPECT_EQ(made.strataNames, (Strings{"w=1", "w=2", "w=4", "w=8"}));
}

TEST(Response, BorrowsTheTimes) {
  const frame::Frame data = sample();
  const ModelData made = modelOf("Surv(entry, time, dead) ~ w", data);
  const engine::Response response = made.response();
  EXPECT_EQ(response.entry.data(), data.find("entry")->numbers.data());
  EXPECT_EQ(response.exit.data(), data.find("time")->numbers.data());
  EXPECT_EQ(response.rows(), 4U);
  EXPECT_EQ(response.causes, 1U);
  EXPECT_EQ(Codes(response.event.begin(), response.event.end()), (Codes{0, 1, 1, 0}));
  EXPECT_EQ(made.note, "in \"dead\" 2 is taken for an event, 1 for censored");
}

TEST(Response, OutlivesAMove) {
  const frame::Frame data = sample();
  ModelData made = modelOf("Surv(time / 2, dead) ~ I(w * 2) + sex", data);
  const ModelData moved = std::move(made);
  EXPECT_EQ(Numbers(moved.response().exit.begin(), moved.response().exit.end()),
            (Numbers{2.5, 3, 3.5, 4}));
  EXPECT_EQ(moved.design.design.columns[0][3], 16);
  EXPECT_EQ(moved.design.design.columns[1][0], 0);
}

TEST(Response, TakesEventsFromConditionsColumnsAndValues) {
  const frame::Frame data = sample();
  EXPECT_EQ(modelOf("Surv(time, status == 2) ~ w", data).event, (Codes{0, 0, 1, 0}));
  EXPECT_EQ(modelOf("Surv(time, (status %in% c(1, 2))) ~ w", data).event, (Codes{0, 1, 1, 1}));
  EXPECT_EQ(modelOf("Surv(time, end == \"dead\") ~ w", data).event, (Codes{0, 1, 0, 1}));
  EXPECT_EQ(modelOf("Surv(time, end != \"alive\") ~ w", data).event, (Codes{0, 1, 1, 1}));
  EXPECT_EQ(modelOf("Surv(time, dead - 1) ~ w", data).event, (Codes{0, 1, 1, 0}));
  EXPECT_EQ(modelOf("Surv(time, end) ~ w", data, {"tx", "dead"}).event, (Codes{0, 1, 1, 1}));
  EXPECT_EQ(modelOf("Surv(time, status) ~ w", data, {"2"}).event, (Codes{0, 0, 1, 0}));
  EXPECT_EQ(modelOf("Surv(time, status == 2) ~ w", data).note, "");
}

TEST(Response, MayBeAbsent) {
  const frame::Frame data = sample();
  const ModelData made = modelOf("~ w", data);
  EXPECT_EQ(made.response().rows(), 0U);
  EXPECT_EQ(made.design.design.rows(), 4U);
  EXPECT_EQ(made.rows().strata, 1U);
  EXPECT_EQ(made.rows().clusters, 0U);
  EXPECT_TRUE(made.rows().offset.empty());
}

TEST(Response, MayBeNegative) {
  const frame::Frame data =
      frameOf({frame::numberColumn("time", {-3, 2}), frame::numberColumn("dead", {0, 1})});
  EXPECT_EQ(modelOf("Surv(time, dead) ~ 1", data).response().exit[0], -3);
}

TEST(ModelRows, CarryClustersAndTheSumOfOffsets) {
  const frame::Frame data = sample();
  const ModelData made =
      modelOf("Surv(time, dead) ~ w + cluster(site) + offset(w) + offset(2 * entry)", data);
  EXPECT_EQ(made.cluster, (Codes{1, 0, 1, 0}));
  EXPECT_EQ(made.rows().clusters, 2U);
  EXPECT_EQ(made.offset, (Numbers{1, 4, 8, 8}));
  EXPECT_EQ(made.rows().offset.data(), made.offset.data());
}

void expectRefused(const std::string& text, const frame::Frame& data, engine::Role role,
                   std::size_t row, const std::string& sentence, const Strings& values = {},
                   const std::string& expected = "") {
  try {
    modelOf(text, data, values);
    ADD_FAILURE() << text;
  } catch (const engine::Refusal& refusal) {
    EXPECT_EQ(refusal.role(), role) << text;
    EXPECT_EQ(refusal.row(), row) << text;
    EXPECT_STREQ(refusal.what(), sentence.c_str());
    EXPECT_EQ(refusal.expected(), expected);
  }
}

TEST(ModelData, RefusesWhatCannotBeAResponse) {
  using engine::Role;
  constexpr double kInfinite = std::numeric_limits<double>::infinity();
  const frame::Frame data =
      frameOf({frame::numberColumn("a", {0, 1, 2}), frame::numberColumn("b", {1, 1, 3}),
               frame::numberColumn("c", {2, kInfinite, 4}), frame::numberColumn("n", {2, 3, kNa}),
               frame::numberColumn("d", {0, 1, 1}), frame::numberColumn("s", {0, 1, 2}),
               labelled("g", {"x", "NA", "y"})});
  expectRefused("Surv(a, b, d) ~ 1", data, Role::kEntry, 1, "the entry 1 is not before the exit 1");
  expectRefused("Surv(c, d) ~ 1", data, Role::kTime, 1, "\"c\" is infinite");
  expectRefused("Surv(n, d) ~ 1", data, Role::kTime, 2, "\"n\" is missing");
  expectRefused("Surv(log(a), b, d) ~ 1", data, Role::kEntry, 0, "\"log(a)\" is infinite");
  expectRefused("Surv(b, n > 0) ~ 1", data, Role::kEvent, 2, "\"n > 0\" is missing");
  expectRefused("Surv(b, s) ~ 1", data, Role::kEvent, 2, "\"2\" is neither yes nor no", {},
                "0 and 1, 1 and 2, no and yes, false and true, alive and dead, or what is an event "
                "in --event-value");
  expectRefused("Surv(b, s) ~ 1", data, Role::kEvent, engine::Refusal::kNone, "no row holds \"3\"",
                {"3"}, "one of \"0\", \"1\", \"2\"");
  expectRefused("Surv(b, s == 2) ~ 1", data, Role::kEvent, engine::Refusal::kNone,
                "\"s == 2\" says by itself what an event is", {"2"},
                "a column, or no values of events");
  expectRefused("Surv(b, d) ~ strata(g)", data, Role::kStrata, 1, "\"g\" is missing");
  expectRefused("Surv(b, d) ~ cluster(g)", data, Role::kCluster, 1, "\"g\" is missing");
  expectRefused("Surv(b, d) ~ offset(-c)", data, Role::kOffset, 1, "\"-c\" is infinite");
}

}  // namespace
}  // namespace survmeth::model
