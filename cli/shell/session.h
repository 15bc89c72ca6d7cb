// One run of a command: what it writes and what it remarks.
//
// A command is a pair of files cli/<command>.h and .cpp with one function
//
//     Run declareLife(CLI::App& app);
//
// that adds its options to `app` (kept in a shared_ptr which the Run holds) and returns what to do
// once they are parsed. It is listed in cli/commands.cpp; main does the rest: help, version, usage
// errors, Problems, exit codes, and writing the output after the command has returned.
#ifndef CLI_SHELL_SESSION_H_
#define CLI_SHELL_SESSION_H_

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "cli/shell/json.h"
#include "cli/shell/output.h"
#include "cli/shell/table.h"

namespace CLI {
class App;
}

namespace cli {

class Session {
 public:
  explicit Session(std::string command) : command_(std::move(command)) {}

  Output output;
  std::string call;  // the whole command line, as a shell would take it

  // A remark that does not stop the command: to standard error when the command has succeeded,
  // "survmeth life: note: ..."; a command's JSON ends with json["notes"] = session.notes().
  void note(const std::string& text) { notes_.push_back(text); }
  const std::vector<std::string>& notes() const { return notes_; }

  // The members with which every command's JSON begins: program, version, command, file and rows.
  Json json(const Table& table) const;

  const std::string& command() const { return command_; }

 private:
  std::string command_;
  std::vector<std::string> notes_;
};

using Run = std::function<void(Session&)>;

// The arguments that most commands share; a command adds those that it has.
struct Common {
  std::string file;
  double alpha = 0.05;
  bool json = false;
  std::string out, plot;
  Missing missing;
  std::vector<std::string> outFiles;  // what the folder gets, or may get
};
void addFile(CLI::App& app, Common& common);
void addMissing(CLI::App& app, Common& common);
void addAlpha(CLI::App& app, Common& common);
void addJson(CLI::App& app, Common& common);
void addOut(CLI::App& app, Common& common, const std::string& what, std::vector<std::string> files);
void addPlot(CLI::App& app, Common& common, const std::string& what);

// Before any work: refuses outputs that would destroy the input or one another or that may not be
// written. `others` are files of the command's own options, by option; an empty path is none.
void reserveOutputs(const Common& common, Session& session,
                    const std::vector<std::pair<std::string, std::string>>& others = {});

// "95" for alpha 0.05, "99.9" for 0.001.
std::string confidence(double alpha);

}  // namespace cli

#endif  // CLI_SHELL_SESSION_H_
