// Every analysis, a line each, in the order of survmeth --help.
#include "analysis/declare.h"

namespace survmeth::analysis {

const std::vector<Declaration>& declarations() {
  static const std::vector<Declaration> kDeclarations = {};
  return kDeclarations;
}

}  // namespace survmeth::analysis
