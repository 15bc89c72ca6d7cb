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
  const std::span<const double> x = data.numbers(first)->numbers, y = data.numbers(second)->numbers;
  Pairs pairs{{x.begin(), x.end()}, {y.begin(), y.end()}, {}};
  pairs.line.reserve(data.rows);
  for (std::size_t i = 0; i < data.rows; ++i) {
    pairs.line.push_back(static_cast<double>(data.lines.line(i)));
  }
  return pairs;
}

report::Table pairTable(const char* id, const char* caption, const Pairs& pairs,
                        const std::string& first, const std::string& second,
                        std::vector<report::Column> more) {
  report::Table table =
      report::tableOf(id, caption,
                      {report::numberColumn(key::kLine, "line", Kind::kCount, pairs.line),
                       report::numberColumn(key::kFirst, first, Kind::kTime, pairs.first),
                       report::numberColumn(key::kSecond, second, Kind::kTime, pairs.second)});
  for (report::Column& column : more) table.columns.push_back(std::move(column));
  table.display = report::Display::kFilesOnly;
  return table;
}

bool isConstant(std::span<const double> values) {
  return std::all_of(values.begin(), values.end(),
                     [&values](double value) { return value == values.front(); });
}

report::Note constantNote(const std::string& column, double value, const char* consequence) {
  return {
      "constant",
      "every value of " + text::quote(column) + " is " + report::brief(value) + ": " + consequence,
      {column}};
}

std::string confidence(double alpha) { return report::brief(100 * (1 - alpha), 4) + "%"; }

std::pair<double, double> extentOf(std::span<const double> values) {
  double least = INFINITY, most = -INFINITY;
  for (const double value : values) {
    if (std::isnan(value)) continue;
    least = std::min(least, value);
    most = std::max(most, value);
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

report::Series lineFrom(std::string name, double x0, double y0, double x1, double y1) {
  report::Series series;
  series.name = std::move(name);
  series.x = {x0, x1};
  series.y = {y0, y1};
  return series;
}

}  // namespace survmeth::analysis
