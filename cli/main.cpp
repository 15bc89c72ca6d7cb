// The command line: finds the command, runs it, writes what it made and reports what went wrong.
#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "analysis/declaration.h"
#include "cli/face.h"
#include "cli/help.h"
#include "cli/run.h"
#include "cli/selftest.h"
#include "cli/shell/arguments.h"
#include "cli/shell/leftovers.h"
#include "cli/shell/problem.h"
#include "cli/shell/session.h"
#include "cli/version.h"
#include "frame/place.h"

namespace {

using cli::Problem;
using cli::Run;
using cli::Session;

void say(const std::string& who, const std::string& what) {
  std::fprintf(stderr, "%s: %s\n", who.c_str(), what.c_str());
}

// The library's message, or a better one where it only says that something was not expected.
std::string usageMessage(const CLI::App& app, const CLI::ParseError& error,
                         const std::vector<std::string>& arguments) {
  const auto commands = app.get_subcommands();
  const CLI::App& at = commands.empty() ? app : *commands.front();
  std::vector<std::string> known, extra = app.remaining(true);
  for (const CLI::Option* option : at.get_options()) {
    if (!option->get_lnames().empty()) known.push_back("--" + option->get_lnames().front());
  }
  std::string lacking = cli::lackingValue(at, arguments);
  if (!lacking.empty()) return lacking;
  for (const std::string& argument : extra) {
    if (argument.size() > 1 && argument.front() == '-') {
      return "there is no option " + cli::quote(argument) + "; expected one of " +
             cli::nearestFirst(argument, known);
    }
  }
  if (commands.empty()) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands({})) names.push_back(command->get_name());
    const std::string wanted = extra.empty() ? "" : extra.front();
    return (extra.empty() ? "there is no command" : "there is no command " + cli::quote(wanted)) +
           "; expected one of " + cli::nearestFirst(wanted, names);
  }
  if (!extra.empty()) {
    return "the argument " + cli::quote(extra.front()) + " is one too many; expected one file";
  }
  for (const std::string& message : {cli::repeatedOption(at), cli::lackingArgument(at)}) {
    if (!message.empty()) return message;
  }
  return error.what();
}

int usageError(const std::string& who, const std::string& message) {
  say(who, message);
  std::fprintf(stderr, "Try '%s --help'.\n", who.c_str());
  return cli::kBadInput;
}

// Says what could not be written, and that nobody reads any more as programs commonly do.
int finish(const std::string& who, const cli::Output::Shortfall& shortfall) {
  for (const std::string& message : shortfall.messages) say(who, message);
  if (shortfall.pipeClosed) {
    cli::endOfClosedPipe();
    say(who, std::string("standard output: cannot be written: ") + std::strerror(EPIPE));
  }
  return shortfall.messages.empty() && !shortfall.pipeClosed ? cli::kSuccess : cli::kFailed;
}

}  // namespace

int main(int argc, char** argv) {
  cli::holdStandardDescriptors();
  cli::endOnSignals();
  CLI::App app{"Survival analysis and method comparison.", "survmeth"};
  app.set_version_flag("--version", std::string("survmeth ") + cli::kVersion,
                       "Print the version and exit");
  app.set_help_flag("-h,--help", "Print this help and exit");
  app.require_subcommand(1);
  app.footer(
      "Each command explains itself: survmeth COMMAND --help\n"
      "Exit codes: 0 success, 2 wrong arguments or data, 1 anything else.");

  std::vector<std::pair<CLI::App*, Run>> runs;
  const auto add = [&](const std::string& name, const std::string& summary, const auto& declare) {
    CLI::App* sub = app.add_subcommand(name, summary);
    sub->footer("");
    runs.emplace_back(sub, declare(*sub));
  };
  for (const auto& declaration : survmeth::analysis::declarations()) {
    add(declaration.name, declaration.summary,
        [&](CLI::App& sub) { return cli::addAnalysis(sub, declaration); });
  }
  add("predict", "Predictions for new data from a saved fit", cli::addPredict);
  add("run", "The analyses of a plan, one report", cli::addRun);
  add("selftest", "Compares results with those of other programs", cli::addSelftest);
  add("help", "The options of a command, as a page or for programs", cli::addHelp);

  std::string who = "survmeth";
  const CLI::App* called = &app;
  for (int i = 1; i < argc && called == &app; ++i) {
    for (const auto& [sub, run] : runs) {
      if (sub->get_name() == argv[i]) called = sub;
    }
  }
  if (called != &app) who += " " + called->get_name();
  try {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    for (const std::string& message :
         {cli::emptyValue(*called, arguments), cli::valueOfFlag(*called, arguments)}) {
      if (!message.empty()) return usageError(who, message);
    }
    app.parse(argc, argv);
    for (const auto& [sub, run] : runs) {
      if (!sub->parsed()) continue;
      Session session;
      session.call = cli::callOf({argv + 1, argv + argc});
      run(session);
      const cli::Output::Shortfall shortfall = session.output.write();
      for (const std::string& note : session.notes()) say(who, "note: " + note);
      return finish(who, shortfall);
    }
    return cli::kSuccess;
  } catch (const CLI::Success& wanted) {  // help and version
    std::ostringstream text;
    app.exit(wanted, text, text);
    cli::Output output;
    output.text() = text.str();
    return finish(who, output.write());
  } catch (const CLI::ParseError& error) {
    return usageError(who, usageMessage(app, error, {argv + 1, argv + argc}));
  } catch (const Problem& problem) {
    say(who, problem.what());
    return problem.exitCode();
  } catch (const survmeth::frame::Unreadable& unreadable) {
    say(who, unreadable.what());
    return cli::kBadInput;
  } catch (const std::bad_alloc&) {
    say(who, "there is not enough memory for these data");
    return cli::kFailed;
  } catch (const std::exception& error) {
    say(who, error.what());
    return cli::kFailed;
  }
}
