// What all analyses share between request and report.
#include "analysis/declare.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "analysis/digest.h"
#include "analysis/newData.h"
#include "frame/expression.h"
#include "frame/select.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

std::string shortNumber(double value) {
  std::string text = std::to_string(value);
  while (text.back() == '0') text.pop_back();
  if (text.back() == '.') text.pop_back();
  return text;
}

// The columns that one option's setting names.
std::vector<std::string> namesIn(const Option& option, const Setting& setting) {
  if (option.type != Type::kColumn && option.type != Type::kColumns) return {};
  if (const auto* name = std::get_if<std::string>(&setting)) return {*name};
  return std::get<std::vector<std::string>>(setting);
}

// The labels that other options name in the column of `option`.
void addNamedLabels(const Declaration& declaration, const Option& option, const void* request,
                    frame::Wanted& want) {
  for (const Option& other : declaration.options) {
    if (other.labelsOf != option.name) continue;
    const std::optional<Setting> setting = other.get(request);
    if (!setting) continue;
    if (const auto* text = std::get_if<std::string>(&*setting)) want.named.push_back(*text);
    if (const auto* list = std::get_if<std::vector<std::string>>(&*setting)) {
      want.named.insert(want.named.end(), list->begin(), list->end());
    }
  }
}

// Runs `action`; what is wrong with a formula is refused as the option that holds it, with the place
// under its text.
template <class Action>
auto readingFormulas(const Declaration& declaration, const void* request, Action action) {
  try {
    return action();
  } catch (const frame::ExpressionError& wrong) {
    for (const Option& option : declaration.options) {
      if (option.type != Type::kFormula) continue;
      const std::optional<Setting> setting = option.get(request);
      if (!setting || std::get<std::string>(*setting) != wrong.text()) continue;
      throw BadOption(option.name, withPlace(wrong));
    }
    throw engine::Refusal(engine::Role::kFormula, engine::Refusal::kNone, wrong.what());
  }
}

// Nothing where every row is complete.
std::vector<std::uint32_t> completeRows(const Declaration& declaration, const frame::Frame& data,
                                        const void* request, bool& all) {
  std::vector<std::uint32_t> rows;
  if (declaration.completeRows) {
    rows = readingFormulas(declaration, request,
                           [&] { return declaration.completeRows(data, request); });
  }
  all = !declaration.completeRows || rows.size() == data.rows;
  return all ? std::vector<std::uint32_t>() : rows;
}

// Of the rows that are left out, those in which all columns that may not be missing have a cell.
std::size_t rowsWithoutValue(const frame::Frame& all, const std::vector<frame::Wanted>& wanted,
                             const std::vector<std::uint32_t>& kept) {
  std::vector<const frame::Column*> columns;
  for (const frame::Wanted& want : wanted) {
    const frame::Column* column = want.mayBeMissing ? nullptr : all.find(want.name);
    if (column != nullptr) columns.push_back(column);
  }
  std::size_t count = 0, next = 0;
  for (std::size_t row = 0; row < all.rows; ++row) {
    if (next < kept.size() && kept[next] == row) {
      ++next;
      continue;
    }
    count += std::none_of(columns.begin(), columns.end(),
                          [row](const frame::Column* column) { return column->isMissing(row); })
                 ? 1
                 : 0;
  }
  return count;
}

// `5 of 228 rows left out: missing in "age" (3), "sex" (2)`; empty when none was.
report::Note leftOut(const frame::Frame& data, const std::vector<frame::Wanted>& wanted,
                     std::size_t incomplete) {
  report::Note note{"rowsLeftOut", {}, {}};
  std::string columns;
  for (const frame::Wanted& want : wanted) {
    const frame::Column* column = data.find(want.name);
    if (want.mayBeMissing || column == nullptr || column->missing == 0) continue;
    if (std::find(note.names.begin(), note.names.end(), want.name) != note.names.end()) continue;
    columns += (columns.empty() ? "\"" : ", \"") + want.name + "\" (" +
               std::to_string(column->missing) + ")";
    note.names.push_back(want.name);
  }
  const std::size_t chosen = data.rowsRead - data.rowsUnchosen;
  note.text = std::to_string(chosen - data.rows) + " of " +
              (data.rowsUnchosen > 0 ? "the " + std::to_string(chosen) + " chosen rows"
                                     : std::to_string(chosen) + " rows") +
              " left out: ";
  if (!columns.empty()) note.text += "missing in " + columns;
  if (incomplete == 0) return note;
  note.text += (columns.empty() ? "" : ", ") + std::string("without a value of the formula (") +
               std::to_string(incomplete) + ")";
  return note;
}

