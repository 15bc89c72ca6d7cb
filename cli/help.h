// survmeth help: the declarations for programs (--json) and as pages of a reference.
#ifndef CLI_HELP_H_
#define CLI_HELP_H_

#include "cli/shell/session.h"

namespace cli {

// Adds the options of `survmeth help` to `app`; the returned Run prints.
Run addHelp(CLI::App& app);

}  // namespace cli

#endif  // CLI_HELP_H_
