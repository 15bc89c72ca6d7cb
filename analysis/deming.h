// Declares the analysis `deming`: a line between two methods that both have error.
#ifndef ANALYSIS_DEMING_H_
#define ANALYSIS_DEMING_H_

#include "analysis/declare.h"

namespace survmeth::analysis {

Declaration demingDeclaration();

}  // namespace survmeth::analysis

#endif  // ANALYSIS_DEMING_H_
