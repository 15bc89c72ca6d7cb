// survmeth life: survival curves by group, medians and comparison tests.
#ifndef CLI_LIFE_H_
#define CLI_LIFE_H_

#include "cli/shell/session.h"

namespace cli {

Run declareLife(CLI::App& app);

}  // namespace cli

#endif  // CLI_LIFE_H_
