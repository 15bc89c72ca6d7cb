// Limits of survival by their names.
#ifndef ANALYSIS_LIMITS_H_
#define ANALYSIS_LIMITS_H_

#include <string>

#include "engine/curves/limits.h"

namespace survmeth::analysis {

// "log-log", as options say it.
std::string limitsName(engine::curves::Scale scale);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIMITS_H_
