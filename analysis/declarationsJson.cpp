#include "analysis/declarationsJson.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "analysis/reading.h"

namespace survmeth::analysis {
namespace {

using Json = nlohmann::ordered_json;

const char* nameOf(Type type) {
  switch (type) {
    case Type::kFlag:
      return "flag";
    case Type::kNumber:
      return "number";
    case Type::kChoice:
      return "choice";
    case Type::kColumn:
      return "column";
    case Type::kNumbers:
      return "numbers";
    case Type::kTexts:
      return "texts";
    case Type::kColumns:
      return "columns";
    case Type::kFormula:
      return "formula";
    case Type::kData:
      return "data";
    case Type::kText:
      break;
  }
  return "text";
}

const char* nameOf(frame::Cells cells) {
  switch (cells) {
    case frame::Cells::kNumbers:
      return "numbers";
    case frame::Cells::kText:
      return "labels";
    case frame::Cells::kEither:
    case frame::Cells::kAny:
      break;
  }
  return "numbers or labels";
}

Json jsonOf(const Option& option) {
  Json json = {{"name", option.name},
               {"type", nameOf(option.type)},
               {"help", option.help},
               {"required", option.required}};
  if (!option.valueName.empty()) json["value"] = option.valueName;
  if (!option.defaultText.empty()) json["default"] = option.defaultText;
  if (!option.choices.empty()) json["choices"] = option.choices;
  if (std::isfinite(option.range.least)) json["least"] = option.range.least;
  if (std::isfinite(option.range.most)) json["most"] = option.range.most;
  if (!option.range.expected.empty()) json["expected"] = option.range.expected;
  if (option.type == Type::kColumn || option.type == Type::kColumns) {
    json["cells"] = nameOf(option.wanted.cells);
    if (std::isfinite(option.wanted.least)) json["leastCell"] = option.wanted.least;
  }
  if (!option.table.empty()) json["table"] = option.table;
  if (!option.labelsOf.empty()) json["labelsOf"] = option.labelsOf;
  return json;
}

Json jsonOf(const std::vector<Option>& options) {
  Json json = Json::array();
  for (const Option& option : options) json.push_back(jsonOf(option));
  return json;
}

Json jsonOf(const Declaration& declaration) {
  Json json;
  json["name"] = declaration.name;
  json["summary"] = declaration.summary;
  json["details"] = declaration.details;
  json["examples"] = declaration.examples;
  json["tables"] = declaration.tables;
  json["figures"] = declaration.figures;
  json["options"] = jsonOf(declaration.options);
  if (declaration.lasting) json["predict"] = jsonOf(declaration.lasting->predict);
  return json;
}

}  // namespace

std::string declarationsJson(const std::string& version, const Declaration* only) {
  Json json = {{"schema", "survmeth-help/1"}, {"program", "survmeth"}, {"version", version}};
  json["analyses"] = Json::array();
  for (const Declaration& each : declarations()) {
    if (only == nullptr || each.name == only->name) json["analyses"].push_back(jsonOf(each));
  }
  json["reading"] = jsonOf(readingOptions());
  return json.dump(2) + "\n";
}

}  // namespace survmeth::analysis
