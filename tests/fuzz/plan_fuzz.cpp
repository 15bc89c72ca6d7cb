// Plans: any text is read or refused; the settings of what is read, written as a plan, are read as
// the same settings.
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "analysis/plan.h"
#include "report/jsonWriter.h"
#include "tests/fuzz/require.h"

using survmeth::analysis::JsonError;
using survmeth::analysis::Plan;
using survmeth::analysis::Planned;
using survmeth::fuzz::require;
using survmeth::report::JsonWriter;
using survmeth::report::Setting;

namespace {

using Settings = std::vector<std::pair<std::string, Setting>>;

Settings settingsOf(const Planned& planned) {
  Settings settings;
  for (const auto& option : planned.declaration->options) {
    if (const auto setting = option.get(planned.request.get())) {
      settings.emplace_back(option.name, *setting);
    }
  }
  for (const auto& option : survmeth::analysis::readingOptions()) {
    if (const auto setting = option.get(&planned.reading)) {
      settings.emplace_back(option.name, *setting);
    }
  }
  return settings;
}

std::string written(const Plan& plan) {
  std::string text;
  JsonWriter json(text);
  json.beginObject();
  json.member("title", plan.title);
  json.key("analyses");
  json.beginArray();
  for (const Planned& planned : plan.analyses) {
    json.beginObject();
    json.member("analysis", planned.declaration->name);
    json.member("name", planned.name);
    json.member("data", planned.data);
    json.key("options");
    json.beginObject();
    for (const auto& [name, setting] : settingsOf(planned)) {
      json.key(name);
      std::visit([&json](const auto& value) { json.value(value); }, setting);
    }
    json.endObject();
    json.endObject();
  }
  json.endArray();
  json.endObject();
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::optional<Plan> plan;
  try {
    plan = survmeth::analysis::readPlan({reinterpret_cast<const char*>(data), size});
  } catch (const JsonError& error) {
    require(*error.what() != '\0', "a refusal says why");
    return 0;
  }
  const Plan again = survmeth::analysis::readPlan(written(*plan));
  require(again.title == plan->title && again.analyses.size() == plan->analyses.size(),
          "a plan reads as it is written");
  for (std::size_t i = 0; i < again.analyses.size(); ++i) {
    require(again.analyses[i].declaration == plan->analyses[i].declaration &&
                again.analyses[i].name == plan->analyses[i].name &&
                again.analyses[i].data == plan->analyses[i].data &&
                settingsOf(again.analyses[i]) == settingsOf(plan->analyses[i]),
            "an analysis reads as it is written");
  }
  return 0;
}
