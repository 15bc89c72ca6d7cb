// New data that an analysis takes beside its own, and what follows of them.
#ifndef ANALYSIS_NEW_DATA_H_
#define ANALYSIS_NEW_DATA_H_

#include "analysis/declaration.h"

namespace survmeth::analysis {

// The analysis' run; where its request names new data, the follow-up of its result for these as well,
// in the same report.
//
// Throws BadOption, by the analysis' names of options, and what the run, the follow-up and withData
//        throw
Fitted withNewData(const Declaration& declaration, const frame::Frame& data, const void* request,
                   numerics::Progress& progress, const Parts& parts, const WithData& withData);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_NEW_DATA_H_
