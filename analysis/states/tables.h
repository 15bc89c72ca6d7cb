// Tables of survmeth states.
#ifndef ANALYSIS_STATES_TABLES_H_
#define ANALYSIS_STATES_TABLES_H_

#include "analysis/states/states.h"

namespace survmeth::analysis {

// "states", with the probabilities at the start, "transitions", "probabilitiesAt", "timeInState".
report::Table stateSummary(const StatesAnswer& answer, const StatesRequest& request);
report::Table transitionSummary(const StatesAnswer& answer, const StatesRequest& request);
report::Table probabilitiesAt(const StatesAnswer& answer, const StatesRequest& request);
report::Table staysTable(const StatesAnswer& answer, const StatesRequest& request);

// Of several groups, each against the first: "differences" of the probabilities, and
// "timeDifferences".
report::Table probabilityDifferences(const StatesAnswer& answer, const StatesRequest& request);
report::Table stayDifferences(const StatesAnswer& answer, const StatesRequest& request);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_STATES_TABLES_H_
