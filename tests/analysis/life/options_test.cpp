// What the options of survmeth life do to its numbers, where a property or a hand settles it.
#include <utility>

#include "analysis/option.h"
#include "tests/analysis/life/data.h"

namespace survmeth {
namespace {

using analysis::LifeAnswer;
using analysis::LifeRequest;
using engine::curves::Curve;
using test::Columns;
using test::near;

// (subject, entry, exit, event, group) rows.
struct Row {
  std::uint32_t subject;
  double entry, exit;
  std::uint32_t event, group;
};

frame::Frame frameOf(const std::vector<Row>& rows) {
  std::vector<std::uint32_t> subject, event, group;
  std::vector<double> entry, exit;
  std::vector<std::string> names, groups;
  for (const Row& row : rows) {
    while (groups.size() <= row.group)
      groups.emplace_back(1, static_cast<char>('a' + groups.size()));
    subject.push_back(row.subject);
    event.push_back(row.event);
    group.push_back(row.group);
    entry.push_back(row.entry);
    exit.push_back(row.exit);
    while (names.size() <= row.subject) names.push_back("p" + std::to_string(names.size()));
  }
  frame::Frame data;
  data.rows = data.rowsRead = rows.size();
  data.columns = {frame::labelColumn("who", frame::Type::kText, subject, names),
                  frame::numberColumn("from", entry), frame::numberColumn("to", exit),
                  frame::labelColumn("e", frame::Type::kText, event, {"0", "1"}),
                  frame::labelColumn("g", frame::Type::kFactor, group, groups)};
  return data;
}

LifeAnswer answerOf(const std::vector<Row>& rows, bool subjects = true) {
  LifeRequest request;
  request.time = "to";
  request.entry = "from";
  request.event = "e";
  request.group = {"g"};
  if (subjects) request.id = "who";
  request.at = {3};
  request.tau = 6;
  numerics::Progress progress;
  return analysis::fitLife(frameOf(rows), request, progress);
}

const std::vector<Row> kWhole = {{0, 0, 5, 1, 0}, {1, 1, 9, 0, 0}, {2, 0, 6, 1, 1},
                                 {3, 2, 7, 1, 1}, {4, 0, 8, 0, 1}, {5, 3, 7, 1, 0}};

// Every row in two at `time`, where it is at risk then.
std::vector<Row> splitAt(double time) {
  std::vector<Row> rows;
  for (const Row& row : kWhole) {
    if (!(row.entry < time && time < row.exit)) {
      rows.push_back(row);
      continue;
    }
    rows.push_back({row.subject, time, row.exit, row.event, row.group});
    rows.push_back({row.subject, row.entry, time, 0, row.group});
  }
  return rows;
}

TEST(LifeSubjects, SplittingTheirFollowUpAtAnyTimeChangesNothing) {
  const LifeAnswer whole = answerOf(kWhole);
  for (const double time : {0.5, 1.0, 2.0, 4.0, 5.0, 6.5, 7.0, 8.5}) {
    SCOPED_TRACE(time);
    const LifeAnswer split = answerOf(splitAt(time));
    for (std::size_t g = 0; g < 2; ++g) {
      const Curve &a = whole.curves[g], &b = split.curves[g];
      EXPECT_EQ(a.time, b.time);
      EXPECT_EQ(a.atRisk, b.atRisk);
      EXPECT_EQ(a.censoredAt, b.censoredAt);
      EXPECT_EQ(a.survival, b.survival);
      EXPECT_EQ(a.hazard, b.hazard);
      EXPECT_EQ(a.n, b.n);
      EXPECT_TRUE(near(whole.summaries[g].followUp, split.summaries[g].followUp, 0));
      EXPECT_EQ(whole.readings.means[g].mean, split.readings.means[g].mean);
      EXPECT_EQ(whole.readings.risk[g][0].atRisk, split.readings.risk[g][0].atRisk);
      EXPECT_EQ(whole.comparison.expected[g], split.comparison.expected[g]);
    }
    for (std::size_t t = 0; t < 3; ++t) {
      EXPECT_EQ(whole.comparison.tests[t].test.chiSquare, split.comparison.tests[t].test.chiSquare);
    }
  }
}

// Without subjects a split is a censoring and an entry: curve and tests stay, counts do not.
TEST(LifeSubjects, WithoutThemASplitIsACensoring) {
  const LifeAnswer whole = answerOf(kWhole), split = answerOf(splitAt(4), false);
  EXPECT_EQ(whole.censored, 2);
  EXPECT_EQ(split.censored, 2 + 6);
  for (std::size_t g = 0; g < 2; ++g) {
    EXPECT_EQ(whole.curves[g].survival.back(), split.curves[g].survival.back());
    // The area is a sum of more pieces.
    EXPECT_TRUE(near(whole.readings.means[g].mean, split.readings.means[g].mean, 1e-15));
  }
}

TEST(LifeSubjects, AnEventOrAnotherGroupKeepsRowsApart) {
  // The first subject fails twice, the second changes its group.
  const LifeAnswer answer = answerOf(
      {{0, 0, 3, 1, 0}, {0, 3, 5, 1, 0}, {1, 0, 4, 0, 0}, {1, 4, 6, 0, 1}, {2, 0, 7, 1, 1}});
  EXPECT_EQ(answer.curves[0].n, 3);
  EXPECT_EQ(answer.curves[1].n, 2);
  EXPECT_TRUE(answer.rows.clustersAreSubjects);
  EXPECT_TRUE(answer.robust);
  EXPECT_EQ(answer.comparison.reason, "rows of one subject depend on each other");
}

TEST(LifeRows, ALateEntryIsAtRiskAfterIt) {
  const LifeAnswer answer = answerOf({{0, 0, 5, 1, 0}, {1, 5, 9, 0, 0}, {2, 4, 6, 1, 0}}, false);
  // At 5 the first and the third; who enters at 5 is not.
  EXPECT_EQ(answer.curves[0].time, (std::vector<double>{5, 6, 9}));
  EXPECT_EQ(answer.curves[0].atRisk, (std::vector<double>{2, 2, 1}));
  EXPECT_EQ(answer.curves[0].survival, (std::vector<double>{0.5, 0.25, 0.25}));
}

TEST(LifeRows, ARefusalOfJoinedRowsPointsAtTheData) {
  std::vector<Row> rows = splitAt(4);
  rows.push_back({6, 5, 5 + 1e-12, 1, 0});  // entry and exit are one but for rounding
  try {
    answerOf(rows);
    FAIL() << "taken";
  } catch (const engine::Refusal& refusal) {
    EXPECT_EQ(refusal.row(), rows.size() - 1);
  }
}

// exp(-H) by hand: 5 at risk, one event at 2, two of 4 at 3, one censored of 2 at 5, the last at 8.
TEST(LifeEstimates, TakeTiesAtOnceOrOneAfterTheOther) {
  const Columns columns = test::oneGroup({8, 3, 2, 3, 5}, {1, 1, 1, 1, 0});
  LifeRequest request;
  request.estimate = analysis::LifeEstimate::kNelsonAalen;
  const Curve atOnce = test::lifeOf(columns, request).curves[0];
  EXPECT_TRUE(near(atOnce.hazard[1], 1.0 / 5 + 2.0 / 4, 1e-15));
  EXPECT_TRUE(near(atOnce.survival[1], std::exp(-0.7), 1e-15));
  request.estimate = analysis::LifeEstimate::kFlemingHarrington;
  const Curve inTurn = test::lifeOf(columns, request).curves[0];
  EXPECT_TRUE(near(inTurn.hazard[1], 1.0 / 5 + 1.0 / 4 + 1.0 / 3, 1e-15));
  EXPECT_TRUE(near(inTurn.hazardVariance[1], 1.0 / 25 + 1.0 / 16 + 1.0 / 9, 1e-15));
}

TEST(LifeWeights, EqualRepetitionInEveryNumber) {
  LifeRequest request;
  request.at = {2};
  request.tau = 3;
  request.rates = true;
  request.tests = {"logrank", "peto-peto", "fh:0:1"};
  std::size_t tested = 0;
  for (const auto& [id, columns] : test::randomData()) {
    SCOPED_TRACE(id);
    const LifeAnswer weighted = test::lifeOf(columns, request);
    const LifeAnswer replicated = test::lifeOf(columns.replicated(), request);
    for (std::size_t g = 0; g < columns.groups; ++g) {
      EXPECT_EQ(weighted.curves[g].lower.size(), replicated.curves[g].lower.size());
      EXPECT_TRUE(near(weighted.summaries[g].followUp, replicated.summaries[g].followUp, 0));
      EXPECT_EQ(weighted.readings.means[g].mean, replicated.readings.means[g].mean);
      EXPECT_TRUE(near(weighted.readings.means[g].standardError,
                       replicated.readings.means[g].standardError, 1e-14));
      EXPECT_EQ(weighted.readings.risk[g][0].atRisk, replicated.readings.risk[g][0].atRisk);
      // Person-time is a sum of products on the one side and of single times on the other.
      EXPECT_TRUE(near(weighted.readings.rates[g][0].personTime,
                       replicated.readings.rates[g][0].personTime, 1e-14));
    }
    for (std::size_t t = 0; t < 3 && weighted.comparison.exists(); ++t, ++tested) {
      EXPECT_TRUE(near(weighted.comparison.tests[t].test.chiSquare,
                       replicated.comparison.tests[t].test.chiSquare, 1e-13));
    }
  }
  EXPECT_GT(tested, 60u);
}

// 20,000 rows at 40 times are pooled; as many as their frequencies are not.
TEST(LifeRows, ManyAtFewTimesAreTheirFrequencies) {
  Columns many, few;
  many.groups = few.groups = 3;
  std::map<std::pair<double, std::pair<std::uint32_t, std::uint8_t>>, double> counts;
  std::uint32_t state = 1;
  for (std::size_t i = 0; i < 20000; ++i) {
    state = state * 1664525u + 1013904223u;
    const std::uint32_t group = (state >> 8) % 3;
    const double time = 1 + (state >> 16) % (30 + 5 * group);
    const auto event = static_cast<std::uint8_t>((state >> 12) % 4 == 0 ? 0 : 1);
    many.time.push_back(time);
    many.event.push_back(event);
    many.group.push_back(group);
    counts[{time, {group, event}}] += 1;
  }
  for (const auto& [cell, count] : counts) {
    few.time.push_back(cell.first);
    few.group.push_back(cell.second.first);
    few.event.push_back(cell.second.second);
    few.weight.push_back(count);
  }
  LifeRequest request;
  request.at = {5};
  request.tau = 25;
  request.rates = true;
  const LifeAnswer a = test::lifeOf(many, request), b = test::lifeOf(few, request);
  EXPECT_LT(a.rows.event.size(), 250u);
  EXPECT_EQ(a.rows.groups.counts[0] + a.rows.groups.counts[1] + a.rows.groups.counts[2], 20000u);
  for (std::size_t g = 0; g < 3; ++g) {
    EXPECT_EQ(a.curves[g].time, b.curves[g].time);
    EXPECT_EQ(a.curves[g].atRisk, b.curves[g].atRisk);
    EXPECT_EQ(a.curves[g].survival, b.curves[g].survival);
    EXPECT_EQ(a.readings.risk[g][0].cumulativeEvents, b.readings.risk[g][0].cumulativeEvents);
    EXPECT_TRUE(near(a.readings.rates[g][0].personTime, b.readings.rates[g][0].personTime, 1e-14));
  }
  for (std::size_t t = 0; t < 3; ++t) {
    EXPECT_TRUE(
        near(a.comparison.tests[t].test.chiSquare, b.comparison.tests[t].test.chiSquare, 1e-12));
  }
  // One after the other needs the rows.
  request.estimate = analysis::LifeEstimate::kFlemingHarrington;
  EXPECT_EQ(test::lifeOf(many, request).rows.event.size(), 20000u);
}

TEST(LifeRows, ManyAtDistinctTimesStayAsTheyAre) {
  Columns columns;
  for (std::size_t i = 0; i < 20000; ++i) {
    columns.time.push_back(static_cast<double>(i));
    columns.event.push_back(1);
  }
  const LifeAnswer answer = test::lifeOf(columns);
  EXPECT_EQ(answer.rows.event.size(), 20000u);
  EXPECT_TRUE(answer.rows.weight.numbers.empty());
}

TEST(LifeMeans, EndAtTheSmallestOfTheGroupsLastTimes) {
  const Columns columns = test::groupsOf({{{1, 1}, {4, 0}}, {{2, 1}, {9, 0}}});
  LifeRequest request;
  request.means = true;
  const LifeAnswer answer = test::lifeOf(columns, request);
  EXPECT_EQ(answer.readings.means[0].horizon, 4);
  EXPECT_EQ(answer.readings.means[0].mean, 1 + 3 * 0.5);
  EXPECT_EQ(answer.readings.means[1].mean, 2 + 2 * 0.5);
}

TEST(LifeFollowUp, IsTheMedianOfTheCurveOfCensorings) {
  // Censorings at 2 of 4 and 5 of 2 at risk: 3/4, then 3/8.
  const LifeAnswer answer = test::lifeOf(test::oneGroup({2, 3, 5, 7}, {0, 1, 0, 1}));
  EXPECT_EQ(answer.summaries[0].followUp, 5);
}

TEST(LifeComparison, StrataOfOneGroupEachSayNothing) {
  frame::Frame data = frameOf({{0, 0, 5, 1, 0}, {1, 0, 9, 0, 0}, {2, 0, 6, 1, 1}, {3, 0, 7, 1, 1}});
  LifeRequest request;
  request.time = "to";
  request.event = "e";
  request.group = {"g"};
  request.strata = {"g"};
  numerics::Progress progress;
  const LifeAnswer answer = analysis::fitLife(data, request, progress);
  EXPECT_NE(answer.comparison.reason.find("singular"), std::string::npos);
}

}  // namespace
}  // namespace survmeth
