// Data sets for the tests of survmeth life, and what it finds in them.
#ifndef TESTS_ANALYSIS_LIFE_DATA_H_
#define TESTS_ANALYSIS_LIFE_DATA_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "analysis/life/run.h"
#include "tests/support/csv.h"

namespace survmeth::test {

struct Columns {
  std::vector<double> time;
  std::vector<std::uint8_t> event;
  std::vector<std::uint32_t> group;
  std::vector<double> weight;
  std::size_t groups = 1;

  // Columns "t", "e", "g" of groups "a", "b", ... (their numbers from the 27th on) and "w"; the
  // last two where there are any.
  frame::Frame frame() const {
    frame::Frame data;
    data.rows = data.rowsRead = time.size();
    data.columns = {
        frame::numberColumn("t", time),
        frame::labelColumn("e", frame::Type::kText, {event.begin(), event.end()}, {"0", "1"})};
    std::vector<std::string> labels;
    for (std::size_t g = 0; g < groups; ++g) {
      labels.push_back(groups > 26 ? std::to_string(g)
                                   : std::string(1, static_cast<char>('a' + g)));
    }
    if (!group.empty()) {
      data.columns.push_back(frame::labelColumn("g", frame::Type::kFactor, group, labels));
    }
    if (!weight.empty()) data.columns.push_back(frame::numberColumn("w", weight));
    return data;
  }

  // A row as often as its weight says.
  Columns replicated() const {
    Columns result;
    result.groups = groups;
    for (std::size_t i = 0; i < time.size(); ++i) {
      for (int k = 0; k < weight[i]; ++k) {
        result.time.push_back(time[i]);
        result.event.push_back(event[i]);
        if (!group.empty()) result.group.push_back(group[i]);
      }
    }
    return result;
  }
};

// What survmeth life finds, with these options besides its columns.
inline analysis::LifeAnswer lifeOf(const Columns& columns, analysis::LifeRequest request = {}) {
  request.time = "t";
  request.event = "e";
  if (!columns.group.empty()) request.group = {"g"};
  if (!columns.weight.empty()) request.weight = "w";
  numerics::Progress progress;
  return analysis::fitLife(columns.frame(), request, progress);
}

inline Columns oneGroup(std::vector<double> time, std::vector<std::uint8_t> event) {
  Columns columns;
  columns.time = std::move(time);
  columns.event = std::move(event);
  return columns;
}

// (time, event) rows of each group.
inline Columns groupsOf(const std::vector<std::vector<std::pair<double, int>>>& rows) {
  Columns columns;
  columns.groups = rows.size();
  for (std::size_t g = 0; g < rows.size(); ++g) {
    for (const auto& [time, event] : rows[g]) {
      columns.time.push_back(time);
      columns.event.push_back(static_cast<std::uint8_t>(event));
      columns.group.push_back(static_cast<std::uint32_t>(g));
    }
  }
  return columns;
}

// Groups in the order in which their labels sort.
inline Columns fromFile(const std::string& file, const std::string& time, const std::string& event,
                        const std::string& group, std::vector<std::string>* labels) {
  const Csv csv(SURVMETH_DATA + ("/" + file));
  std::map<std::string, std::uint32_t> codes;
  for (std::size_t i = 0; i < csv.rows(); ++i) codes[csv.text(group, i)] = 0;
  labels->clear();
  for (auto& [label, code] : codes) {
    code = static_cast<std::uint32_t>(labels->size());
    labels->push_back(label);
  }
  Columns columns;
  columns.groups = codes.size();
  columns.time = csv.numbers(time);
  for (std::size_t i = 0; i < csv.rows(); ++i) {
    columns.event.push_back(csv.number(event, i) == 1 ? 1 : 0);
    columns.group.push_back(codes[csv.text(group, i)]);
  }
  return columns;
}

// The random data sets of make_curves.R by number.
inline std::map<int, Columns> randomData(const std::string& file = "curves_data.csv") {
  const Csv csv(SURVMETH_REFERENCE + ("/" + file));
  std::map<int, Columns> sets;
  for (std::size_t i = 0; i < csv.rows(); ++i) {
    Columns& columns = sets[static_cast<int>(csv.number("id", i))];
    columns.time.push_back(csv.number("time", i));
    columns.event.push_back(csv.number("event", i) == 1 ? 1 : 0);
    columns.group.push_back(static_cast<std::uint32_t>(csv.number("group", i)));
    columns.weight.push_back(csv.number("weight", i));
    columns.groups = std::max(columns.groups, std::size_t{columns.group.back()} + 1);
  }
  return sets;
}

// Within `tolerance` of the expected value, relatively; NaN equals NaN only, 0 only 0.
inline ::testing::AssertionResult near(double actual, double expected, double tolerance) {
  if (std::isnan(actual) && std::isnan(expected)) return ::testing::AssertionSuccess();
  if (actual == expected) return ::testing::AssertionSuccess();
  if (std::fabs(actual - expected) <= tolerance * std::fabs(expected)) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << actual << " is not " << expected;
}

}  // namespace survmeth::test

#endif  // TESTS_ANALYSIS_LIFE_DATA_H_
