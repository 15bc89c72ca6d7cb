// A lasting Cox fit as JSON and back, exact in every number. What is read has to fit together: a
// file may carry a right checksum and be made by anybody.
#include <algorithm>
#include <cmath>
#include <utility>

#include "analysis/cox/saved.h"
#include "analysis/savedFit.h"
#include "frame/expression.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;
using frame::Cells;
using frame::Expression;
using model::CodedVariable;
using model::VariableKind;
using report::JsonWriter;

template <class Value>
using Words = std::vector<std::pair<const char*, Value>>;
const Words<VariableKind> kKinds = {{"plain", VariableKind::kPlain},
                                    {"factor", VariableKind::kFactor},
                                    {"numbers", VariableKind::kNumbers},
                                    {"naturalSpline", VariableKind::kNaturalSpline},
                                    {"restrictedSpline", VariableKind::kRestrictedSpline},
                                    {"polynomial", VariableKind::kPolynomial}};
const Words<Cells> kCells = {{"numbers", Cells::kNumbers}, {"labels", Cells::kText}};
const Words<cox::Column> kColumns = {{"estimated", cox::Column::kEstimated},
                                     {"aliased", cox::Column::kAliased}};

template <class Value>
const char* wordOf(const Words<Value>& words, Value value) {
  for (const auto& [word, its] : words) {
    if (its == value) return word;
  }
  return "";
}

template <class Value>
Value valueOf(const Words<Value>& words, const JsonNode& node, const std::string& what) {
  for (const auto& [word, value] : words) {
    if (node.asText(what) == word) return value;
  }
  throw JsonError(node.place, what + " is of no kind that is known");
}

[[noreturn]] void refuse(const JsonNode& node) {
  throw JsonError(node.place, "the model contradicts itself");
}
void require(bool holds, const JsonNode& node) {
  if (!holds) refuse(node);
}

Expression expressionOf(const JsonNode& node) {
  try {
    return frame::parseExpression(node.asText("an expression"));
  } catch (const frame::ExpressionError& wrong) {
    throw JsonError(node.place, wrong.what());
  }
}

void writeBasis(const CodedVariable& variable, JsonWriter& json) {
  if (const auto* natural = std::get_if<model::NaturalSpline>(&variable.basis)) {
    json.key("knots"), writeExact(json, natural->knots);
    json.key("boundary"), writeExact(json, std::vector<double>{natural->low, natural->high});
    json.key("null"), writeExact(json, natural->null);
  } else if (const auto* restricted = std::get_if<model::RestrictedSpline>(&variable.basis)) {
    json.key("knots"), writeExact(json, restricted->knots);
  } else if (const auto* polynomial = std::get_if<model::Polynomial>(&variable.basis)) {
    json.member("degree", static_cast<double>(polynomial->degree));
    json.member("raw", polynomial->raw);
    json.key("centre"), writeExact(json, polynomial->centre);
    json.key("norm"), writeExact(json, polynomial->norm);
  }
}

std::vector<double> knotsOf(const JsonNode& node) {
  const JsonNode& list = node.at("knots", "a variable");
  std::vector<double> knots = exactNumbers(list, "the knots");
  for (const double each : knots) require(std::isfinite(each), list);
  require(std::is_sorted(knots.begin(), knots.end()), list);
  return knots;
}

void readBasis(const JsonNode& node, CodedVariable& variable) {
  if (variable.variable.kind == VariableKind::kNaturalSpline) {
    model::NaturalSpline basis;
    basis.knots = knotsOf(node);
    const auto ends = exactNumbers(node.at("boundary", "a variable"), "the boundary", 2);
    basis.low = ends[0];
    basis.high = ends[1];
    require(basis.low < basis.high && std::isfinite(basis.high - basis.low), node);
    // A cubic B-spline for each knot and three more.
    basis.null = exactRows(node.at("null", "a variable"), "the weights", basis.columns(),
                           basis.knots.size() + 3);
    variable.basis = std::move(basis);
  } else if (variable.variable.kind == VariableKind::kRestrictedSpline) {
    model::RestrictedSpline basis{knotsOf(node)};
    require(basis.knots.size() >= 3, node);
    variable.basis = std::move(basis);
  } else if (variable.variable.kind == VariableKind::kPolynomial) {
    model::Polynomial basis;
    const double degree = node.at("degree", "a variable").asNumber("the degree");
    require(degree >= 1 && degree <= 1000 && degree == std::trunc(degree), node);
    basis.degree = static_cast<std::size_t>(degree);
    const JsonNode& raw = node.at("raw", "a variable");
    require(raw.kind == JsonNode::Kind::kFlag, raw);
    basis.raw = raw.flag;
    basis.centre =
        exactNumbers(node.at("centre", "a variable"), "the centres", basis.raw ? 0 : basis.degree);
    basis.norm = exactNumbers(node.at("norm", "a variable"), "the lengths",
                              basis.raw ? 0 : basis.degree + 2);
    variable.basis = std::move(basis);
  }
}

