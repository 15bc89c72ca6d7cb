// A report for Python: dictionaries, lists, and arrays that are views into the report.
#ifndef PYTHON_REPORTS_H_
#define PYTHON_REPORTS_H_

#include <nanobind/nanobind.h>

#include "report/report.h"

namespace survmeth::python {

// Keys are those of the JSON. `owner` holds the report; numbers of tables are read-only views that
// keep it alive.
nanobind::dict tablesOf(const report::Report& report, nanobind::handle owner);
nanobind::dict planOf(const report::Report& report);
nanobind::dict factsOf(const report::Report& report);
nanobind::list notesOf(const report::Report& report);
nanobind::list methodsOf(const report::Report& report);
nanobind::list figuresOf(const report::Report& report);

}  // namespace survmeth::python

#endif  // PYTHON_REPORTS_H_
