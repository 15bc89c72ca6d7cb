// survmeth selftest: the reference cases that ship with the program.
#ifndef CLI_SELFTEST_H_
#define CLI_SELFTEST_H_

#include "cli/shell/session.h"

namespace cli {

// Adds the arguments of the command to `app`.
Run addSelftest(CLI::App& app);

}  // namespace cli

#endif  // CLI_SELFTEST_H_
