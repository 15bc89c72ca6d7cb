// Survival curves as a figure: a step for each group with its band and a tick at each censoring,
// and below the axis the numbers still at risk.
#ifndef ANALYSIS_CURVE_FIGURE_H_
#define ANALYSIS_CURVE_FIGURE_H_

#include "analysis/curveTables.h"
#include "analysis/survivalCurves.h"
#include "report/report.h"

namespace survmeth::analysis {

// In   result  one or more curves, none without times, and their comparison
//      limits  how the band was made
// Out  the figure "survival". Steps, and ticks, that lie closer together than a picture can show
//      (1/2000 of the axes) are one.
// Cost O(times)
report::Figure survivalFigure(const CurveResult& result, CurveLimits limits,
                              const CurveNames& names);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_CURVE_FIGURE_H_
