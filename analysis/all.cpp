// Every analysis, a line each, in the order of survmeth --help.
#include "analysis/agree.h"
#include "analysis/cox/cox.h"
#include "analysis/declare.h"
#include "analysis/deming.h"
#include "analysis/gray.h"
#include "analysis/life.h"
#include "analysis/roc.h"

namespace survmeth::analysis {

const std::vector<Declaration>& declarations() {
  static const std::vector<Declaration> kDeclarations = {
      lifeDeclaration(), coxDeclaration(),   clogitDeclaration(), grayDeclaration(),
      rocDeclaration(),  agreeDeclaration(), demingDeclaration(),
  };
  return kDeclarations;
}

}  // namespace survmeth::analysis