void writeCoding(const model::Coding& coding, JsonWriter& json) {
  const model::Formula& formula = coding.formula();
  json.member("formula", formula.text);
  json.key("variables");
  json.beginArray();
  for (const CodedVariable& variable : coding.variables()) {
    json.beginObject();
    json.member("name", variable.variable.name);
    json.member("expression", deparse(variable.variable.expression));
    json.member("kind", wordOf(kKinds, variable.variable.kind));
    json.member("column", variable.column);
    json.member("levels", variable.levels);
    writeBasis(variable, json);
    json.endObject();
  }
  json.endArray();
  json.key("terms");
  json.beginArray();
  for (const model::Term& term : formula.terms) {
    json.beginObject(true);
    json.member("name", term.name);
    json.key("variables");
    writeExact(json, std::vector<double>(term.variables.begin(), term.variables.end()));
    json.endObject();
  }
  json.endArray();
  const auto texts = [](const std::vector<Expression>& expressions) {
    std::vector<std::string> all;
    for (const Expression& each : expressions) all.push_back(deparse(each));
    return all;
  };
  json.member("strataOf", texts(formula.strata));
  json.member("strataNames", formula.strataNames);
  json.member("offsets", texts(formula.offsets));
}

model::Coding readCoding(const JsonNode& node) {
  model::Formula formula;
  formula.text = node.at("formula", "the model").asText("the formula");
  std::vector<CodedVariable> variables;
  for (const JsonNode& each : node.at("variables", "the model").asArray("the variables")) {
    const std::string what = "a variable";
    CodedVariable variable;
    variable.variable.name = each.at("name", what).asText("its name");
    variable.variable.expression = expressionOf(each.at("expression", what));
    variable.variable.kind = valueOf(kKinds, each.at("kind", what), "its kind");
    variable.column = each.at("column", what).asText("its column");
    variable.levels = textsOf(each.at("levels", what), "its levels");
    readBasis(each, variable);
    formula.variables.push_back(variable.variable);
    variables.push_back(std::move(variable));
  }
  for (const JsonNode& each : node.at("terms", "the model").asArray("the terms")) {
    model::Term term;
    term.name = each.at("name", "a term").asText("its name");
    term.variables =
        indexesOf(each.at("variables", "a term"), "a variable's number", variables.size());
    require(!term.variables.empty() &&
                std::is_sorted(term.variables.begin(), term.variables.end()) &&
                term.variables.size() <= 8,
            each);
    formula.terms.push_back(std::move(term));
  }
  const JsonNode& strata = node.at("strataOf", "the model");
  for (const JsonNode& each : strata.asArray("the strata")) {
    formula.strata.push_back(expressionOf(each));
  }
  formula.strataNames =
      textsOf(node.at("strataNames", "the model"), "names of strata", formula.strata.size());
  for (const JsonNode& each : node.at("offsets", "the model").asArray("the offsets")) {
    formula.offsets.push_back(expressionOf(each));
  }
  return {std::move(formula), std::move(variables)};
}

void writeHazard(const cox::HazardSums& sums, JsonWriter& json) {
  const auto doubles = [&json](const char* name, const auto& values) {
    json.key(name);
    writeExact(json, std::vector<double>(values.begin(), values.end()));
  };
  json.beginObject();
  doubles("stratum", sums.stratum);
  doubles("firstTime", sums.firstTime);
  doubles("lastTime", sums.lastTime);
  doubles("time", sums.time);
  doubles("hazard", sums.hazard);
  doubles("variance", sums.variance);
  json.key("mean"), writeExact(json, sums.mean);
  if (!sums.scale.empty()) doubles("scale", sums.scale);
  doubles("shift", sums.shift);
  doubles("centre", sums.centre);
  doubles("coefficients", sums.coefficients);
  std::vector<std::string> columns;
  for (const cox::Column each : sums.column) columns.emplace_back(wordOf(kColumns, each));
  json.member("column", columns);
  json.endObject();
}

