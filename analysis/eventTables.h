// Tables that all analyses of competing events share.
#ifndef ANALYSIS_EVENT_TABLES_H_
#define ANALYSIS_EVENT_TABLES_H_

#include <string>

#include "frame/labels.h"
#include "model/eventTypes.h"
#include "report/report.h"

namespace survmeth::analysis {

// How many rows hold each status, and which of them is censoring. `heading` is the column's name.
report::Table statusTable(const model::EventTypes& event, const std::string& heading);

// The same by group; `group` and `status` are the columns' names.
report::Table groupStatusTable(const frame::Labels& groups, const model::EventTypes& event,
                               const std::string& group, const std::string& status);

// The label that means censoring.
report::Fact censorFact(const model::EventTypes& event);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_EVENT_TABLES_H_
