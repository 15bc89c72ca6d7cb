// The declarations for programs: what a face in another language is made of.
#ifndef ANALYSIS_DECLARATIONS_JSON_H_
#define ANALYSIS_DECLARATIONS_JSON_H_

#include <string>

#include "analysis/declaration.h"

namespace survmeth::analysis {

// One JSON object, "survmeth-help/1": of each analysis its name, summary, details, examples, options
// (name, type, help, whether it is required, range, choices, what the cells of its column are), the
// ids of its tables and figures, what follows from its results ("predict", likewise).
// All analyses, or `only` one; and the options that say how files are read ("reading").
std::string declarationsJson(const std::string& version, const Declaration* only = nullptr);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_DECLARATIONS_JSON_H_
