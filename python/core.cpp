// The module survmeth._core: runs a declared analysis on columns and gives its report. What a person
// calls is made in Python from the declarations; nothing here knows what is analysed.
#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>
#include <nanobind/stl/map.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "analysis/concordance.h"
#include "analysis/declarationsJson.h"
#include "analysis/savedFit.h"
#include "python/arrow.h"
#include "python/call.h"
#include "python/reports.h"
#include "report/csv.h"
#include "report/html.h"
#include "report/json.h"
#include "report/text.h"

namespace nb = nanobind;

namespace survmeth::python {
namespace {

constexpr const char* kVersion = SURVMETH_VERSION;

const analysis::SavedFit& fitOf(const Done& done) {
  if (done.fit.declaration == nullptr) throw nb::value_error(done.whyNone.c_str());
  return done.fit;
}

std::string savedText(const Done& done) {
  const analysis::SavedFit& fit = fitOf(done);
  return analysis::savedFit(*fit.declaration, done.whole(), fit.lasting.get(), kVersion);
}

std::string htmlOf(const Done& described, const std::map<std::string, std::string>& pictures,
                   int digits) {
  const auto picture = [&pictures](const report::Figure& figure) {
    const auto found = pictures.find(figure.id);
    return found == pictures.end() ? std::string() : found->second;
  };
  return report::toHtml(described.whole(),
                        {.version = kVersion, .digits = digits, .picture = picture});
}

std::string textOf(const Done& described, std::size_t width, int digits) {
  return report::toText(described.whole(), {.width = width, .digits = digits});
}

template <class Cell>
using Column = nb::ndarray<const Cell, nb::ndim<1>, nb::c_contig, nb::device::cpu>;

double concordanceOf(const Column<double>& time, const Column<std::uint32_t>& event,
                     const Column<double>& score) {
  if (event.size() != time.size() || score.size() != time.size()) {
    throw std::invalid_argument("columns of different lengths");
  }
  const nb::gil_scoped_release unlocked;
  return analysis::concordanceOf(std::span(time.data(), time.size()),
                                 std::span(event.data(), event.size()),
                                 std::span(score.data(), score.size()));
}

nb::dict csvOf(const Done& described) {
  nb::dict files;
  for (const auto& [name, contents] : report::toCsvFiles(described.whole())) {
    files[name.c_str()] = contents;
  }
  return files;
}

}  // namespace
}  // namespace survmeth::python

NB_MODULE(_core, module) {
  using survmeth::python::ArrowTable;
  using survmeth::python::Call;
  using survmeth::python::Done;
  module.attr("version") = survmeth::python::kVersion;
  module.def("declarations",
             [] { return survmeth::analysis::declarationsJson(survmeth::python::kVersion); });
  module.def("concordance", &survmeth::python::concordanceOf);
  nb::class_<survmeth::analysis::SavedFit>(module, "Fit")
      .def("__init__", [](survmeth::analysis::SavedFit* fit, const std::string& text) {
        new (fit) survmeth::analysis::SavedFit(survmeth::analysis::readSavedFit(text));
      });
  nb::class_<ArrowTable>(module, "ArrowTable")
      .def(nb::init<nb::handle, bool>())
      .def_prop_ro("names", &ArrowTable::names)
      .def_prop_ro("rows", &ArrowTable::rows)
      .def("column", [](nb::handle self, std::size_t number) {
        return nb::cast<const ArrowTable&>(self).column(number, self);
      });
  nb::class_<Call>(module, "Call")
      .def(nb::init<const std::string&, const nb::dict&>())
      .def(nb::init<const survmeth::analysis::SavedFit&, const nb::dict&>())
      .def("wanted", &Call::wanted)
      .def("wanted_of_new", &Call::wantedOfNew)
      .def("give_new", &Call::giveNew)
      .def("run", &Call::run, nb::arg("source"), nb::arg("names"), nb::arg("columns"),
           nb::arg("rows"), nb::arg("tell").none());
  nb::class_<Done>(module, "Report")
      .def_prop_ro("analysis", [](const Done& it) { return it.report->analysis; })
      .def_prop_ro("title", [](const Done& it) { return it.report->title; })
      .def_prop_ro("digest", [](const Done& it) { return it.whole().data.digest; })
      .def_prop_ro("plan", [](const Done& it) { return survmeth::python::planOf(*it.report); })
      .def_prop_ro("facts", [](const Done& it) { return survmeth::python::factsOf(*it.report); })
      // Those that are described, of those that there may be, and all.
      .def_prop_ro("described_tables",
                   [](nb::handle self) {
                     const auto& it = nb::cast<const Done&>(self);
                     return survmeth::python::tablesOf(*it.report, self);
                   })
      .def_prop_ro("declared_tables", [](const Done& it) { return it.tables; })
      .def_prop_ro("tables",
                   [](nb::handle self) {
                     const auto& it = nb::cast<const Done&>(self);
                     return survmeth::python::tablesOf(it.whole(), self);
                   })
      .def_prop_ro("notes", [](const Done& it) { return survmeth::python::notesOf(*it.report); })
      .def_prop_ro("methods",
                   [](const Done& it) { return survmeth::python::methodsOf(*it.report); })
      .def_prop_ro("figures",
                   [](const Done& it) { return survmeth::python::figuresOf(it.whole()); })
      // Each a ValueError where nothing lasts of the result.
      .def_prop_ro("fit", &survmeth::python::fitOf)
      .def_prop_ro("saved", &survmeth::python::savedText)
      .def("text", &survmeth::python::textOf)
      .def("html", &survmeth::python::htmlOf)
      .def("csv", &survmeth::python::csvOf)
      .def("json", [](const Done& it, bool figures) {
        return survmeth::report::toJson(
            it.whole(), {.version = survmeth::python::kVersion, .figures = figures});
      });
}
