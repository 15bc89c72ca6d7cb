// Cumulative incidences that a regression of subdistribution hazards gives, with their limits.
#ifndef ANALYSIS_FINEGRAY_INCIDENCE_H_
#define ANALYSIS_FINEGRAY_INCIDENCE_H_

#include <string>
#include <utility>
#include <vector>

#include "analysis/estimate.h"
#include "engine/cox/baseline.h"
#include "report/report.h"

namespace survmeth::analysis {

// The function of the incidence F around which limits are symmetric.
enum class IncidenceScale {
  kComplementary,  // log(-log(1 - F)), the logarithm of the cumulative hazard
  kLogLog,         // log(-log F)
  kLog,
  kPlain,
  kArcsine,  // arcsin(sqrt F)
};
// With their names in options.
const std::vector<std::pair<std::string, IncidenceScale>>& incidenceScales();
std::string nameOf(IncidenceScale scale);

struct IncidenceAtTime {
  double time = kNone, incidence = kNone, standardError = kNone, lower = kNone, upper = kNone;
};

// In   hazard   the cumulative subdistribution hazard with its error
//      z        the normal quantile of the limits
// Edge no limits at a hazard of 0; nothing where the hazard is no number
IncidenceAtTime incidenceOf(double time, const engine::cox::HazardValue& hazard, double z,
                            IncidenceScale scale);

// At every event time.
std::vector<IncidenceAtTime> incidencesOf(const engine::cox::CumulativeHazard& hazard, double z,
                                          IncidenceScale scale);

// --- In reports ----------------------------------------------------------------------------------

// Incidence, error and limits of each row.
void addIncidenceColumns(const std::vector<IncidenceAtTime>& points, double alpha,
                         report::Table& table);

// What incidences, their errors and limits are.
report::Method incidenceMethod(double alpha, IncidenceScale scale);

// A curve with its band, as a figure has it.
struct IncidenceCurve {
  std::string name;  // in the legend; may be empty
  std::vector<IncidenceAtTime> points;
};
// In   end   to which the curves run on
report::Panel incidencePanel(const std::vector<IncidenceCurve>& curves, double end);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_FINEGRAY_INCIDENCE_H_
