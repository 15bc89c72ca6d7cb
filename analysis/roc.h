// Declares the analysis `roc`: curves of markers, the areas under them and their comparison.
#ifndef ANALYSIS_ROC_H_
#define ANALYSIS_ROC_H_

#include "analysis/declare.h"

namespace survmeth::analysis {

Declaration rocDeclaration();

}  // namespace survmeth::analysis

#endif  // ANALYSIS_ROC_H_
