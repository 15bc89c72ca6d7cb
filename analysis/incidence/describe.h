// What is found of competing events, as reports and figures.
#ifndef ANALYSIS_INCIDENCE_DESCRIBE_H_
#define ANALYSIS_INCIDENCE_DESCRIBE_H_

#include <optional>

#include "analysis/incidence/incidence.h"
#include "report/report.h"

namespace survmeth::analysis {

report::Report describeIncidence(const IncidenceAnswer& answer, const IncidenceRequest& request);
report::Report describeGray(const IncidenceAnswer& answer, const IncidenceRequest& request);

// "tests": Gray's test of each type of event.
report::Table grayTable(const IncidenceAnswer& answer);
// Whether tests exist, and which groups have part in them.
void noteGray(const IncidenceAnswer& answer, report::Report& report);
report::Method grayMethod(const IncidenceRequest& request);

// Tables of what is read off the curves, in the order of the report, with their methods and notes.
void describeIncidenceReadings(const IncidenceAnswer& answer, const IncidenceRequest& request,
                               report::Report& report);

// "incidence": a row for each time of each group and type of event.
report::Table incidenceTable(const IncidenceAnswer& answer, const IncidenceRequest& request);

// "incidence": a panel for each type of event, a curve for each group. No limits: short form.
std::optional<report::Figure> incidenceFigure(const IncidenceAnswer& answer,
                                              const IncidenceRequest& request);
std::optional<report::Figure> grayFigure(const IncidenceAnswer& answer,
                                         const IncidenceRequest& request);
// "stacked": a panel for each group, the types of event one above the other.
std::optional<report::Figure> stackedFigure(const IncidenceAnswer& answer,
                                            const IncidenceRequest& request);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_INCIDENCE_DESCRIBE_H_
