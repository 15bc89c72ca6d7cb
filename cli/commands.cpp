// One line for each command, in the order of survmeth --help.
#include "cli/commands.h"

#include "analysis/declare.h"
#include "cli/agree.h"
#include "cli/cox.h"
#include "cli/deming.h"
#include "cli/face.h"
#include "cli/life.h"
#include "cli/roc.h"

namespace cli {

const std::vector<Command>& commands() {
  static const std::vector<Command> kCommands = [] {
    std::vector<Command> all = {
        {"life", "Survival curves, their medians and the tests that compare them", declareLife},
        {"cox", "Proportional-hazards (Cox) regression", declareCox},
        {"roc", "ROC curves of markers, the areas under them and their comparison", declareRoc},
        {"agree", "Agreement of two methods (Bland-Altman), repeatability of one", declareAgree},
        {"deming", "Deming regression of one method on another", declareDeming},
    };
    for (const auto& declaration : survmeth::analysis::declarations()) {
      all.push_back({declaration.name, declaration.summary,
                     [&declaration](CLI::App& app) { return addAnalysis(app, declaration); }});
    }
    return all;
  }();
  return kCommands;
}

}  // namespace cli
