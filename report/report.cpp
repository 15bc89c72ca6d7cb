// What a report has to be before anything renders it.
#include "report/report.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <utility>

namespace survmeth::report {
namespace {

void require(bool holds, const std::string& what) {
  if (!holds) throw std::logic_error("report: " + what);
}

bool isId(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_';
  });
}

void requireTable(const Table& table) {
  std::set<std::string_view> keys;
  for (const Column& column : table.columns) {
    require(!column.key.empty(), "a column of " + table.id + " has no key");
    require(keys.insert(column.key).second, table.id + " has two columns " + column.key);
    require(column.rows() == table.rows(), table.id + "." + column.key + " has another length");
  }
  if (table.partedBy.empty()) return;
  const Column* parting = table.find(table.partedBy);
  require(parting != nullptr && parting->isLabels(),
          table.id + " is parted by " + table.partedBy + ", which is no column of labels");
}

}  // namespace

Numbers::Numbers(std::vector<double> own) {
  auto owned = std::make_shared<const std::vector<double>>(std::move(own));
  numbers_ = *owned;
  owner_ = std::move(owned);
}

Numbers Numbers::borrowed(std::span<const double> numbers) {
  Numbers result;
  result.numbers_ = numbers;
  return result;
}

void Numbers::hold(std::shared_ptr<const void> owner) {
  if (!owner_) owner_ = std::move(owner);
}

std::size_t Column::rows() const {
  return std::visit([](const auto& each) { return each.size(); }, values);
}

std::size_t Table::rows() const { return columns.empty() ? 0 : columns.front().rows(); }

const Column* Table::find(std::string_view key) const {
  const auto found = std::find_if(columns.begin(), columns.end(),
                                  [key](const Column& column) { return column.key == key; });
  return found == columns.end() ? nullptr : &*found;
}

void Table::hold(const std::shared_ptr<const void>& owner) {
  for (Column& column : columns) {
    if (auto* numbers = std::get_if<Numbers>(&column.values)) numbers->hold(owner);
  }
}

void requireWellFormed(const Report& report) {
  std::set<std::string_view> facts, tables, figures;
  for (const Fact& fact : report.facts) {
    require(!fact.key.empty(), "a fact has no key");
    require(facts.insert(fact.key).second, "two facts " + fact.key);
  }
  for (const Table& table : report.tables) {
    require(isId(table.id), "a table's id is \"" + table.id + '"');
    require(tables.insert(table.id).second, "two tables " + table.id);
    requireTable(table);
  }
  for (const Figure& figure : report.figures) {
    require(isId(figure.id), "a figure's id is \"" + figure.id + '"');
    require(figures.insert(figure.id).second, "two figures " + figure.id);
  }
}

}  // namespace survmeth::report
