// The members of a report, in their order.
#include "report/json.h"

#include "report/jsonWriter.h"
#include "report/names.h"

namespace survmeth::report {
namespace {

double count(std::size_t number) { return static_cast<double>(number); }

void data(JsonWriter& json, const Data& data) {
  json.key("data");
  json.beginObject();
  json.member("name", data.name);
  json.member("digest", data.digest);
  json.key("rows");
  json.beginObject(true);
  json.member("read", count(data.rowsRead));
  json.member("used", count(data.rowsUsed));
  json.member("leftOut", count(data.rowsRead - data.rowsUsed));
  json.endObject();
  json.endObject();
}

void facts(JsonWriter& json, const std::vector<Fact>& facts) {
  json.key("facts");
  json.beginObject();
  for (const Fact& fact : facts) {
    json.key(fact.key);
    if (const bool* flag = std::get_if<bool>(&fact.value)) {
      json.value(*flag);
    } else if (const double* number = std::get_if<double>(&fact.value)) {
      json.value(*number);
    } else if (const std::string* text = std::get_if<std::string>(&fact.value)) {
      json.value(*text);
    } else {
      json.null();
    }
  }
  json.endObject();
}

void table(JsonWriter& json, const Table& table) {
  json.key(table.id);
  json.beginObject();
  json.member("caption", table.caption);
  json.key("columns");
  json.beginArray();
  for (const Column& column : table.columns) {
    json.beginObject(true);
    json.member("key", column.key);
    json.member("heading", column.heading);
    json.member("kind", nameOf(column.kind));
    json.endObject();
  }
  json.endArray();
  json.key("values");
  json.beginObject();
  for (const Column& column : table.columns) {
    json.key(column.key);
    std::visit([&json](const auto& values) { json.value(values); }, column.values);
  }
  json.endObject();
  json.endObject();
}

// Members that say nothing are left out of figures.
void member(JsonWriter& json, const char* name, const std::vector<double>& numbers) {
  if (!numbers.empty()) json.member(name, numbers);
}
void member(JsonWriter& json, const char* name, const std::vector<std::string>& texts) {
  if (!texts.empty()) json.member(name, texts);
}

void axis(JsonWriter& json, const char* name, const Axis& axis) {
  json.key(name);
  json.beginObject();
  json.member("label", axis.label);
  json.member("scale", nameOf(axis.scale));
  if (axis.least) json.member("least", *axis.least);
  if (axis.most) json.member("most", *axis.most);
  member(json, "ticks", axis.ticks);
  member(json, "categories", axis.categories);
  member(json, "categoryGroups", axis.categoryGroups);
  if (axis.percent) json.member("percent", true);
  json.endObject();
}

void series(JsonWriter& json, const Series& series) {
  json.beginObject();
  json.member("name", series.name);
  json.member("kind", nameOf(series.kind));
  member(json, "x", series.x);
  member(json, "y", series.y);
  member(json, "lower", series.lower);
  member(json, "upper", series.upper);
  member(json, "left", series.left);
  member(json, "right", series.right);
  member(json, "labels", series.labels);
  member(json, "ticks", series.ticks);
  if (!series.labelsHeading.empty()) json.member("labelsHeading", series.labelsHeading);
  if (series.stepped) json.member("stepped", true);
  if (series.guide) json.member("guide", true);
  json.endObject();
}

void panel(JsonWriter& json, const Panel& panel) {
  json.beginObject();
  json.member("title", panel.title);
  axis(json, "x", panel.x);
  axis(json, "y", panel.y);
  json.key("series");
  json.beginArray();
  for (const Series& each : panel.series) series(json, each);
  json.endArray();
  json.key("references");
  json.beginArray();
  for (const Reference& reference : panel.references) {
    json.beginObject(true);
    json.member("vertical", reference.vertical);
    json.member("at", reference.at);
    json.member("label", reference.label);
    json.endObject();
  }
  json.endArray();
  if (panel.equalUnits) json.member("equalUnits", true);
  json.endObject();
}

void figure(JsonWriter& json, const Figure& figure) {
  json.beginObject();
  json.member("id", figure.id);
  json.member("title", figure.title);
  json.member("caption", figure.caption);
  json.key("panels");
  json.beginArray();
  for (const Panel& each : figure.panels) panel(json, each);
  json.endArray();
  if (figure.riskTable) {
    const RiskTable& risk = *figure.riskTable;
    json.key("riskTable");
    json.beginObject();
    json.member("title", risk.title);
    json.member("breaks", risk.breaks);
    json.member("rows", risk.rows);
    json.key("counts");
    json.beginArray();
    for (const std::vector<double>& row : risk.counts) json.value(row);
    json.endArray();
    if (risk.eachPanel) json.member("eachPanel", true);
    json.endObject();
  }
  json.endObject();
}

void methods(JsonWriter& json, const std::vector<Method>& methods) {
  json.key("methods");
  json.beginArray();
  for (const Method& method : methods) {
    json.beginObject();
    json.member("text", method.text);
    json.member("reference", method.reference);
    json.endObject();
  }
  json.endArray();
}

void notes(JsonWriter& json, const std::vector<Note>& notes) {
  json.key("notes");
  json.beginArray();
  for (const Note& note : notes) {
    json.beginObject();
    json.member("code", note.code);
    json.member("text", note.text);
    json.member("names", note.names);
    json.endObject();
  }
  json.endArray();
}

void report(JsonWriter& json, const Report& report, const JsonOptions& options) {
  requireWellFormed(report);
  json.beginObject();
  json.member("schema", kJsonSchema);
  json.member("program", options.program);
  json.member("version", options.version);
  json.member("analysis", report.analysis);
  json.member("title", report.title);
  json.member("summary", report.summary);
  data(json, report.data);
  json.key("plan");
  json.beginObject();
  for (const Choice& each : report.plan) {
    json.key(each.name);
    std::visit([&json](const auto& value) { json.value(value); }, each.setting);
  }
  json.endObject();
  facts(json, report.facts);
  json.key("tables");
  json.beginObject();
  for (const Table& each : report.tables) table(json, each);
  json.endObject();
  if (options.figures) {
    json.key("figures");
    json.beginArray();
    for (const Figure& each : report.figures) figure(json, each);
    json.endArray();
  }
  methods(json, report.methods);
  notes(json, report.notes);
  json.endObject();
}

}  // namespace

std::string toJson(const Report& report, const JsonOptions& options) {
  std::string out;
  JsonWriter json(out);
  survmeth::report::report(json, report, options);
  out += '\n';
  return out;
}

std::string toJson(std::span<const Report> reports, const std::string& title,
                   const JsonOptions& options) {
  std::string out;
  JsonWriter json(out);
  json.beginObject();
  json.member("schema", kJsonSchemaOfSeveral);
  json.member("program", options.program);
  json.member("version", options.version);
  json.member("title", title);
  json.key("reports");
  json.beginArray();
  for (const Report& each : reports) report(json, each, options);
  json.endArray();
  json.endObject();
  out += '\n';
  return out;
}

}  // namespace survmeth::report
