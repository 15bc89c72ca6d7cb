// Declares the analysis `gray`: Gray's test between groups under competing risks.
#ifndef ANALYSIS_GRAY_H_
#define ANALYSIS_GRAY_H_

#include "analysis/declare.h"

namespace survmeth::analysis {

Declaration grayDeclaration();

}  // namespace survmeth::analysis

#endif  // ANALYSIS_GRAY_H_
