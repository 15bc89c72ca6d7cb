#include "cli/help.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "analysis/declare.h"
#include "cli/shell/problem.h"
#include "cli/version.h"

namespace cli {
namespace {

using Json = nlohmann::ordered_json;
using survmeth::analysis::Declaration;
using survmeth::analysis::Option;
using survmeth::analysis::Type;

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
    case Type::kText:
      break;
  }
  return "text";
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
  if (!option.table.empty()) json["table"] = option.table;
  if (!option.labelsOf.empty()) json["labelsOf"] = option.labelsOf;
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
  json["options"] = Json::array();
  for (const Option& option : declaration.options) json["options"].push_back(jsonOf(option));
  return json;
}

// Text in a cell of a Markdown table.
std::string cell(const std::string& text) {
  std::string escaped;
  for (const char c : text) escaped += c == '|' ? std::string("\\|") : std::string(1, c);
  return escaped;
}

std::string meaningOf(const Option& option) {
  std::string text = option.help;
  for (std::size_t i = 0; i < option.choices.size(); ++i) {
    text += (i == 0 ? ": `" : ", `") + option.choices[i] + "`";
  }
  if (option.required) text += "; required";
  if (!option.defaultText.empty()) text += "; default " + option.defaultText;
  return text;
}

std::string pageOf(const Declaration& declaration) {
  std::string page = "# survmeth " + declaration.name + "\n\n" + declaration.summary + ".\n\n";
  if (!declaration.details.empty()) page += declaration.details + "\n\n";
  for (const std::string& example : declaration.examples) page += "    " + example + "\n";
  page += "\n| option | value | meaning |\n|---|---|---|\n";
  for (const Option& option : declaration.options) {
    page += "| `--" + option.name + "` | " + cell(option.valueName) + " | " +
            cell(meaningOf(option)) + " |\n";
  }
  page += "\nTables: ";
  for (std::size_t i = 0; i < declaration.tables.size(); ++i) {
    page += (i > 0 ? ", `" : "`") + declaration.tables[i] + "`";
  }
  page += ".";
  for (std::size_t i = 0; i < declaration.figures.size(); ++i) {
    page += (i == 0 ? " Figures: `" : ", `") + declaration.figures[i] + "`";
  }
  if (!declaration.figures.empty()) page += ".";
  return page + " [Layout and keys](../report.md), [data](../data.md).\n";
}

const Declaration& named(const std::string& name) {
  const Declaration* found = survmeth::analysis::findDeclaration(name);
  if (found != nullptr) return *found;
  std::vector<std::string> names;
  for (const Declaration& each : survmeth::analysis::declarations()) names.push_back(each.name);
  throw Problem("there is no command " + quote(name) + "; expected one of " +
                nearestFirst(name, names));
}

struct Typed {
  std::string command;
  bool json = false;
};

void run(const Typed& typed, Session& session) {
  if (!typed.json) {
    if (typed.command.empty()) {
      throw Problem("there is no command; expected one, as in survmeth help life, or --json");
    }
    session.output.text() = pageOf(named(typed.command));
    return;
  }
  Json json = {{"schema", "survmeth-help/1"}, {"program", "survmeth"}, {"version", kVersion}};
  json["analyses"] = Json::array();
  for (const Declaration& each : survmeth::analysis::declarations()) {
    if (typed.command.empty() || each.name == named(typed.command).name) {
      json["analyses"].push_back(jsonOf(each));
    }
  }
  session.output.text() = json.dump(2) + "\n";
}

}  // namespace

Run addHelp(CLI::App& app) {
  const auto typed = std::make_shared<Typed>();
  app.add_option("COMMAND", typed->command, "The command; with --json all where none is named")
      ->type_name("");
  app.add_flag("--json", typed->json, "The declarations for programs");
  return [typed](Session& session) { run(*typed, session); };
}

}  // namespace cli
