// survmeth gray: Gray's test of equal cumulative incidence.
#ifndef CLI_GRAY_H_
#define CLI_GRAY_H_

#include "cli/shell/session.h"

namespace cli {

Run declareGray(CLI::App& app);

}  // namespace cli

#endif  // CLI_GRAY_H_