cox::HazardSums readHazard(const JsonNode& node, const CoxSaved& saved) {
  const std::string what = "the hazards";
  const std::size_t p = saved.names.size();
  cox::HazardSums sums;
  for (const std::size_t code : indexesOf(node.at("stratum", what), "a stratum's code",
                                          std::max<std::size_t>(saved.strata.size(), 1))) {
    sums.stratum.push_back(static_cast<std::uint32_t>(code));
  }
  const std::size_t strata = sums.stratum.size();
  sums.time = exactNumbers(node.at("time", what), "the times");
  const std::size_t times = sums.time.size();
  sums.firstTime = indexesOf(node.at("firstTime", what), "a time's number", times + 1);
  require(sums.firstTime.size() == strata + 1 &&
              std::is_sorted(sums.firstTime.begin(), sums.firstTime.end()) &&
              std::is_sorted(sums.stratum.begin(), sums.stratum.end()),
          node);
  sums.lastTime = exactNumbers(node.at("lastTime", what), "the last times", strata);
  sums.hazard = exactNumbers(node.at("hazard", what), "the hazards", times);
  sums.variance = exactNumbers(node.at("variance", what), "the variances", times);
  sums.mean = exactRows(node.at("mean", what), "the means", p, times);
  if (const JsonNode* scale = node.find("scale")) {
    sums.scale = exactNumbers(*scale, "the scales", times);
  }
  sums.shift = exactNumbers(node.at("shift", what), "the shifts", strata);
  sums.centre = exactNumbers(node.at("centre", what), "the centres", strata * p);
  sums.coefficients = exactNumbers(node.at("coefficients", what), "the coefficients", p);
  const JsonNode& columns = node.at("column", what);
  require(columns.asArray("the columns").size() == p, columns);
  for (const JsonNode& each : columns.elements) {
    sums.column.push_back(valueOf(kColumns, each, "a column"));
  }
  sums.covariance = saved.covariance;
  return sums;
}

// The names that the coding gives its columns, from a frame without rows.
std::vector<std::string> namesOf(const CoxSaved& saved, const JsonNode& node) {
  frame::Frame empty;
  for (const frame::Wanted& want : saved.columns) {
    empty.columns.push_back(want.cells == Cells::kNumbers
                                ? frame::numberColumn(want.name, {})
                                : frame::labelColumn(want.name, frame::Type::kText, {}, {}));
  }
  try {
    return saved.coding.design(empty).design.names;
  } catch (const std::invalid_argument&) {  // an expression or a column that does not suit
    refuse(node);
  }
}

}  // namespace

void writeCoxSaved(const CoxSaved& saved, JsonWriter& json) {
  writeCoding(saved.coding, json);
  json.member("entry", saved.entry ? deparse(*saved.entry) : "");
  json.member("exit", saved.exit ? deparse(*saved.exit) : "");
  json.key("columns");
  json.beginArray();
  for (const frame::Wanted& want : saved.columns) {
    json.beginObject(true);
    json.member("name", want.name);
    json.member("cells", wordOf(kCells, want.cells));
    json.member("levels", want.named);
    json.endObject();
  }
  json.endArray();
  json.member("names", saved.names);
  json.key("coefficients"), writeExact(json, saved.coefficients);
  json.key("mean"), writeExact(json, saved.mean);
  json.key("covariance"), writeExact(json, saved.covariance);
  json.member("strata", saved.strata);
  json.key("stratumMean"), writeExact(json, saved.stratumMean);
  json.key("hazard");
  if (saved.hazard) {
    writeHazard(*saved.hazard, json);
  } else {
    json.null();
  }
}

CoxSaved readCoxSaved(const JsonNode& node) {
  const std::string what = "the model";
  CoxSaved saved;
  saved.coding = readCoding(node);
  for (const auto& [member, time] : {std::pair("entry", &saved.entry), {"exit", &saved.exit}}) {
    const JsonNode& its = node.at(member, what);
    if (!its.asText("a time").empty()) *time = expressionOf(its);
  }
  for (const JsonNode& each : node.at("columns", what).asArray("the columns")) {
    frame::Wanted want;
    want.name = each.at("name", "a column").asText("its name");
    want.cells = valueOf(kCells, each.at("cells", "a column"), "what its cells are");
    want.named = textsOf(each.at("levels", "a column"), "its levels");
    saved.columns.push_back(std::move(want));
  }
  saved.names = textsOf(node.at("names", what), "the names");
  const std::size_t p = saved.names.size();
  saved.coefficients = exactNumbers(node.at("coefficients", what), "the coefficients", p);
  saved.mean = exactNumbers(node.at("mean", what), "the means", p);
  saved.covariance = exactMatrix(node.at("covariance", what), "the covariance", p);
  saved.strata = textsOf(node.at("strata", what), "the strata");
  saved.stratumMean =
      exactRows(node.at("stratumMean", what), "the strata's means", saved.strata.size(), p);
  require(p > 0 && namesOf(saved, node) == saved.names, node);
  require(saved.strata.empty() == saved.coding.formula().strata.empty(), node);
  const JsonNode& hazard = node.at("hazard", what);
  if (hazard.kind != JsonNode::Kind::kNull) saved.hazard = readHazard(hazard, saved);
  return saved;
}

}  // namespace survmeth::analysis
