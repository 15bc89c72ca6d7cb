// survmeth agree: agreement of two methods, or repeatability of one.
#ifndef CLI_AGREE_H_
#define CLI_AGREE_H_

#include "cli/shell/session.h"

namespace cli {

Run declareAgree(CLI::App& app);

}  // namespace cli

#endif  // CLI_AGREE_H_
