// survmeth deming: a line between two methods that both have error.
#ifndef CLI_DEMING_H_
#define CLI_DEMING_H_

#include "cli/shell/session.h"

namespace cli {

Run declareDeming(CLI::App& app);

}  // namespace cli

#endif  // CLI_DEMING_H_
