// The list of commands. A new one is a line in commands.cpp.
#ifndef CLI_COMMANDS_H_
#define CLI_COMMANDS_H_

#include <string>
#include <vector>

#include "cli/shell/session.h"

namespace cli {

struct Command {
  const char* name;
  const char* summary;  // one line, for survmeth --help
  Run (*declare)(CLI::App& app);
};

const std::vector<Command>& commands();

}  // namespace cli

#endif  // CLI_COMMANDS_H_
