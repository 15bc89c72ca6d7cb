// Every analysis, a line each, in the order of survmeth --help.
#include "analysis/all.h"

namespace survmeth::analysis {

const std::vector<Declaration>& declarations() {
  static const std::vector<Declaration> kDeclarations = {
      lifeDeclaration(),  coxDeclaration(),      clogitDeclaration(), incidenceDeclaration(),
      grayDeclaration(),  finegrayDeclaration(), statesDeclaration(), rocDeclaration(),
      agreeDeclaration(), demingDeclaration(),
  };
  return kDeclarations;
}

}  // namespace survmeth::analysis
