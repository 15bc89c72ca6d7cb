// What commands ask of the columns they have read.
#include <algorithm>
#include <numeric>
#include <optional>

#include "cli/shell/numbers.h"
#include "cli/shell/table.h"

namespace cli {
namespace {

// The numbers of labels that are all numbers, otherwise nothing.
std::optional<std::vector<double>> numbersOf(const std::vector<std::string>& labels) {
  std::vector<double> numbers;
  for (const std::string& label : labels) {
    const std::optional<double> number = parseNumber(label);
    if (!number) return std::nullopt;
    numbers.push_back(*number + 0.0);  // -0 and 0 are one number
  }
  return numbers;
}

}  // namespace

void requireRows(const Table& table, std::size_t least) {
  if (table.rows >= least) return;
  const Place place{table.source, 0, {}};
  const std::string expected = "at least " + counted(least, "complete row", "complete rows");
  if (table.rowsRead == 0) {
    throw problemAt(place, "there are no rows of data below the header", expected);
  }
  std::string what = table.rows == 0
                         ? "no row is complete"
                         : "only " + counted(table.rows, "row is", "rows are") + " complete";
  if (table.leftOut() == 0) {
    what = (table.rows == 1 ? "there is only " : "there are only ") +
           counted(table.rows, "row", "rows");
  }
  const std::string missing = leftOutNote(table);
  throw problemAt(place, missing.empty() ? what : what + " (" + missing + ")", expected);
}

std::string leftOutNote(const Table& table) {
  if (table.leftOut() == 0) return {};
  std::string note = grouped(table.leftOut()) + " of " + counted(table.rowsRead, "row", "rows") +
                     " left out: missing in ";
  bool first = true;
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const Column& column = table.columns[i];
    const bool before =
        std::any_of(table.columns.begin(), table.columns.begin() + static_cast<std::ptrdiff_t>(i),
                    [&column](const Column& other) { return other.name == column.name; });
    if (column.missing == 0 || before) continue;
    if (!first) note += ", ";
    first = false;
    note += quote(column.name) + " (" + grouped(column.missing) + ")";
  }
  return note;
}

Groups groupsOf(const Column& column) {
  const std::size_t n = column.labels.size();
  std::vector<std::size_t> order(n);
  std::iota(order.begin(), order.end(), std::size_t{0});
  const std::optional<std::vector<double>> numbers = numbersOf(column.labels);
  // Among spellings of one number the shortest comes first and names the group.
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    const std::string &left = column.labels[a], &right = column.labels[b];
    if (!numbers) return left < right;
    if ((*numbers)[a] != (*numbers)[b]) return (*numbers)[a] < (*numbers)[b];
    return left.size() != right.size() ? left.size() < right.size() : left < right;
  });
  Groups groups;
  std::vector<std::uint32_t> toGroup(n);
  for (std::size_t i = 0; i < n; ++i) {
    const bool merged = numbers && i > 0 && (*numbers)[order[i]] == (*numbers)[order[i - 1]];
    if (!merged) groups.labels.push_back(column.labels[order[i]]);
    toGroup[order[i]] = static_cast<std::uint32_t>(groups.labels.size() - 1);
  }
  groups.counts.assign(groups.labels.size(), 0);
  groups.codes.reserve(column.codes.size());
  for (const std::uint32_t code : column.codes) {
    groups.codes.push_back(toGroup[code]);
    ++groups.counts[toGroup[code]];
  }
  return groups;
}

}  // namespace cli
