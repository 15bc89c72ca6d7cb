// Python columns as what a frame is made of.
#ifndef PYTHON_COLUMNS_H_
#define PYTHON_COLUMNS_H_

#include <nanobind/nanobind.h>

#include "frame/memory.h"

namespace survmeth::python {

// Each column is a tuple: (name, numbers) with an array of doubles, or (name, codes, levels,
// isFactor) with an array of unsigned codes. Arrays are borrowed, not copied, and kept alive.
// Throws std::invalid_argument where they are not of `rows` cells.
frame::Given givenOf(const std::string& source, const std::vector<std::string>& names,
                     nanobind::list columns, std::size_t rows);

}  // namespace survmeth::python

#endif  // PYTHON_COLUMNS_H_
