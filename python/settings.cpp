#include "python/settings.h"

#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "text/numbers.h"

namespace survmeth::python {
namespace {

namespace nb = nanobind;
using analysis::BadOption;
using analysis::Option;
using analysis::Setting;

// A number, a text or a truth value; an option that is no switch takes True for the label "True",
// as columns have it.
using Single = std::variant<double, std::string, bool>;

// numpy's truth values, which are none of Python's; its type has had two names.
bool isNumpyTruth(nb::handle value) {
  const nb::object type = nb::getattr(value, "dtype", nb::none());
  const nb::object kind = nb::getattr(type, "kind", nb::none());
  return nb::isinstance<nb::str>(kind) && nb::cast<std::string>(kind) == "b";
}

// An array without dimensions is a number and no list, though it says that it can be iterated.
bool isList(nb::handle value) {
  if (nb::isinstance<nb::str>(value) || !nb::hasattr(value, "__iter__")) return false;
  const nb::object dimensions = nb::getattr(value, "ndim", nb::none());
  if (nb::isinstance<nb::int_>(dimensions) && nb::cast<int>(dimensions) == 0) return false;
  return PySequence_Check(value.ptr()) != 0 || nb::hasattr(value, "__array__");
}

Single singleOf(const Option& option, nb::handle value) {
  const bool isSwitch = option.type == analysis::Type::kFlag;
  if (nb::isinstance<nb::str>(value)) return nb::cast<std::string>(value);
  if (PyBool_Check(value.ptr()) || isNumpyTruth(value)) {
    const bool truth = PyObject_IsTrue(value.ptr()) == 1;
    if (isSwitch) return truth;
    return std::string(truth ? "True" : "False");
  }
  // Not everything that can be made a float: only what says that it is a number.
  if (PyFloat_Check(value.ptr()) || PyIndex_Check(value.ptr()) || nb::hasattr(value, "__float__")) {
    const double number = PyFloat_AsDouble(value.ptr());
    if (number == -1 && PyErr_Occurred() != nullptr) throw nb::python_error();
    return number;
  }
  throw BadOption(option.name, std::string("the value is of the type ") +
                                   nb::type_name(value.type()).c_str() +
                                   "; expected numbers, texts or True and False");
}

Setting listOf(const Option& option, nb::handle value) {
  std::vector<double> numbers;
  std::vector<std::string> texts;
  bool allNumbers = true;
  for (const nb::handle each : nb::iter(value)) {
    const Single single = singleOf(option, each);
    if (const auto* number = std::get_if<double>(&single)) {
      numbers.push_back(*number);
      texts.push_back(text::exact(*number));
      continue;
    }
    allNumbers = false;
    const auto* text = std::get_if<std::string>(&single);
    texts.push_back(text != nullptr ? *text : "True");
  }
  if (allNumbers && option.type == analysis::Type::kNumbers) return numbers;
  return texts;
}

}  // namespace

Setting settingOf(const Option& option, nb::handle value) {
  Setting setting;
  if (isList(value)) {
    setting = listOf(option, value);
  } else {
    std::visit([&setting](auto single) { setting = Setting(std::move(single)); },
               singleOf(option, value));
  }
  return analysis::checked(option, setting);
}

}  // namespace survmeth::python
