// Short ways to describe facts, columns, tables and figures.
#ifndef REPORT_BUILD_H_
#define REPORT_BUILD_H_

#include <functional>
#include <iterator>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "report/keys.h"
#include "report/report.h"
#include "text/numbers.h"

namespace survmeth::report {

// The level of limits: "95%" for alpha 0.05, "99.9%" for 0.001.
inline std::string confidence(double alpha) { return text::brief(100 * (1 - alpha), 4) + "%"; }

inline Column labelColumn(std::string key, std::string heading, std::vector<std::string> values) {
  return {std::move(key), std::move(heading), Kind::kLabel, std::move(values)};
}

// Of any numbers: counts become doubles.
template <class Numbers>
Column numberColumn(std::string key, std::string heading, Kind kind, const Numbers& values) {
  return {std::move(key), std::move(heading), kind,
          std::vector<double>(std::begin(values), std::end(values))};
}

// The numbers of the result that is described, which holds them for as long as anybody reads.
inline Column borrowedColumn(std::string key, std::string heading, Kind kind,
                             std::span<const double> values) {
  return {std::move(key), std::move(heading), kind, Numbers::borrowed(values)};
}

// An estimate in a sentence, with this many significant digits: "2.5 (95% limits 1.8 to 3.2)".
template <class Estimate>
std::string withLimits(const Estimate& estimate, const std::string& limits, int digits) {
  return text::brief(estimate.value, digits) + " (" + limits + " " +
         text::brief(estimate.lower, digits) + " to " + text::brief(estimate.upper, digits) + ")";
}

// The same with these decimals; the estimate alone where there are no limits.
template <class Estimate>
std::string fixedWithLimits(const Estimate& estimate, const std::string& limits, int decimals) {
  std::string said = text::fixed(estimate.value, decimals);
  if (estimate.lower != estimate.lower) return said;
  return said + " (" + limits + " " + text::fixed(estimate.lower, decimals) + " to " +
         text::fixed(estimate.upper, decimals) + ")";
}

// Of a number of rows, subjects, pairs.
inline Fact countFact(const char* key, std::string label, std::size_t count) {
  return {key, std::move(label), Kind::kCount, static_cast<double>(count)};
}

// The level of limits, for programs.
inline Fact levelFact(double alpha) { return {key::kLevel, "", Kind::kProbability, 1 - alpha}; }

// What a cell shows: a text, a number, or of an estimate with limits its value.
template <class Cell>
auto shownOf(const Cell& cell) {
  if constexpr (std::is_convertible_v<Cell, std::string>) {
    return std::string(cell);
  } else if constexpr (std::is_class_v<Cell>) {
    return static_cast<double>(cell.value);
  } else {
    return static_cast<double>(cell);
  }
}

// One cell for each of `items`: a member of it (`&Curve::rows`), or what a function says of it.
template <class Items, class Cell>
Column columnOf(std::string key, std::string heading, Kind kind, const Items& items, Cell cell) {
  std::vector<decltype(shownOf(std::invoke(cell, *std::begin(items))))> values;
  values.reserve(std::size(items));
  for (const auto& item : items) values.push_back(shownOf(std::invoke(cell, item)));
  return {std::move(key), std::move(heading), kind, std::move(values)};
}

// A table of these columns, for people and programs.
inline Table tableOf(std::string id, std::string caption, std::vector<Column> columns) {
  Table table;
  table.id = std::move(id);
  table.caption = std::move(caption);
  table.columns = std::move(columns);
  return table;
}

// A table of one row for each of some items, column after column:
//
//     rowsOf("areas", "Area under the curve", curves)
//         .column(key::kArea, "area", Kind::kProbability, &Curve::area)
//         .limits("95%", Kind::kProbability, &Curve::area)
//         .table()
//
// The items have to outlive the description, not the table.
template <class Items>
class Rows {
 public:
  Rows(std::string id, std::string caption, const Items& items)
      : items_(items), table_(tableOf(std::move(id), std::move(caption), {})) {}

