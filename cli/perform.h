// One analysis of one file, from reading to report, with whatever is refused in its place. What
// subcommands, plans and the self-test share.
#ifndef CLI_PERFORM_H_
#define CLI_PERFORM_H_

#include <functional>
#include <string>

#include "analysis/declaration.h"
#include "analysis/reading.h"

namespace cli {

struct Job {
  const survmeth::analysis::Declaration& declaration;
  const void* request;
  const survmeth::analysis::Reading& reading;
  std::string file;  // where the data are
  std::string name;  // what the report calls them
  survmeth::analysis::Parts parts = {};
  std::string* saved = nullptr;  // where what lasts of the result is wanted: the file's text
  // The file of other data that an option names; that of the name where there is none.
  std::function<std::string(const std::string& name)> fileOf = {};
};

// Throws Problem and frame::Unreadable, each with file, line and column where there is one;
// analysis::BadOption.
survmeth::analysis::Fitted perform(const Job& job);

}  // namespace cli

#endif  // CLI_PERFORM_H_
