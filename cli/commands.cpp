// One line for each command, in the order of survmeth --help.
#include "cli/commands.h"

#include "analysis/declare.h"
#include "cli/face.h"
#include "cli/life.h"

namespace cli {
namespace {

// A command made from the declaration of an analysis.
Command declared(const char* name) {
  const survmeth::analysis::Declaration& declaration = *survmeth::analysis::findDeclaration(name);
  return {declaration.name, declaration.summary,
          [&declaration](CLI::App& app) { return addAnalysis(app, declaration); }};
}

}  // namespace

const std::vector<Command>& commands() {
  static const std::vector<Command> kCommands = {
      {"life", "Survival curves, their medians and the tests that compare them", declareLife},
      declared("cox"),
      declared("gray"),
      declared("roc"),
      declared("agree"),
      declared("deming"),
  };
  return kCommands;
}

}  // namespace cli
