#include "python/columns.h"

#include <nanobind/ndarray.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace survmeth::python {
namespace {

namespace nb = nanobind;

template <class Cell>
using Array = nb::ndarray<const Cell, nb::ndim<1>, nb::c_contig, nb::device::cpu>;

// Holds on to a Python object from threads that do not hold the interpreter's lock.
std::shared_ptr<const void> kept(nb::object object) {
  return {new nb::object(std::move(object)), [](const void* held) {
            const nb::gil_scoped_acquire lock;
            delete static_cast<const nb::object*>(held);
          }};
}

template <class Cell>
std::span<const Cell> cellsOf(nb::handle object, std::size_t rows) {
  const auto array = nb::cast<Array<Cell>>(object, false);
  if (array.size() != rows) throw std::invalid_argument("columns of different lengths");
  return {array.data(), rows};
}

frame::Column columnOf(nb::tuple parts, std::size_t rows) {
  frame::Column column;
  column.name = nb::cast<std::string>(parts[0]);
  column.keep = kept(nb::borrow(parts[1]));
  if (parts.size() == 2) {
    column.numbers = cellsOf<double>(parts[1], rows);
    return column;
  }
  column.codes = cellsOf<std::uint32_t>(parts[1], rows);
  column.levels = nb::cast<std::vector<std::string>>(parts[2]);
  column.type = nb::cast<bool>(parts[3]) ? frame::Type::kFactor : frame::Type::kText;
  for (const std::uint32_t code : column.codes) {
    if (code == frame::Column::kMissing) {
      ++column.missing;
    } else if (code >= column.levels.size()) {
      throw std::invalid_argument("a code without a level");
    }
  }
  return column;
}

}  // namespace

frame::Given givenOf(const std::string& source, const std::vector<std::string>& names,
                     nb::list columns, std::size_t rows) {
  frame::Given given{source, names, {}, rows};
  for (const nb::handle each : columns) {
    given.columns.push_back(columnOf(nb::cast<nb::tuple>(each), rows));
  }
  return given;
}

}  // namespace survmeth::python
