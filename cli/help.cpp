#include "cli/help.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/declaration.h"
#include "analysis/declarationsJson.h"
#include "analysis/reading.h"
#include "cli/shell/problem.h"
#include "cli/version.h"

namespace cli {
namespace {

using survmeth::analysis::Declaration;
using survmeth::analysis::Option;

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
  page += " [Layout and keys](../report.md).\n\nOf the [data](../data.md):";
  const auto& reading = survmeth::analysis::readingOptions();
  for (std::size_t i = 0; i < reading.size(); ++i) {
    page += (i > 0 ? ", `--" : " `--") + reading[i].name + "`";
  }
  return page + ".\n";
}

// A footer as paragraphs; what stands below "Example:" is shown as it is.
std::string paragraphsOf(const std::string& footer) {
  std::istringstream lines(footer);
  std::string text, line;
  bool isExample = false;
  while (std::getline(lines, line)) {
    if (line == "Example:") {
      isExample = true;
    } else if (line.empty()) {
      text += "\n\n";
      isExample = false;
    } else if (isExample) {
      text += "    " + line.substr(line.find_first_not_of(' '));
    } else {
      text += (text.empty() || text.back() == '\n' ? "" : " ") + line;
    }
  }
  return text;
}

// Of a command that is not declared.
std::string pageOf(const CLI::App& command) {
  std::string page = "# survmeth " + command.get_name() + "\n\n" + command.get_description() +
                     ".\n\n" + paragraphsOf(command.get_footer()) +
                     "\n\n| option | value | meaning |\n|---|---|---|\n";
  for (const CLI::Option* option : command.get_options()) {
    if (option == command.get_help_ptr()) continue;
    const std::string meaning = option->get_description();
    page += "| `" + option->get_name() + "` | " + cell(option->get_type_name()) + " | " +
            cell(meaning) + (option->get_required() ? "; required" : "") + " |\n";
  }
  return page;
}

// The declared analysis, or what follows one, or nullptr.
const Declaration* declared(const std::string& name) {
  for (const Declaration& each : survmeth::analysis::declarations()) {
    if (each.name == name) return &each;
    if (each.lasting && each.lasting->predict.name == name) return &each.lasting->predict;
  }
  return nullptr;
}

std::string pageNamed(const std::string& name, const CLI::App& program) {
  if (const Declaration* declaration = declared(name)) return pageOf(*declaration);
  std::vector<std::string> names;
  for (const CLI::App* command : program.get_subcommands(nullptr)) {
    if (command->get_name() == "help") continue;
    if (command->get_name() == name) return pageOf(*command);
    names.push_back(command->get_name());
  }
  throw Problem("there is no command " + quote(name) + "; expected one of " +
                nearestFirst(name, names));
}

const Declaration& named(const std::string& name) {
  const Declaration* found = survmeth::analysis::findDeclaration(name);
  if (found != nullptr) return *found;
  std::vector<std::string> names;
  for (const Declaration& each : survmeth::analysis::declarations()) names.push_back(each.name);
  throw Problem("there is no analysis " + quote(name) + "; expected one of " +
                nearestFirst(name, names));
}

struct Typed {
  std::string command;
  bool json = false;
};

void run(const Typed& typed, const CLI::App& program, Session& session) {
  if (!typed.json) {
    if (typed.command.empty()) {
      throw Problem("there is no command; expected one, as in survmeth help life, or --json");
    }
    session.output.text() = pageNamed(typed.command, program);
    return;
  }
  const Declaration* only = typed.command.empty() ? nullptr : &named(typed.command);
  session.output.text() = survmeth::analysis::declarationsJson(kVersion, only);
}

}  // namespace

Run addHelp(CLI::App& app) {
  const auto typed = std::make_shared<Typed>();
  app.add_option("COMMAND", typed->command, "The command; with --json all where none is named")
      ->type_name("");
  app.add_flag("--json", typed->json, "The declarations for programs");
  return [typed, &app](Session& session) { run(*typed, *app.get_parent(), session); };
}

}  // namespace cli