  template <class Cell>
  Rows& column(std::string key, std::string heading, Kind kind, Cell cell) {
    return with(columnOf(std::move(key), std::move(heading), kind, items_, cell));
  }
  // The lower and the upper limit of the estimate that `cell` gives, at this level.
  template <class Cell>
  Rows& limits(const std::string& level, Kind kind, Cell cell, const char* lower = key::kLower,
               const char* upper = key::kUpper) {
    column(lower, level + " lower", kind,
           [&](const auto& item) { return std::invoke(cell, item).lower; });
    return column(upper, level + " upper", kind,
                  [&](const auto& item) { return std::invoke(cell, item).upper; });
  }
  // The one of `names` whose place `cell` gives.
  template <class Cell>
  Rows& label(std::string key, std::string heading, const std::vector<std::string>& names,
              Cell cell) {
    return column(std::move(key), std::move(heading), Kind::kLabel,
                  [&](const auto& item) { return names[std::invoke(cell, item)]; });
  }
  // Statistic, degrees of freedom and p-value of the chi-square test that `cell` gives.
  template <class Cell>
  Rows& test(Cell cell) {
    column(key::kChiSquare, "chi-square", Kind::kStatistic,
           [&](const auto& item) { return std::invoke(cell, item).chiSquare; });
    column(key::kDegreesOfFreedom, "df", Kind::kCount,
           [&](const auto& item) { return std::invoke(cell, item).degreesOfFreedom; });
    return column(key::kPValue, "p-value", Kind::kPValue,
                  [&](const auto& item) { return std::invoke(cell, item).pValue; });
  }
  // The estimate that `cell` gives, its error, limits and test, and why these do not exist, of items
  // with the members standardError, z, pValue and reason.
  template <class Cell>
  Rows& tested(std::string key, std::string heading, const std::string& level, Kind kind,
               Cell cell) {
    column(std::move(key), std::move(heading), kind, cell);
    column(key::kStandardError, "std error", kind,
           [](const auto& its) { return its.standardError; });
    limits(level, kind, cell);
    column(key::kZ, "z", Kind::kStatistic, [](const auto& item) { return item.z; });
    column(key::kPValue, "p-value", Kind::kPValue, [](const auto& item) { return item.pValue; });
    return column(key::kReason, "why not", Kind::kLabel,
                  [](const auto& item) { return item.reason; });
  }
  // Made elsewhere, of as many rows.
  Rows& with(Column column) {
    table_.columns.push_back(std::move(column));
    return *this;
  }
  Table table() { return std::move(table_); }

 private:
  const Items& items_;
  Table table_;
};

template <class Items>
Rows<Items> rowsOf(std::string id, std::string caption, const Items& items) {
  return Rows<Items>(std::move(id), std::move(caption), items);
}

// A table of the rows of several groups one after another, parted by the groups' labels. `rows`
// gives the items of a group.
//
//     partedRowsOf("thresholds", "Thresholds", labelColumn(key::kMarker, "marker", names), curves,
//                  &Curve::thresholds)
//         .column(key::kCost, "cost", Kind::kEstimate, &Threshold::cost)
//         .table()
template <class Groups, class RowsOfGroup>
class PartedRows {
 public:
  PartedRows(std::string id, std::string caption, const Column& labels, const Groups& groups,
             RowsOfGroup rows)
      : groups_(groups), rows_(rows), table_(tableOf(std::move(id), std::move(caption), {})) {
    for (const auto& group : groups_) total_ += std::size(std::invoke(rows_, group));
    with(labels);
    table_.partedBy = labels.key;
  }

