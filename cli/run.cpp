#include "cli/run.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <utility>

#include "cli/figures.h"
#include "cli/outputs.h"
#include "cli/perform.h"
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
namespace fs = std::filesystem;
namespace report = survmeth::report;

struct Typed {
  std::string plan;
  bool json = false, quiet = false;
  std::string out, html;
  Looks looks;  // as they are
  int digits = report::kEstimateDigits;
};

std::string nameOf(const std::string& file) { return file == "-" ? "standard input" : file; }

analysis::Plan read(const std::string& file) {
  try {
    return analysis::readPlan(contentsOf(file));
  } catch (const analysis::JsonError& wrong) {
    throw Problem(nameOf(file) + ", " + wrong.what());
  }
}

// The folder of an analysis' tables.
std::string folderOf(const Typed& typed, const analysis::Planned& planned) {
  return typed.out + "/" + planned.name;
}

// Every file that is asked for, before any work.
void reserve(const analysis::Plan& plan, const Typed& typed, Session& session) {
  session.output.input(typed.plan);
  for (const analysis::Planned& each : plan.analyses) {
    session.output.input(besidePlan(typed.plan, each.data));
    for (const std::string& other : analysis::otherData(*each.declaration, each.request.get())) {
      if (other == "-") {
        throw Problem(nameOf(typed.plan) + ", " + each.title() +
                      ": the new data are standard input; expected a file");
      }
      session.output.input(besidePlan(typed.plan, other));
    }
  }
  if (!typed.html.empty()) session.output.reserve("--html", typed.html);
  if (typed.out.empty()) return;
  for (const analysis::Planned& each : plan.analyses) {
    for (const std::string& id : each.declaration->tables) {
      session.output.reserve("--out", folderOf(typed, each) + "/" + id + ".csv");
    }
  }
}

std::string textOf(const std::vector<report::Report>& reports, const Typed& typed) {
  std::string text;
  for (const report::Report& each : reports) {
    text += text.empty() ? "" : "\n\n";
    text +=
        report::toText(each, {.width = terminalWidth(), .digits = typed.digits, .notes = false});
  }
  return text;
}

void run(const Typed& typed, Session& session) {
  const analysis::Plan plan = read(typed.plan);
  reserve(plan, typed, session);
  const std::vector<report::Report> reports = performPlan(plan, typed.plan);
  const std::string title = plan.title.empty() ? "Reports of a plan" : plan.title;
  const Progress progress("writing " + title);
  if (!typed.out.empty()) session.output.folder(typed.out);
  for (std::size_t i = 0; i < reports.size() && !typed.out.empty(); ++i) {
    const std::string folder = folderOf(typed, plan.analyses[i]);
    session.output.folder(folder);
    for (auto& [name, contents] : report::toCsvFiles(reports[i])) {
      session.output.file(folder + "/" + name, std::move(contents));
    }
  }
  if (!typed.html.empty()) {
    session.output.file(typed.html,
                        report::toHtml(reports, {.version = kVersion,
                                                 .title = title,
                                                 .call = session.call,
                                                 .digits = typed.digits,
                                                 .picture = pageFigures(typed.looks, session)}));
  }
  session.output.text() = typed.json ? report::toJson(reports, plan.title, {.version = kVersion})
                                     : textOf(reports, typed);
  if (typed.quiet) return;
  for (std::size_t i = 0; i < reports.size(); ++i) {
    for (const report::Note& note : reports[i].notes) {
      session.note(plan.analyses[i].name + ": " + note.text);
    }
  }
}

}  // namespace

std::string contentsOf(const std::string& file) {
  std::ifstream opened;
  if (file != "-") {
    if (fs::is_directory(file)) throw Problem(file + ": is a folder; expected a file");
    errno = 0;
    opened.open(file, std::ios::binary);
    if (!opened) throw Problem(file + ": cannot be read: " + std::strerror(errno));
  }
  std::istream& stream = file == "-" ? std::cin : opened;
  std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (stream.bad()) throw Problem(nameOf(file) + ": cannot be read to its end", kFailed);
  return text;
}

std::string besidePlan(const std::string& plan, const std::string& path) {
  if (plan == "-" || fs::path(path).is_absolute()) return path;
  return (fs::path(plan).parent_path() / path).string();
}

std::vector<report::Report> performPlan(const analysis::Plan& plan, const std::string& file) {
  std::vector<report::Report> reports;
  for (const analysis::Planned& each : plan.analyses) {
    const auto wrong = [&](const std::string& what, int code) {
      return Problem(nameOf(file) + ", analysis " + std::to_string(reports.size() + 1) + " (" +
                         each.declaration->name + "): " + what,
                     code);
    };
    try {
      reports.push_back(
          perform({.declaration = *each.declaration,
                   .request = each.request.get(),
                   .reading = each.reading,
                   .file = besidePlan(file, each.data),
                   .name = each.data,
                   .fileOf = [&file](const std::string& other) { return besidePlan(file, other); }})
              .report);
    } catch (const Problem& problem) {
      throw wrong(problem.what(), problem.exitCode());
    } catch (const survmeth::frame::Unreadable& unreadable) {
      throw wrong(unreadable.what(), kBadInput);
    } catch (const analysis::BadOption& bad) {
      throw wrong(bad.option() + ": " + bad.what(), kBadInput);
    }
  }
  return reports;
}

Run addRun(CLI::App& app) {
  const auto typed = std::make_shared<Typed>();
  app.add_option("PLAN", typed->plan, "JSON file (docs/plans.md); - is standard input")
      ->required()
      ->type_name("");
  app.add_flag("--json", typed->json, "Print JSON (docs/report.md) and nothing else");
  app.add_option("--html", typed->html, "Write the reports with their figures as one HTML file")
      ->type_name("FILE");
  app.add_option("--out", typed->out,
                 "Write the tables as CSV files into this folder, a folder for each analysis")
      ->type_name("DIR");
  addDigits(app, typed->digits);
  app.add_flag("--quiet", typed->quiet, "Leave out the notes on standard error");
  app.footer(
      "Example:\n"
      "  survmeth run plan.json --html report.html\n\n"
      "A plan names analyses, their data and their options; a report's JSON has them as its\n"
      "\"plan\". Files stand where the plan says, seen from the plan's folder. If one analysis\n"
      "cannot be done, nothing is written. docs/plans.md describes the form.");
  return [typed](Session& session) { run(*typed, session); };
}

}  // namespace cli
