// The pairs of two methods in tables and figures.
#include "analysis/twoMethods.h"

#include <algorithm>
#include <cmath>

#include "analysis/refusal.h"
#include "report/build.h"
#include "report/keys.h"
#include "report/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {

namespace key = report::key;
using engine::Role;
using report::Kind;

Pairs pairsOf(const frame::Frame& data, const std::string& first, const std::string& second) {
  return {*data.numbers(first), *data.numbers(second), data.lines};
}

report::Table pairTable(const char* id, const char* caption, const Pairs& pairs,
                        std::vector<report::Column> more) {
  std::vector<double> lines(pairs.first.rows());
  for (std::size_t i = 0; i < lines.size(); ++i) {
    lines[i] = static_cast<double>(pairs.lines.line(i));
  }
  report::Table table = report::tableOf(
      id, caption,
      {report::Column{key::kLine, "line", Kind::kCount, std::move(lines)},
       report::borrowedColumn(key::kFirst, pairs.first.name, Kind::kTime, pairs.first.numbers),
       report::borrowedColumn(key::kSecond, pairs.second.name, Kind::kTime, pairs.second.numbers)});
  for (report::Column& column : more) table.columns.push_back(std::move(column));
  return table;
}

void noteConstants(std::initializer_list<const frame::Column*> columns, const char* consequence,
                   report::Report& report) {
  for (const frame::Column* column : columns) {
    const std::span<const double> values = column->numbers;
    if (std::any_of(values.begin(), values.end(),
                    [&values](double each) { return each != values.front(); })) {
      continue;
    }
    report.notes.push_back({"constant",
                            "every value of " + text::quote(column->name) + " is " +
                                report::brief(values.front()) + ": " + consequence,
                            {column->name}});
  }
}

std::pair<double, double> extentOf(std::span<const double> values) {
  double least = INFINITY, most = -INFINITY;
  for (const double value : values) {
    if (std::isnan(value)) continue;
    least = std::min(least, value);
    most = std::max(most, value);
  }
  return {least, most};
}

std::pair<double, double> widthOf(std::span<const double> values) {
  auto [least, most] = extentOf(values);
  if (least == most) {
    least -= least == 0 ? 1 : std::fabs(least) / 2;
    most += most == 0 ? 1 : std::fabs(most) / 2;
  }
  return {least, most};
}

report::Series pointsAt(std::span<const double> x, std::span<const double> y) {
  report::Series series;
  series.kind = report::SeriesKind::kPoints;
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (std::isnan(x[i]) || std::isnan(y[i])) continue;
    series.x.push_back(x[i]);
    series.y.push_back(y[i]);
  }
  return series;
}

void addLevel(const char* name, const Estimate& level, std::pair<double, double> ends,
              report::Panel& panel) {
  report::Series line = report::lineOf(name, {ends.first, ends.second}, {level.value, level.value});
  report::Series band;
  band.name = name;
  band.kind = report::SeriesKind::kBand;
  band.x = line.x;
  band.lower.assign(2, level.lower);
  band.upper.assign(2, level.upper);
  panel.series.push_back(std::move(band));
  panel.series.push_back(std::move(line));
}

}  // namespace survmeth::analysis
