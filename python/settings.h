// A Python value as the setting of an option.
#ifndef PYTHON_SETTINGS_H_
#define PYTHON_SETTINGS_H_

#include <nanobind/nanobind.h>

#include "analysis/option.h"

namespace survmeth::python {

// Numbers (numpy's too), texts, True and False, sequences and arrays of those; checked against the
// option. Throws analysis::BadOption.
analysis::Setting settingOf(const analysis::Option& option, nanobind::handle value);

}  // namespace survmeth::python

#endif  // PYTHON_SETTINGS_H_
