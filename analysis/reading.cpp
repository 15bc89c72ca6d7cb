#include "analysis/reading.h"

#include <optional>

namespace survmeth::analysis {
namespace {

template <class Value>
Option bound(const char* name, Type type, const char* valueName, const char* help,
             Value Reading::*member) {
  Option option;
  option.name = name;
  option.type = type;
  option.valueName = valueName;
  option.help = help;
  option.set = [member](void* reading, const Setting& setting) {
    static_cast<Reading*>(reading)->*member = std::get<Value>(setting);
  };
  option.get = [member](const void* reading) -> std::optional<Setting> {
    const Value& value = static_cast<const Reading*>(reading)->*member;
    return value == Reading{}.*member ? std::nullopt : std::optional<Setting>(value);
  };
  return option;
}

}  // namespace

const std::vector<Option>& readingOptions() {
  static const std::vector<Option> kOptions = {
      bound("missing", Type::kTexts, "A,B",
            "What a missing cell holds, instead of NA, N/A, NaN, null and .", &Reading::missing),
  };
  return kOptions;
}

const Option* findReadingOption(const std::string& name) {
  for (const Option& each : readingOptions()) {
    if (each.name == name) return &each;
  }
  return nullptr;
}

void echo(const Reading& reading, report::Report& report) {
  for (const Option& option : readingOptions()) {
    if (const std::optional<Setting> setting = option.get(&reading)) {
      report.plan.emplace_back(option.name, *setting);
    }
  }
}

}  // namespace survmeth::analysis
