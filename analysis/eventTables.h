// Tables that all analyses of competing events share.
#ifndef ANALYSIS_EVENT_TABLES_H_
#define ANALYSIS_EVENT_TABLES_H_

#include <string>

#include "model/eventTypes.h"
#include "report/report.h"

namespace survmeth::analysis {

// How many rows hold each status, and which of them is censoring. `heading` is the column's name.
report::Table statusTable(const model::EventTypes& event, const std::string& heading);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_EVENT_TABLES_H_
