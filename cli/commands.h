// The list of commands. A new one is a line in commands.cpp.
#ifndef CLI_COMMANDS_H_
#define CLI_COMMANDS_H_

#include <functional>
#include <string>
#include <vector>

#include "cli/shell/session.h"

namespace cli {

struct Command {
  std::string name;
  std::string summary;  // one line, for survmeth --help
  std::function<Run(CLI::App& app)> declare;
};

const std::vector<Command>& commands();

}  // namespace cli

#endif  // CLI_COMMANDS_H_
