// Declares the analysis `agree`: Bland-Altman agreement of two methods, repeatability of one.
#ifndef ANALYSIS_AGREE_H_
#define ANALYSIS_AGREE_H_

#include "analysis/declare.h"

namespace survmeth::analysis {

Declaration agreeDeclaration();

}  // namespace survmeth::analysis

#endif  // ANALYSIS_AGREE_H_
