// survmeth cox: proportional-hazards regression.
#ifndef CLI_COX_H_
#define CLI_COX_H_

#include "cli/shell/session.h"

namespace cli {

Run declareCox(CLI::App& app);

}  // namespace cli

#endif  // CLI_COX_H_
