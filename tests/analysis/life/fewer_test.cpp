// Rows that differ in nothing, pooled.
#include <cstdint>
#include <map>
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

}  // namespace
}  // namespace survmeth