void requireRows(const Declaration& declaration, const frame::Frame& data, const void* request,
                 const std::vector<frame::Wanted>& wanted, std::size_t incomplete) {
  const std::size_t least = declaration.leastRows(request);
  if (data.rows >= least) return;
  std::string what;
  if (data.rowsRead == 0) {
    what = std::string("there are no rows of data") + (data.fromFile ? " below the header" : "");
  } else if (data.rowsRead - data.rowsUnchosen == data.rows) {
    what = (data.rows == 1 ? "there is only " : "there are only ") +
           text::counted(data.rows, "row", "rows");
    for (const frame::Remark& remark : data.remarks) {
      if (remark.code == "rowsChosen") what += " (" + remark.text + ")";
    }
  } else {
    what =
        (data.rows == 0 ? std::string("no row is complete")
                        : "only " + text::counted(data.rows, "row is", "rows are") + " complete") +
        " (" + leftOut(data, wanted, incomplete).text + ")";
  }
  throw engine::Refusal(engine::Role::kRequest, engine::Refusal::kNone, what,
                        engine::Refusal::kNone,
                        "at least " + text::counted(least, "complete row", "complete rows"));
}

// Faces rely on the declared ids before there is a report.
template <class Item>
void inDeclaredOrder(std::vector<Item>& items, const std::vector<std::string>& declared,
                     const std::string& analysis) {
  const auto placeOf = [&](const Item& item) {
    return std::find(declared.begin(), declared.end(), item.id);
  };
  for (const Item& item : items) {
    if (placeOf(item) == declared.end()) {
      throw std::logic_error(analysis + " does not declare " + item.id);
    }
  }
  std::stable_sort(items.begin(), items.end(), [&](const Item& one, const Item& other) {
    return placeOf(one) < placeOf(other);
  });
}

// The same data, none of them borrowed: labels never are.
frame::Frame owned(const frame::Frame& data) {
  frame::Frame made = data;
  made.whole = nullptr;
  for (frame::Column& column : made.columns) {
    if (column.type != frame::Type::kNumber) continue;
    const auto cells =
        std::make_shared<const std::vector<double>>(column.numbers.begin(), column.numbers.end());
    column.numbers = *cells;
    column.keep = cells;
  }
  return made;
}

void inDeclaredOrder(const Declaration& declaration, report::Report& report) {
  inDeclaredOrder(report.tables, declaration.tables, declaration.name);
  inDeclaredOrder(report.figures, declaration.figures, declaration.name);
}

}  // namespace

const Option* Declaration::find(const std::string& option) const {
  for (const Option& each : options) {
    if (each.name == option) return &each;
  }
  return nullptr;
}

std::vector<frame::Wanted> wantedColumns(const Declaration& declaration, const void* request,
                                         const std::vector<std::string>& header) {
  std::vector<frame::Wanted> wanted;
  for (const Option& option : declaration.options) {
    const std::optional<Setting> setting = option.get(request);
    if (!setting) continue;
    for (std::string& name : namesIn(option, *setting)) {
      frame::Wanted want = option.wanted;
      want.name = std::move(name);
      addNamedLabels(declaration, option, request, want);
      wanted.push_back(std::move(want));
    }
  }
  if (!declaration.adjustColumns) return wanted;
  return readingFormulas(declaration, request, [&] {
    declaration.adjustColumns(request, header, wanted);
    return wanted;
  });
}

