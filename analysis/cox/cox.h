// Proportional-hazards regression, and conditional logistic regression of matched sets.
#ifndef ANALYSIS_COX_COX_H_
#define ANALYSIS_COX_COX_H_

#include "analysis/declare.h"

namespace survmeth::analysis {

Declaration coxDeclaration();
Declaration clogitDeclaration();

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_COX_H_
