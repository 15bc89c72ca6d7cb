// Rows that differ in nothing, pooled.
#include <cmath>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "analysis/life/rows.h"
#include "tests/analysis/life/data.h"

namespace survmeth {
namespace {

using analysis::LifeRows;

// `n` rows in so many groups and strata, none of one: times 0, step, 2 step ... below `times` steps.
LifeRows rowsOf(std::size_t n, double step, std::uint32_t times, std::uint32_t groups,
                std::uint32_t strata, bool weighted) {
  LifeRows rows;
  std::uint64_t state = 12345;
  const auto below = [&state](std::uint32_t end) {  // Knuth's multiplier
    state = state * 6364136223846793005u + 1442695040888963407u;
    return static_cast<std::uint32_t>((state >> 33) % end);
  };
  std::vector<double> time, weight;
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint32_t at = below(times);
    time.push_back(at == 0 && i % 2 == 0 ? -0.0 : step * at);
    rows.event.push_back(below(2));
    if (groups > 1) rows.groups.codes.push_back(below(groups));
    if (strata > 1) rows.strata.codes.push_back(below(strata));
    weight.push_back(below(4));
  }
  rows.groups.labels.assign(groups, "g");
  if (strata > 1) rows.strata.labels.assign(strata, "s");
  rows.time = frame::numberColumn("t", time);
  if (weighted) rows.weight = frame::numberColumn("w", weight);
  return rows;
}

using Key = std::tuple<double, std::uint32_t, std::uint32_t, std::uint32_t>;

Key keyOf(const LifeRows& rows, std::size_t i) {
  return {rows.time.numbers[i] + 0.0, rows.groups.codes.empty() ? 0 : rows.groups.codes[i],
          rows.strata.codes.empty() ? 0 : rows.strata.codes[i], rows.event[i]};
}

// The cells in the order of first use with their sums, by a map.
std::vector<std::pair<Key, double>> cellsOf(const LifeRows& rows) {
  std::vector<std::pair<Key, double>> cells;
  std::map<Key, std::size_t> at;
  for (std::size_t i = 0; i < rows.event.size(); ++i) {
    const double weight = rows.weight.numbers.empty() ? 1 : rows.weight.numbers[i];
    if (weight == 0) continue;
    const auto [place, isNew] = at.try_emplace(keyOf(rows, i), cells.size());
    if (isNew) cells.emplace_back(keyOf(rows, i), 0);
    cells[place->second].second += weight;
  }
  return cells;
}

void expectPooled(LifeRows rows) {
  const auto expected = cellsOf(rows);
  ASSERT_LE(4 * (expected.size() - 1), rows.event.size() - 1);
  ASSERT_TRUE(analysis::poolRows(rows));
  ASSERT_EQ(rows.event.size(), expected.size());
  ASSERT_EQ(rows.weight.numbers.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    ASSERT_EQ(keyOf(rows, i), expected[i].first) << i;
    ASSERT_EQ(rows.weight.numbers[i], expected[i].second) << i;
  }
}

TEST(PooledRows, AreTheCellsInTheOrderOfFirstUseWithTheirSums) {
  for (const double step : {1.0, 0.5, 1e6}) {  // in a table, and not
    for (const bool weighted : {false, true}) {
      SCOPED_TRACE(testing::Message() << step << ' ' << weighted);
      expectPooled(rowsOf(5000, step, 100, 1, 1, weighted));
      expectPooled(rowsOf(5000, step, 50, 3, 1, weighted));
      expectPooled(rowsOf(5000, step, 20, 3, 4, weighted));
      expectPooled(rowsOf(5000, step, 30, 1, 5, weighted));
    }
  }
}

TEST(PooledRows, AreAsManyAsThereAreWhereThatIsMoreThanAQuarter) {
  for (const double step : {1.0, 0.5}) {
    LifeRows rows = rowsOf(4000, step, 1000, 1, 1, false);
    EXPECT_FALSE(analysis::poolRows(rows));
    EXPECT_EQ(rows.event.size(), 4000u);
    EXPECT_TRUE(rows.weight.numbers.empty());
  }
}

TEST(PooledRows, AreAQuarterAtMost) {
  // Whole times 0 .. 7 twice among 32 rows are 8 cells, with one more 9.
  for (const double step : {1.0, 0.5}) {
    LifeRows rows;
    std::vector<double> time;
    for (std::size_t i = 0; i < 32; ++i) {
      time.push_back(step * static_cast<double>(i % 8));
      rows.event.push_back(1);
    }
    rows.groups.labels = {"all"};
    LifeRows more = rows;
    rows.time = frame::numberColumn("t", time);
    time.back() = step * 8;
    more.time = frame::numberColumn("t", time);
    EXPECT_TRUE(analysis::poolRows(rows));
    EXPECT_EQ(rows.event.size(), 8u);
    EXPECT_FALSE(analysis::poolRows(more));
  }
}

TEST(PooledRows, OfOneTimeThatIsNotWholeAreTheSame) {
  LifeRows rows = rowsOf(5000, 1, 100, 2, 1, false);
  std::vector<double> time(rows.time.numbers.begin(), rows.time.numbers.end());
  time[4999] = 0.25;
  rows.time = frame::numberColumn("t", time);
  expectPooled(rows);
}

// 20,000 rows with whole times below 50, the event "0" or "1", arms "b", "a" and no "c", 4 sites.
frame::Frame dataOf(std::size_t rows = 20000) {
  const LifeRows made = rowsOf(rows, 1, 50, 2, 4, false);
  frame::Frame data;
  data.rows = data.rowsRead = rows;
  data.columns = {
      made.time, frame::labelColumn("e", frame::Type::kText, made.event, {"0", "1"}),
      frame::labelColumn("arm", frame::Type::kText, made.groups.codes, {"b", "a"}),
      frame::labelColumn("site", frame::Type::kFactor, made.strata.codes, {"x", "w", "z", "y"})};
  return data;
}

analysis::LifeRequest requestOf() {
  analysis::LifeRequest request;
  request.time = "t";
  request.event = "e";
  request.group = {"arm"};
  request.strata = {"site"};
  return request;
}

TEST(PooledRows, OfDataAreTheirCells) {
  const frame::Frame data = dataOf();
  const LifeRows rows = analysis::lifeRowsOf(data, requestOf());
  EXPECT_EQ(rows.event.size(), 50u * 2 * 2 * 4);
  EXPECT_EQ(rows.groups.labels, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(rows.strata.labels, (std::vector<std::string>{"x", "w", "z", "y"}));
  EXPECT_TRUE(rows.wholeWeights);
  // Every row of the data takes one from the cell that it belongs to.
  std::map<Key, double> left;
  for (std::size_t i = 0; i < rows.event.size(); ++i) {
    EXPECT_TRUE(left.emplace(keyOf(rows, i), rows.weight.numbers[i]).second) << i;
    EXPECT_FALSE(std::signbit(rows.time.numbers[i])) << i;
  }
  std::vector<std::size_t> inGroup(2, 0);
  for (std::size_t i = 0; i < data.rows; ++i) {
    const std::uint32_t group = data.columns[2].codes[i] == 0 ? 1 : 0;  // "b" comes after "a"
    --left.at({data.columns[0].numbers[i] + 0.0, group, data.columns[3].codes[i],
               data.columns[1].codes[i]});
    ++inGroup[group];
  }
  for (const auto& cell : left) EXPECT_EQ(cell.second, 0);
  EXPECT_EQ(rows.groups.counts, inGroup);
}

TEST(PooledRows, OfDataWithoutGroupsCountThemAll) {
  analysis::LifeRequest request;
  request.time = "t";
  request.event = "e";
  const LifeRows rows = analysis::lifeRowsOf(dataOf(), request);
  EXPECT_EQ(rows.event.size(), 100u);
  EXPECT_EQ(rows.groups.labels, (std::vector<std::string>{"all"}));
  EXPECT_EQ(rows.groups.counts, (std::vector<std::size_t>{20000}));
}

engine::Refusal refusalOf(const frame::Frame& data, const analysis::LifeRequest& request) {
  try {
    analysis::lifeRowsOf(data, request);
  } catch (const engine::Refusal& refused) {
    return refused;
  }
  throw std::logic_error("nothing was refused");
}

TEST(PooledRows, AreRefusedByTheirFirstRowInTheData) {
  frame::Frame data = dataOf();
  std::vector<double> time(data.columns[0].numbers.begin(), data.columns[0].numbers.end());
  time[12345] = time[17000] = -3;
  data.columns[0] = frame::numberColumn("t", time);
  engine::Refusal refused = refusalOf(data, requestOf());
  EXPECT_EQ(refused.role(), engine::Role::kTime);
  EXPECT_EQ(refused.row(), 12345u);
  EXPECT_STREQ(refused.what(), "a time is negative or not finite");

  data = dataOf();
  std::vector<std::uint32_t> event(data.rows, 0);
  event[777] = event[15000] = 1;
  data.columns[1] = frame::labelColumn("e", frame::Type::kText, event, {"0", "perhaps"});
  refused = refusalOf(data, requestOf());
  EXPECT_EQ(refused.role(), engine::Role::kEvent);
  EXPECT_EQ(refused.row(), 777u);
  EXPECT_STREQ(refused.what(), "\"perhaps\" is neither yes nor no");

  data = dataOf();
  data.columns[2].levels.push_back("c");
  refused = refusalOf(data, requestOf());
  EXPECT_EQ(refused.row(), engine::Refusal::kNone);
  EXPECT_STREQ(refused.what(), "the group \"c\" is empty: its rows have missing cells");
}

TEST(PooledRows, OfManyEventLabelsArePooledAsEventsOrNot) {
  frame::Frame data = dataOf();
  std::vector<std::uint32_t> event(data.columns[1].codes.begin(), data.columns[1].codes.end());
  for (std::size_t i = 0; i < event.size(); ++i) event[i] = i % 3 == 2 ? 2 : event[i];
  data.columns[1] = frame::labelColumn("e", frame::Type::kText, event, {"0", "1", "2"});
  analysis::LifeRequest request = requestOf();
  request.eventValues = {"1", "2"};
  const LifeRows rows = analysis::lifeRowsOf(data, request);
  EXPECT_EQ(rows.event.size(), 50u * 2 * 2 * 4);
}

}  // namespace
}  // namespace survmeth