void requireOptions(const Declaration& declaration, const void* request) {
  for (const Option& option : declaration.options) {
    if (option.required && !option.get(request)) {
      throw BadOption(option.name, "is missing; expected " + option.valueName);
    }
  }
  if (declaration.check) declaration.check(request);
}

Fitted analyse(const Declaration& declaration, const frame::Frame& data, const void* request,
               numerics::Progress& progress, const Parts& parts, const WithData& withData) {
  requireOptions(declaration, request);
  const std::vector<frame::Wanted> wanted =
      wantedColumns(declaration, request, frame::columnNames(data));
  bool all = true;
  const std::vector<std::uint32_t> rows = completeRows(declaration, data, request, all);
  const bool choosing = !all;
  const std::size_t incomplete = choosing ? rowsWithoutValue(data, wanted, rows) : 0;
  frame::Frame chosen;
  if (choosing) {
    chosen = frame::selectRows(data, rows);
    chosen.whole = &data;
  }
  const frame::Frame& used = choosing ? chosen : data;
  requireRows(declaration, used, request, wanted, incomplete);
  Fitted fitted = readingFormulas(declaration, request, [&] {
    try {
      return withNewData(declaration, used, request, progress, parts, withData);
    } catch (const engine::Refusal& refusal) {
      if (!choosing) throw;
      throw refusal.of(rows);
    }
  });
  report::Report& report = fitted.report;
  inDeclaredOrder(declaration, report);
  report.analysis = declaration.name;
  report.data = {used.source, parts.digest ? digest(used) : "", used.rowsRead, used.rows};
  if (!parts.digest) fitted.data = std::make_shared<const frame::Frame>(owned(used));
  report.plan = choices(declaration.options, request, declaration.request().get());
  std::vector<report::Note> notes;
  for (const frame::Remark& remark : data.remarks) {
    notes.push_back({remark.code, remark.text, remark.names});
  }
  if (used.rowsRead - used.rowsUnchosen > used.rows) {
    notes.push_back(leftOut(used, wanted, incomplete));
  }
  report.notes.insert(report.notes.begin(), notes.begin(), notes.end());
  return fitted;
}

report::Report withRest(const Declaration& declaration, const Fitted& fitted, const void* request) {
  if (!declaration.outlivesData) throw std::logic_error(declaration.name + " is of its data");
  report::Report report = fitted.report;
  numerics::Progress quiet;
  declaration.addParts(fitted.result, request, Parts::rest(), quiet, report);
  report.data.digest = digest(*fitted.data);
  inDeclaredOrder(declaration, report);
  return report;
}

Place placeOf(const Declaration& declaration, const void* request, const engine::Refusal& refusal) {
  for (const Option& option : declaration.options) {
    if (option.role != refusal.role() || option.role == engine::Role::kValue) continue;
    const std::optional<Setting> setting = option.get(request);
    if (!setting) continue;
    const std::vector<std::string> names = namesIn(option, *setting);
    if (names.size() == 1) return {option.name, names.front()};
    if (refusal.column() < names.size()) return {option.name, names[refusal.column()]};
    return {option.name, {}};
  }
  return {};
}

Range between(double least, double most) {
  Range range;
  range.least = least;
  range.most = most;
  range.open = true;
  range.expected = "a number between " + shortNumber(least) + " and " + shortNumber(most);
  return range;
}

Range above(double least) {
  Range range;
  range.least = least;
  range.open = true;
  range.expected = least == 0 ? "a positive number" : "a number above " + shortNumber(least);
  return range;
}

Range wholeFrom(double least) {
  Range range;
  range.least = least;
  range.whole = true;
  range.expected = "a whole number not below " + shortNumber(least);
  return range;
}

const Declaration* findDeclaration(const std::string& name) {
  for (const Declaration& each : declarations()) {
    if (each.name == name) return &each;
  }
  return nullptr;
}

}  // namespace survmeth::analysis
