// Declares the analysis `cox`: proportional-hazards regression.
#ifndef ANALYSIS_COX_H_
#define ANALYSIS_COX_H_

#include "analysis/declare.h"

namespace survmeth::analysis {

Declaration coxDeclaration();

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_H_
