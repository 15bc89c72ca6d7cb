#include "analysis/reading.h"

#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "text/words.h"

namespace survmeth::analysis {
namespace {

constexpr std::array<std::pair<std::string_view, char>, 3> kDelimiterNames = {
    {{"tab", '\t'}, {"comma", ','}, {"semicolon", ';'}}};

// Neither a part of numbers and words nor a quote.
bool mayDelimit(char c) {
  return std::string_view("\t!#$%&()*,/:;<=>?@[\\]^`{|}~").find(c) != std::string_view::npos;
}

// 0 where there is none such.
char delimiterOf(std::string_view text) {
  for (const auto& [name, delimiter] : kDelimiterNames) {
    if (text == name) return delimiter;
  }
  return text.size() == 1 && mayDelimit(text[0]) ? text[0] : '\0';
}

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

Option delimiterOption() {
  Option option = bound("delimiter", Type::kText, "SIGN",
                        "What separates cells: tab, comma, semicolon or a sign such as |, instead "
                        "of what header and first rows show",
                        &Reading::delimiter);
  option.set = [](void* reading, const Setting& setting) {
    const auto& text = std::get<std::string>(setting);
    if (delimiterOf(text) == 0) {
      throw BadOption("delimiter", text::quote(text) +
                                       " separates no cells; expected tab, comma, semicolon or a "
                                       "sign such as |");
    }
    static_cast<Reading*>(reading)->delimiter = text;
  };
  return option;
}

Option decimalOption() {
  Option option = bound("decimal", Type::kChoice, "SIGN",
                        "Decimal mark, instead of what the first rows show", &Reading::decimal);
  option.choices = {".", ","};
  return option;
}

}  // namespace

frame::Reading Reading::frame() const {
  frame::Reading made;
  if (!missing.empty()) made.missing = frame::Missing(missing);
  made.where = where;
  made.delimiter = delimiterOf(delimiter);
  if (!decimal.empty()) made.decimal = decimal.front();
  return made;
}

const std::vector<Option>& readingOptions() {
  static const std::vector<Option> kOptions = {
      bound("missing", Type::kTexts, "A,B",
            "What a missing cell holds, instead of NA, N/A, NaN, null and .", &Reading::missing),
      bound("where", Type::kText, "CONDITION",
            "Take only rows that meet it, as in 'age > 40 & sex == \"f\"'", &Reading::where),
      delimiterOption(),
      decimalOption(),
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
  const Reading usual;
  for (report::Choice& choice : choices(readingOptions(), &reading, &usual)) {
    report.plan.push_back(std::move(choice));
  }
}

}  // namespace survmeth::analysis
