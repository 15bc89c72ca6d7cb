// Settings from what a person typed and from what programs give, checked against the option.
#include "analysis/option.h"

#include <algorithm>
#include <cmath>

#include "text/lists.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

using text::nearestFirst;
using text::quote;

// The items of a list.
std::vector<std::string> elements(const Option& option, const std::string& list) {
  try {
    if (option.type == Type::kNumbers) return text::listItems(list, "numbers", true);
    return text::listItems(list, option.type == Type::kColumns ? "column names" : "values");
  } catch (const std::invalid_argument& wrong) {
    throw BadOption(option.name, wrong.what());
  }
}

std::string expectedNumber(const Range& range) {
  return range.expected.empty() ? "a number" : range.expected;
}

double numberOf(const Option& option, const std::string& text) {
  const std::optional<double> value = text::parseNumber(text);
  if (value) return *value;
  throw BadOption(option.name,
                  quote(text) + (text::isTooLarge(text) ? " is out of range" : " is not a number") +
                      "; expected " + expectedNumber(option.range));
}

void requireRange(const Option& option, double value, const std::string& text) {
  const Range& range = option.range;
  const bool inside = range.open ? value > range.least && value < range.most
                                 : value >= range.least && value <= range.most;
  if (std::isfinite(value) && inside && (!range.whole || value == std::trunc(value))) return;
  throw BadOption(option.name,
                  quote(text) + " is out of range; expected " + expectedNumber(option.range));
}

void requireText(const Option& option, const std::string& text) {
  if (text.empty()) {
    throw BadOption(option.name, "the value is empty; expected " + option.valueName);
  }
}

void requireList(const Option& option, const std::vector<std::string>& list) {
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (list[i].empty()) {
      throw BadOption(option.name, "an element of the list is empty; expected " + option.valueName);
    }
    if (option.type == Type::kColumns &&
        std::find(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(i), list[i]) !=
            list.begin() + static_cast<std::ptrdiff_t>(i)) {
      throw BadOption(option.name, quote(list[i]) + " stands there twice; expected each once");
    }
  }
  if (list.empty()) throw BadOption(option.name, "the list is empty; expected " + option.valueName);
}

void requireNumbers(const Option& option, const std::vector<double>& list) {
  if (list.empty()) throw BadOption(option.name, "the list is empty; expected " + option.valueName);
  for (std::size_t i = 0; i < list.size(); ++i) {
    requireRange(option, list[i], text::exact(list[i]));
    if (option.range.ascending && i > 0 && !(list[i - 1] < list[i])) {
      throw BadOption(option.name, quote(text::exact(list[i])) + " is out of order; expected " +
                                       expectedNumber(option.range));
    }
  }
  if (option.range.count == 0 || option.range.count == list.size()) return;
  throw BadOption(option.name, (list.size() == 1 ? "there is " : "there are ") +
                                   text::counted(list.size(), "number", "numbers") + "; expected " +
                                   option.range.counted);
}

void requireChoice(const Option& option, const std::string& text) {
  const auto found = std::find(option.choices.begin(), option.choices.end(), text);
  if (found != option.choices.end()) return;
  throw BadOption(option.name, "there is no " + quote(text) + "; expected one of " +
                                   nearestFirst(text, option.choices));
}

const std::string& onlyText(const Option& option, const std::vector<std::string>& texts) {
  if (texts.size() == 1) return texts.front();
  throw BadOption(option.name, "stands " + std::to_string(texts.size()) + " times; expected once");
}

}  // namespace

void requireAmong(const std::vector<std::string>& names, const std::vector<std::string>& allowed,
                  const char* option, const char* what) {
  for (const std::string& name : names) {
    if (std::find(allowed.begin(), allowed.end(), name) != allowed.end()) continue;
    throw BadOption(option, quote(name) + " is no " + what + "; expected one of " +
                                nearestFirst(name, allowed));
  }
}

std::string withPlace(const frame::ExpressionError& wrong) {
  const std::string marked = wrong.marked();
  const std::size_t line = marked.find('\n') + 1;
  return std::string(wrong.what()) + "\n    " + marked.substr(0, line) + "    " +
         marked.substr(line);
}

Setting settingOf(const Option& option, const std::vector<std::string>& texts) {
  if (option.type == Type::kFlag && option.table.empty()) return true;
  const std::string& text = onlyText(option, texts);
  requireText(option, text);
  switch (option.type) {
    case Type::kFlag:
      return true;
    case Type::kNumber: {
      const double value = numberOf(option, text);
      requireRange(option, value, text);
      return value;
    }
    case Type::kNumbers: {
      std::vector<double> list;
      for (const std::string& element : elements(option, text)) {
        list.push_back(numberOf(option, element));
      }
      requireNumbers(option, list);
      return list;
    }
    case Type::kTexts:
    case Type::kColumns: {
      std::vector<std::string> list = elements(option, text);
      requireList(option, list);
      return list;
    }
    case Type::kChoice:
      requireChoice(option, text);
      return text;
    case Type::kText:
    case Type::kColumn:
    case Type::kFormula:
    case Type::kData:
      break;
  }
  return text;
}

Setting checked(const Option& option, const Setting& value) {
  const auto wrong = [&option](const char* expected) {
    return BadOption(option.name,
                     std::string("the value is of another type; expected ") + expected);
  };
  const auto* number = std::get_if<double>(&value);
  const auto* text = std::get_if<std::string>(&value);
  switch (option.type) {
    case Type::kFlag:
      if (!std::holds_alternative<bool>(value)) throw wrong("true or false");
      return value;
    case Type::kNumber:
      if (text != nullptr) return settingOf(option, {*text});
      if (number == nullptr) throw wrong("a number");
      requireRange(option, *number, text::exact(*number));
      return value;
    case Type::kNumbers: {
      if (text != nullptr) return settingOf(option, {*text});
      if (number != nullptr) return checked(option, std::vector<double>{*number});
      const auto* list = std::get_if<std::vector<double>>(&value);
      if (list == nullptr) throw wrong("a list of numbers");
      requireNumbers(option, *list);
      return value;
    }
    case Type::kTexts:
    case Type::kColumns: {
      if (text != nullptr) return checked(option, std::vector<std::string>{*text});
      if (number != nullptr) return checked(option, std::vector<std::string>{text::exact(*number)});
      if (const auto* numbers = std::get_if<std::vector<double>>(&value)) {
        std::vector<std::string> list;
        for (const double each : *numbers) list.push_back(text::exact(each));
        return checked(option, list);
      }
      const auto* list = std::get_if<std::vector<std::string>>(&value);
      if (list == nullptr) throw wrong("a list of names");
      requireList(option, *list);
      return value;
    }
    case Type::kText:
      if (number != nullptr) return text::exact(*number);
      [[fallthrough]];
    case Type::kColumn:
    case Type::kFormula:
    case Type::kData:
    case Type::kChoice:
      if (text == nullptr) throw wrong("a text");
      requireText(option, *text);
      if (option.type == Type::kChoice) requireChoice(option, *text);
      return value;
  }
  return value;
}

std::vector<report::Choice> choices(const std::vector<Option>& options, const void* request,
                                    const void* usual) {
  std::vector<report::Choice> made;
  for (const Option& option : options) {
    if (std::optional<Setting> setting = option.get(request)) {
      const auto& get = option.unplanned ? option.unplanned : option.get;
      const bool asUsual = get(usual) == setting;
      made.push_back({option.name, std::move(*setting), asUsual});
    }
  }
  return made;
}

}  // namespace survmeth::analysis