  // A label of each group, in all of its rows.
  PartedRows& with(const Column& labels) {
    std::vector<std::string> values;
    values.reserve(total_);
    auto label = labels.labels().begin();
    for (const auto& group : groups_) {
      values.insert(values.end(), std::size(std::invoke(rows_, group)), *label++);
    }
    table_.columns.push_back(labelColumn(labels.key, labels.heading, std::move(values)));
    return *this;
  }
  // A number of each row: a member of it or a function.
  template <class Cell>
  PartedRows& column(std::string key, std::string heading, Kind kind, Cell cell) {
    std::vector<double> values;
    values.reserve(total_);
    for (const auto& group : groups_) {
      for (const auto& row : std::invoke(rows_, group)) {
        values.push_back(shownOf(std::invoke(cell, row)));
      }
    }
    table_.columns.push_back({std::move(key), std::move(heading), kind, std::move(values)});
    return *this;
  }
  template <class Cell>
  PartedRows& limits(const std::string& level, Kind kind, Cell cell,
                     const char* lower = key::kLower, const char* upper = key::kUpper) {
    column(lower, level + " lower", kind,
           [&](const auto& row) { return std::invoke(cell, row).lower; });
    return column(upper, level + " upper", kind,
                  [&](const auto& row) { return std::invoke(cell, row).upper; });
  }
  // The estimate that `cell` gives, with its limits.
  template <class Cell>
  PartedRows& estimated(std::string key, std::string heading, const std::string& level, Kind kind,
                        Cell cell, const char* lower, const char* upper) {
    return column(std::move(key), std::move(heading), kind, cell)
        .limits(level, kind, cell, lower, upper);
  }
  // Numbers that stand together for all rows of a group: a vector of it, or what a function makes.
  template <class Values>
  PartedRows& numbers(std::string key, std::string heading, Kind kind, Values ofGroup) {
    std::vector<double> values;
    values.reserve(total_);
    for (const auto& group : groups_) {
      const auto& of = std::invoke(ofGroup, group);
      values.insert(values.end(), std::begin(of), std::end(of));
    }
    table_.columns.push_back({std::move(key), std::move(heading), kind, std::move(values)});
    return *this;
  }
  Table table() { return std::move(table_); }
  // The same as one, with lines of several groups beneath one another.
  Table unparted() {
    table_.partedBy.clear();
    return table();
  }

 private:
  const Groups& groups_;
  RowsOfGroup rows_;
  std::size_t total_ = 0;
  Table table_;
};

template <class Groups, class RowsOfGroup>
PartedRows<Groups, RowsOfGroup> partedRowsOf(std::string id, std::string caption,
                                             const Column& labels, const Groups& groups,
                                             RowsOfGroup rows) {
  return {std::move(id), std::move(caption), labels, groups, rows};
}

// Of groups that are lists of rows themselves.
template <class Groups>
auto partedRowsOf(std::string id, std::string caption, const Column& labels, const Groups& groups) {
  return partedRowsOf(std::move(id), std::move(caption), labels, groups, std::identity());
}

inline Panel panelOf(std::string xLabel, std::string yLabel) {
  Panel panel;
  panel.x.label = std::move(xLabel);
  panel.y.label = std::move(yLabel);
  return panel;
}

// Probabilities by probabilities, one unit as long on x as on y.
inline Panel unitSquare(std::string xLabel, std::string yLabel) {
  Panel panel = panelOf(std::move(xLabel), std::move(yLabel));
  panel.equalUnits = true;
  panel.x.least = panel.y.least = 0;
  panel.x.most = panel.y.most = 1;
  return panel;
}

// Straight between the points.
inline Series lineOf(std::string name, std::vector<double> x, std::vector<double> y) {
  Series series;
  series.name = std::move(name);
  series.x = std::move(x);
  series.y = std::move(y);
  return series;
}

// A line to compare with.
inline Series guideOf(std::string name, std::vector<double> x, std::vector<double> y) {
  Series series = lineOf(std::move(name), std::move(x), std::move(y));
  series.guide = true;
  return series;
}

// Of one panel.
inline Figure figureOf(std::string id, std::string title, std::string caption, Panel panel) {
  Figure figure;
  figure.id = std::move(id);
  figure.title = std::move(title);
  figure.caption = std::move(caption);
  figure.panels.push_back(std::move(panel));
  return figure;
}

}  // namespace survmeth::report

#endif  // REPORT_BUILD_H_
