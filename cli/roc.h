// survmeth roc: curves of markers, the areas under them and their comparison.
#ifndef CLI_ROC_H_
#define CLI_ROC_H_

#include "cli/shell/session.h"

namespace cli {

Run declareRoc(CLI::App& app);

}  // namespace cli

#endif  // CLI_ROC_H_
