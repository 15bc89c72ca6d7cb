#include "python/reports.h"

#include <nanobind/ndarray.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <span>
#include <string>
#include <variant>
#include <vector>

#include "report/names.h"

namespace survmeth::python {
namespace {

namespace nb = nanobind;
using report::nameOf;

nb::object arrayOf(std::span<const double> numbers, nb::handle owner) {
  return nb::cast(
      nb::ndarray<nb::numpy, const double, nb::ndim<1>>(numbers.data(), {numbers.size()}, owner));
}

nb::object valueOf(const report::Value& value) {
  if (std::holds_alternative<std::monostate>(value)) return nb::none();
  if (const auto* truth = std::get_if<bool>(&value)) return nb::cast(*truth);
  if (const auto* number = std::get_if<double>(&value)) return nb::cast(*number);
  return nb::cast(std::get<std::string>(value));
}

nb::dict axisOf(const report::Axis& axis) {
  nb::dict made;
  made["label"] = axis.label;
  made["scale"] = nameOf(axis.scale);
  made["least"] = axis.least ? nb::cast(*axis.least) : nb::none();
  made["most"] = axis.most ? nb::cast(*axis.most) : nb::none();
  made["ticks"] = nb::cast(axis.ticks);
  made["categories"] = nb::cast(axis.categories);
  made["categoryGroups"] = nb::cast(axis.categoryGroups);
  made["percent"] = axis.percent;
  return made;
}

nb::dict seriesOf(const report::Series& series) {
  nb::dict made;
  made["name"] = series.name;
  made["kind"] = nameOf(series.kind);
  made["x"] = nb::cast(series.x);
  made["y"] = nb::cast(series.y);
  made["lower"] = nb::cast(series.lower);
  made["upper"] = nb::cast(series.upper);
  made["left"] = nb::cast(series.left);
  made["right"] = nb::cast(series.right);
  made["labels"] = nb::cast(series.labels);
  made["labelsHeading"] = series.labelsHeading;
  made["ticks"] = nb::cast(series.ticks);
  made["stepped"] = series.stepped;
  made["guide"] = series.guide;
  return made;
}

nb::dict panelOf(const report::Panel& panel) {
  nb::dict made;
  made["title"] = panel.title;
  made["x"] = axisOf(panel.x);
  made["y"] = axisOf(panel.y);
  nb::list series, references;
  for (const report::Series& each : panel.series) series.append(seriesOf(each));
  for (const report::Reference& each : panel.references) {
    nb::dict line;
    line["vertical"] = each.vertical;
    line["at"] = each.at;
    line["label"] = each.label;
    references.append(line);
  }
  made["series"] = series;
  made["references"] = references;
  made["equalUnits"] = panel.equalUnits;
  return made;
}

nb::object riskTableOf(const report::Figure& figure) {
  if (!figure.riskTable) return nb::none();
  nb::dict made;
  made["title"] = figure.riskTable->title;
  made["breaks"] = nb::cast(figure.riskTable->breaks);
  made["rows"] = nb::cast(figure.riskTable->rows);
  made["counts"] = nb::cast(figure.riskTable->counts);
  made["eachPanel"] = figure.riskTable->eachPanel;
  return made;
}

}  // namespace

nb::dict tablesOf(const report::Report& report, nb::handle owner) {
  nb::dict tables;
  for (const report::Table& table : report.tables) {
    nb::dict columns;
    for (const report::Column& column : table.columns) {
      nb::dict made;
      made["heading"] = column.heading;
      made["kind"] = nameOf(column.kind);
      made["values"] =
          column.isLabels() ? nb::cast(column.labels()) : arrayOf(column.numbers(), owner);
      columns[column.key.c_str()] = made;
    }
    nb::dict made;
    made["caption"] = table.caption;
    made["columns"] = columns;
    made["always"] = table.display == report::Display::kAlways;
    tables[table.id.c_str()] = made;
  }
  return tables;
}

nb::dict planOf(const report::Report& report) {
  nb::dict plan;
  for (const report::Choice& each : report.plan) {
    plan[each.name.c_str()] =
        std::visit([](const auto& value) { return nb::cast(value); }, each.setting);
  }
  return plan;
}

nb::dict factsOf(const report::Report& report) {
  nb::dict facts;
  for (const report::Fact& fact : report.facts) facts[fact.key.c_str()] = valueOf(fact.value);
  return facts;
}

nb::list notesOf(const report::Report& report) {
  nb::list notes;
  for (const report::Note& note : report.notes) {
    nb::dict made;
    made["code"] = note.code;
    made["text"] = note.text;
    made["names"] = nb::cast(note.names);
    notes.append(made);
  }
  return notes;
}

nb::list methodsOf(const report::Report& report) {
  nb::list methods;
  for (const report::Method& method : report.methods) {
    nb::dict made;
    made["text"] = method.text;
    made["reference"] = method.reference;
    methods.append(made);
  }
  return methods;
}

nb::list figuresOf(const report::Report& report) {
  nb::list figures;
  for (const report::Figure& figure : report.figures) {
    nb::list panels;
    for (const report::Panel& panel : figure.panels) panels.append(panelOf(panel));
    nb::dict made;
    made["id"] = figure.id;
    made["title"] = figure.title;
    made["caption"] = figure.caption;
    made["panels"] = panels;
    made["riskTable"] = riskTableOf(figure);
    figures.append(made);
  }
  return figures;
}

}  // namespace survmeth::python
