#include "cli/face.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "analysis/savedFit.h"
#include "cli/figures.h"
#include "cli/outputs.h"
#include "cli/perform.h"
#include "cli/run.h"
#include "cli/shell/problem.h"
#include "cli/shell/progress.h"
#include "cli/version.h"
#include "report/csv.h"
#include "report/html.h"
#include "report/json.h"
#include "report/text.h"

namespace cli {
namespace {

namespace analysis = survmeth::analysis;
namespace report = survmeth::report;

using analysis::Declaration;
using analysis::Option;

// What a person typed: the analysis' own options by name, and those that all share.
struct Typed {
  std::string file;
  std::string fit;   // of a follow-up: the saved fit
  std::string save;  // where what lasts of the result goes
  std::map<std::string, std::vector<std::string>> options;
  bool json = false, quiet = false;
  std::string out, html;
  Looks looks;
  analysis::Reading reading;
  int digits = report::kEstimateDigits;
};

Problem problemOf(const analysis::BadOption& bad) {
  return Problem("--" + bad.option() + ": " + bad.what());
}

// "Limits: log-log, log or plain (default log-log)".
std::string helpOf(const Option& option) {
  std::string help = option.help;
  for (std::size_t i = 0; i < option.choices.size(); ++i) {
    help += i == 0 ? ": " : i + 1 == option.choices.size() ? " or " : ", ";
    help += option.choices[i];
  }
  return option.defaultText.empty() ? help : help + " (default " + option.defaultText + ")";
}

void addOwn(CLI::App& app, const Declaration& declaration, Typed& typed) {
  for (const Option& option : declaration.options) {
    if (typed.options.count(option.name) > 0) continue;  // of another follow-up too
    const std::string name = "--" + option.name;
    std::vector<std::string>& texts = typed.options[option.name];
    if (option.type == analysis::Type::kFlag && option.table.empty()) {
      app.add_flag_callback(
          name, [&texts] { texts = {"true"}; }, option.help);
      continue;
    }
    CLI::Option* added = app.add_option_function<std::string>(
        name, [&texts](const std::string& text) { texts = {text}; }, helpOf(option));
    added->type_name(option.valueName);
    if (option.required) added->required();
  }
}

void addOutputs(CLI::App& app, const Declaration& declaration, Typed& typed) {
  for (const Option& option : analysis::readingOptions()) {
    addShared(app, option, [&option, &typed](const analysis::Setting& setting) {
      option.set(&typed.reading, setting);
    });
  }
  app.add_flag("--json", typed.json, "Print JSON (docs/report.md) and nothing else");
  app.add_option("--html", typed.html, "Write the report with its figures as one HTML file")
      ->type_name("FILE");
  app.add_option("--out", typed.out, "Write the tables as CSV files into this folder")
      ->type_name("DIR");
  if (declaration.lasting) {
    app.add_option("--save", typed.save, "Write the fit to this file, for survmeth predict")
        ->type_name("FIT");
  }
  if (!declaration.figures.empty()) addLooks(app, declaration.figures, typed.looks);
  addDigits(app, typed.digits);
  app.add_flag("--quiet", typed.quiet, "Leave out the notes on standard error");
}

// Follow-ups share a command; not every one of them has every option.
void requireKnown(const Declaration& declaration, const Typed& typed) {
  for (const auto& [name, texts] : typed.options) {
    const auto has = [&name = name](const Option& option) { return option.name == name; };
    if (texts.empty() || std::any_of(declaration.options.begin(), declaration.options.end(), has)) {
      continue;
    }
    throw analysis::BadOption(name, "predictions from such a fit have no such option");
  }
}

// The request, of what was typed.
std::shared_ptr<void> requestOf(const Declaration& declaration, const Typed& typed,
                                std::shared_ptr<const void> followed) {
  std::shared_ptr<void> request = declaration.request();
  if (followed) {
    declaration.follow(request.get(), std::move(followed));
    requireKnown(declaration, typed);
  }
  for (const Option& option : declaration.options) {
    const std::vector<std::string>& texts = typed.options.at(option.name);
    if (texts.empty()) continue;
    const analysis::Setting setting = analysis::settingOf(option, texts);
    option.set(request.get(), option.table.empty() ? setting : analysis::Setting(true));
  }
  if (declaration.check) declaration.check(request.get());
  return request;
}

// Every file that is asked for, before any work.
void reserve(const Declaration& declaration, const void* request, const Typed& typed,
             Session& session) {
  session.output.input(typed.file);
  if (!typed.fit.empty()) session.output.input(typed.fit);
  for (const std::string& other : analysis::otherData(declaration, request)) {
    if (other == "-" && typed.file == "-") {
      throw Problem("standard input cannot be both FILE and new data; expected a file for one");
    }
    session.output.input(other);
  }
  if (!typed.save.empty()) session.output.reserve("--save", typed.save);
  for (const Option& option : declaration.options) {
    if (option.table.empty() || typed.options.at(option.name).empty()) continue;
    session.output.reserve("--" + option.name, typed.options.at(option.name).front());
  }
  if (!typed.looks.plot.empty()) session.output.reserve("--plot", typed.looks.plot);
  if (!typed.html.empty()) session.output.reserve("--html", typed.html);
  if (typed.out.empty()) return;
  for (const std::string& id : declaration.tables) {
    session.output.reserve("--out", typed.out + "/" + id + ".csv");
  }
}

void writeTables(const Declaration& declaration, const Typed& typed, const report::Report& report,
                 Session& session) {
  for (const Option& option : declaration.options) {
    if (option.table.empty() || typed.options.at(option.name).empty()) continue;
    for (const report::Table& table : report.tables) {
      if (table.id != option.table) continue;
      session.output.file(typed.options.at(option.name).front(), report::toCsv(table));
    }
  }
  if (typed.out.empty()) return;
  session.output.folder(typed.out);
  for (auto& [name, contents] : report::toCsvFiles(report)) {
    session.output.file(typed.out + "/" + name, std::move(contents));
  }
}

// What the outputs take of a report.
analysis::Parts partsOf(const Declaration& declaration, const Typed& typed) {
  const bool tables = std::any_of(
      declaration.options.begin(), declaration.options.end(), [&typed](const Option& option) {
        return !option.table.empty() && !typed.options.at(option.name).empty();
      });
  return {.files = typed.json || !typed.out.empty() || tables,
          .figures = !typed.looks.plot.empty() || !typed.html.empty()};
}

void run(const Declaration& declaration, const Typed& typed, Session& session,
         std::shared_ptr<const void> followed = nullptr) {
  std::shared_ptr<void> request;
  analysis::Fitted fitted;
  std::string saved;
  try {
    request = requestOf(declaration, typed, std::move(followed));
    reserve(declaration, request.get(), typed, session);
    fitted = perform({declaration, request.get(), typed.reading, typed.file, typed.file,
                      partsOf(declaration, typed), typed.save.empty() ? nullptr : &saved});
  } catch (const analysis::BadOption& bad) {
    throw problemOf(bad);
  }
  const report::Report& report = fitted.report;
  const Progress progress("writing " + declaration.name + " of " + report.data.name);
  if (!typed.save.empty()) session.output.file(typed.save, std::move(saved));
  writeTables(declaration, typed, report, session);
  plot(typed.looks, report, session);
  if (!typed.html.empty()) {
    session.output.file(typed.html,
                        report::toHtml(report, {.version = kVersion,
                                                .call = session.call,
                                                .digits = typed.digits,
                                                .picture = pageFigures(typed.looks, session)}));
  }
  session.output.text() =
      typed.json ? report::toJson(report, {.version = kVersion})
                 : report::toText(
                       report, {.width = terminalWidth(), .digits = typed.digits, .notes = false});
  if (typed.quiet) return;
  for (const report::Note& note : report.notes) session.note(note.text);
}

std::string footerOf(const Declaration& declaration) {
  std::string footer = declaration.examples.empty() ? "" : "Example:\n";
  for (const std::string& example : declaration.examples) footer += "  " + example + "\n";
  if (!declaration.details.empty()) footer += "\n" + declaration.details + "\n";
  return footer +
         "Rows with a missing cell in a column asked for are left out and counted.\n"
         "docs/data.md says how data are read.";
}

}  // namespace

Run addAnalysis(CLI::App& app, const Declaration& declaration) {
  const auto typed = std::make_shared<Typed>();
  app.add_option("FILE", typed->file, "CSV or TSV file with a header line; - is standard input")
      ->required()
      ->type_name("");
  addOwn(app, declaration, *typed);
  addOutputs(app, declaration, *typed);
  app.footer(footerOf(declaration));
  return [typed, &declaration](Session& session) { run(declaration, *typed, session); };
}

Run addPredict(CLI::App& app) {
  const auto typed = std::make_shared<Typed>();
  app.add_option("FIT", typed->fit, "File that --save wrote")->required()->type_name("");
  app.add_option("FILE", typed->file, "New data, as for the analysis; - is standard input")
      ->required()
      ->type_name("");
  const Declaration* first = nullptr;
  for (const Declaration& each : analysis::declarations()) {
    if (!each.lasting) continue;
    addOwn(app, each.lasting->predict, *typed);
    if (first == nullptr) first = &each.lasting->predict;
  }
  addOutputs(app, *first, *typed);
  app.footer(footerOf(*first));
  return [typed](Session& session) {
    analysis::SavedFit saved;
    try {
      saved = analysis::readSavedFit(contentsOf(typed->fit));
    } catch (const analysis::NoSavedFit& none) {
      throw Problem((typed->fit == "-" ? "standard input" : typed->fit) + ": " + none.what());
    }
    run(saved.declaration->lasting->predict, *typed, session, saved.lasting);
  };
}

}  // namespace cli
