// A lasting Cox fit as JSON and back, exact in every number. What is read has to fit together: a
// file may carry a right checksum and be made by anybody.
#include <algorithm>
#include <cmath>
#include <utility>

#include "analysis/cox/saved.h"
#include "analysis/cox/savedParts.h"
#include "analysis/savedFit.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;
using frame::Cells;
using report::JsonWriter;
using saved::expressionOf;
using saved::readCoding;
using saved::refuse;
using saved::require;
using saved::valueOf;
using saved::wordOf;
using saved::Words;
using saved::writeCoding;

const Words<Cells> kCells = {{"numbers", Cells::kNumbers}, {"labels", Cells::kText}};
const Words<cox::Column> kColumns = {{"estimated", cox::Column::kEstimated},
                                     {"aliased", cox::Column::kAliased}};

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
