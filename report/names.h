// The names by which programs know kinds, scales and series: of JSON, of Python, of a browser.
#ifndef REPORT_NAMES_H_
#define REPORT_NAMES_H_

#include "report/report.h"

namespace survmeth::report {

const char* nameOf(Kind kind);
const char* nameOf(Scale scale);
const char* nameOf(SeriesKind kind);

}  // namespace survmeth::report

#endif  // REPORT_NAMES_H_
