// The coding of a lasting Cox fit as JSON and back.
#include <algorithm>
#include <cmath>
#include <utility>

#include "analysis/cox/savedParts.h"
#include "analysis/savedFit.h"
#include "frame/expression.h"

namespace survmeth::analysis::saved {
namespace {

using frame::Expression;
using model::CodedVariable;
using model::VariableKind;
using report::JsonWriter;

const Words<VariableKind> kKinds = {{"plain", VariableKind::kPlain},
                                    {"factor", VariableKind::kFactor},
                                    {"numbers", VariableKind::kNumbers},
                                    {"naturalSpline", VariableKind::kNaturalSpline},
                                    {"restrictedSpline", VariableKind::kRestrictedSpline},
                                    {"polynomial", VariableKind::kPolynomial}};

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

}  // namespace

Expression expressionOf(const JsonNode& node) {
  try {
    return frame::parseExpression(node.asText("an expression"));
  } catch (const frame::ExpressionError& wrong) {
    throw JsonError(node.place, wrong.what());
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

}  // namespace survmeth::analysis::saved
