#include "cli/referenceCase.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>

#include "cli/run.h"
#include "cli/shell/problem.h"
#include "text/numbers.h"

namespace cli {
namespace {

namespace analysis = survmeth::analysis;
namespace report = survmeth::report;
namespace text = survmeth::text;

using analysis::JsonError;
using analysis::JsonNode;
using report::Column;
using report::Report;
using Value = std::variant<std::monostate, double, std::string>;

constexpr const char* kSchema = "survmeth-selftest/1";
constexpr const char* kNone = "-";

Quantity quantityOf(const JsonNode& node, const analysis::Plan& plan) {
  const std::string what = "a quantity";
  node.requireKnown(
      {"analysis", "fact", "table", "row", "column", "expected", "tolerance", "source"}, what);
  Quantity quantity;
  if (const JsonNode* name = node.find("analysis")) {
    quantity.analysis = name->asText("the analysis");
  } else if (plan.analyses.size() == 1) {
    quantity.analysis = plan.analyses.front().name;
  }
  if (std::none_of(plan.analyses.begin(), plan.analyses.end(),
                   [&](const auto& each) { return each.name == quantity.analysis; })) {
    throw JsonError(node.place, what +
                                    " is of no analysis of the plan; expected \"analysis\" with "
                                    "the name of one");
  }
  if (const JsonNode* fact = node.find("fact")) {
    quantity.fact = fact->asText("the fact");
  } else {
    quantity.table = node.at("table", what).asText("the table");
    quantity.column = node.at("column", what).asText("the column");
    for (const analysis::JsonMember& cell : node.at("row", what).asObject("the row")) {
      quantity.row.emplace_back(cell.name, analysis::settingOf(cell.value, cell.name));
    }
  }
  const JsonNode& expected = node.at("expected", what);
  if (expected.kind == JsonNode::Kind::kText) {
    quantity.expected = expected.text;
  } else if (expected.kind != JsonNode::Kind::kNull) {
    quantity.expected = expected.asNumber("what is expected");
    const JsonNode& tolerance = node.at("tolerance", what);
    quantity.tolerance = tolerance.asNumber("the tolerance");
    if (!(quantity.tolerance >= 0)) {
      throw JsonError(tolerance.place, "the tolerance is below 0");
    }
  }
  quantity.source = node.at("source", what).asText("the source");
  return quantity;
}

ReferenceCase caseOf(const JsonNode& root) {
  const std::string what = "the case";
  root.requireKnown({"schema", "title", "software", "plan", "quantities"}, what);
  const JsonNode& schema = root.at("schema", what);
  if (schema.asText("the schema") != kSchema) {
    throw JsonError(schema.place,
                    "the schema is " + quote(schema.text) + "; expected " + quote(kSchema));
  }
  ReferenceCase reference;
  reference.title = root.at("title", what).asText("the title");
  reference.software = root.at("software", what).asText("the software");
  reference.plan = analysis::planOf(root.at("plan", what));
  const JsonNode& quantities = root.at("quantities", what);
  for (const JsonNode& each : quantities.asArray("the list of quantities")) {
    reference.quantities.push_back(quantityOf(each, reference.plan));
  }
  if (reference.quantities.empty()) {
    throw JsonError(quantities.place, "there is no quantity; expected at least one");
  }
  return reference;
}

Value valueAt(const Column& column, std::size_t row) {
  if (column.isLabels()) return column.labels()[row];
  const double number = column.numbers()[row];
  return std::isnan(number) ? Value() : Value(number);
}

bool holds(const Column& column, std::size_t row, const report::Setting& wanted) {
  if (column.isLabels()) {
    const auto* label = std::get_if<std::string>(&wanted);
    return label != nullptr && *label == column.labels()[row];
  }
  const auto* number = std::get_if<double>(&wanted);
  return number != nullptr && *number == column.numbers()[row];
}

// The values of the quantity's column in all rows that hold what is said.
std::vector<Value> cellsOf(const Quantity& quantity, const Report& found) {
  std::vector<Value> values;
  for (const report::Table& table : found.tables) {
    const Column* column = table.id == quantity.table ? table.find(quantity.column) : nullptr;
    if (column == nullptr) continue;
    for (std::size_t row = 0; row < table.rows(); ++row) {
      const bool its = std::all_of(quantity.row.begin(), quantity.row.end(), [&](const auto& each) {
        const Column* by = table.find(each.first);
        return by != nullptr && holds(*by, row, each.second);
      });
      if (its) values.push_back(valueAt(*column, row));
    }
  }
  return values;
}

// The quantity's values: one, where it is named well.
std::vector<Value> valuesOf(const Quantity& quantity, const Report& found) {
  if (quantity.fact.empty()) return cellsOf(quantity, found);
  for (const report::Fact& fact : found.facts) {
    if (fact.key != quantity.fact) continue;
    if (const auto* number = std::get_if<double>(&fact.value)) {
      return {std::isnan(*number) ? Value() : Value(*number)};
    }
    if (const auto* label = std::get_if<std::string>(&fact.value)) return {Value(*label)};
    return {Value()};
  }
  return {};
}

std::string shown(const Value& value) {
  if (const auto* number = std::get_if<double>(&value)) return text::exact(*number);
  if (const auto* label = std::get_if<std::string>(&value)) return *label;
  return "none";
}

}  // namespace

std::string Quantity::name() const {
  if (!fact.empty()) return fact;
  std::string name = table + "." + column;
  for (std::size_t i = 0; i < row.size(); ++i) {
    name += i == 0 ? " (" : ", ";
    const auto* number = std::get_if<double>(&row[i].second);
    const auto* label = std::get_if<std::string>(&row[i].second);
    name += row[i].first + ": " +
            (number != nullptr  ? text::exact(*number)
             : label != nullptr ? *label
                                : std::string("?"));
  }
  return row.empty() ? name : name + ")";
}

ReferenceCase readReferenceCase(const std::string& file) {
  try {
    ReferenceCase reference = caseOf(analysis::parseJson(contentsOf(file)));
    reference.file = file;
    reference.name = std::filesystem::path(file).stem().string();
    return reference;
  } catch (const JsonError& wrong) {
    throw Problem(file + ", " + wrong.what());
  }
}

Comparison notObtained(const Quantity& quantity) {
  return {shown(quantity.expected), kNone, kNone, false};
}

Comparison compare(const ReferenceCase& reference, const Quantity& quantity,
                   const std::vector<Report>& reports) {
  std::vector<Value> values;
  for (std::size_t i = 0; i < reports.size(); ++i) {
    if (reference.plan.analyses[i].name == quantity.analysis) {
      values = valuesOf(quantity, reports[i]);
    }
  }
  if (values.size() != 1) return notObtained(quantity);
  const Value& value = values.front();
  const auto* expected = std::get_if<double>(&quantity.expected);
  const auto* obtained = std::get_if<double>(&value);
  if (expected == nullptr || obtained == nullptr) {
    return {shown(quantity.expected), shown(value), kNone, value == quantity.expected};
  }
  const double size = *expected == 0 ? 1 : std::fabs(*expected);
  const double difference = std::fabs(*obtained - *expected) / size;
  return {shown(quantity.expected), shown(value), text::brief(difference, 3),
          difference <= quantity.tolerance};
}

}  // namespace cli
