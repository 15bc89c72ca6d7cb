// What follows of new data that an analysis takes beside its own.
#include "analysis/newData.h"

#include <algorithm>
#include <utility>

#include "numerics/partOfProgress.h"
#include "report/keys.h"

namespace survmeth::analysis {
namespace {

// The name that the request gives the new data; empty: there are none.
std::string nameOf(const Declaration& declaration, const void* request) {
  const Option* option = declaration.find(declaration.newData.option);
  if (option == nullptr) return {};
  const std::optional<Setting> setting = option->get(request);
  return setting ? std::get<std::string>(*setting) : std::string();
}

report::Fact fact(const char* key, report::Kind kind, report::Value value) {
  return {key, "", kind, std::move(value)};
}

// What all of the two reports say, once.
void merge(report::Report made, const NewData& newData, report::Report& report) {
  report.summary += " New data: " + made.summary;
  report.facts.push_back(fact(report::key::kNewDigest, report::Kind::kLabel, made.data.digest));
  report.facts.push_back(
      fact(report::key::kNewRows, report::Kind::kCount, static_cast<double>(made.data.rowsUsed)));
  for (report::Table& table : made.tables) {
    table.id = newData.nameOf(table.id);
    report.tables.push_back(std::move(table));
  }
  for (report::Figure& figure : made.figures) report.figures.push_back(std::move(figure));
  for (report::Method& method : made.methods) {
    const bool stands =
        std::any_of(report.methods.begin(), report.methods.end(),
                    [&](const report::Method& each) { return each.text == method.text; });
    if (!stands) report.methods.push_back(std::move(method));
  }
  for (report::Note& note : made.notes) {
    note.text = "new data: " + note.text;
    report.notes.push_back(std::move(note));
  }
}

}  // namespace

std::string NewData::nameOf(const std::string& followUps) const {
  for (const auto& [theirs, own] : names) {
    if (theirs == followUps) return own;
  }
  return followUps;
}

std::vector<std::string> otherData(const Declaration& declaration, const void* request) {
  std::vector<std::string> names;
  for (const Option& option : declaration.options) {
    if (option.type != Type::kData) continue;
    const std::optional<Setting> setting = option.get(request);
    if (setting) names.push_back(std::get<std::string>(*setting));
  }
  return names;
}

Fitted withNewData(const Declaration& declaration, const frame::Frame& data, const void* request,
                   numerics::Progress& progress, const Parts& parts, const WithData& withData) {
  const std::string name = nameOf(declaration, request);
  if (name.empty()) return declaration.run(data, request, progress, parts);
  const NewData& newData = declaration.newData;
  if (!withData) {
    throw BadOption(newData.option, "names other data, which cannot be had here; expected none");
  }
  numerics::PartOfProgress first(progress, 0, 2, 4), lasting(progress, 2, 4);
  numerics::PartOfProgress second(progress, 3, 4);
  Fitted fitted = declaration.run(data, request, first, parts);
  const Declaration& followUp = declaration.lasting->predict;
  try {
    const auto wishes = newData.request(data, fitted.result.get(), request, lasting);
    withData(name, followUp, wishes.get(), [&](const frame::Frame& other) {
      // Described at once: later there is only the first result.
      const Parts all = parts.digest ? parts : Parts();
      merge(analyse(followUp, other, wishes.get(), second, all).report, newData, fitted.report);
    });
  } catch (const BadOption& bad) {
    throw BadOption(newData.nameOf(bad.option()), bad.what());
  }
  return fitted;
}

}  // namespace survmeth::analysis
