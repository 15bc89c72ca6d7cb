// Declares the analysis `life`: survival curves by group, their medians and the tests that compare
// them.
#ifndef ANALYSIS_LIFE_H_
#define ANALYSIS_LIFE_H_

#include "analysis/declare.h"

namespace survmeth::analysis {

Declaration lifeDeclaration();

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_H_
