// The options of a declaration (declare.h): each binds a name, a type, a role, a range and a help text
// to a member of the request.
#ifndef ANALYSIS_DECLARE_OPTIONS_H_
#define ANALYSIS_DECLARE_OPTIONS_H_

#include <functional>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "analysis/declaration.h"
#include "analysis/option.h"
#include "engine/input.h"
#include "frame/wanted.h"

namespace survmeth::analysis {

inline Range anyNumber() { return {.expected = "a number"}; }
Range above(double least);
Range between(double least, double most);  // both excluded
Range wholeFrom(double least);

inline frame::Wanted numbers() { return {.name = {}, .cells = frame::Cells::kNumbers}; }
inline frame::Wanted numbersFrom(double least) {
  return {.name = {}, .cells = frame::Cells::kNumbers, .least = least};
}
inline frame::Wanted mayBeMissing(frame::Wanted wanted) {
  wanted.mayBeMissing = true;
  return wanted;
}
inline frame::Wanted labels() { return {.name = {}, .cells = frame::Cells::kText}; }
inline frame::Wanted either() { return {.name = {}, .cells = frame::Cells::kEither}; }

// `Self`, which inherits this, is what each call returns.
template <class Self, class Request>
class DeclaringOptions {
 public:
  Self& column(const char* name, std::string Request::*member, engine::Role role,
               frame::Wanted wanted, const char* help) {
    Option& option = add(name, Type::kColumn, role, "COL", help, member);
    option.wanted = std::move(wanted);
    return self();
  }
  Self& columns(const char* name, std::vector<std::string> Request::*member, engine::Role role,
                frame::Wanted wanted, const char* help) {
    Option& option = add(name, Type::kColumns, role, "COL,COL", help, member);
    option.wanted = std::move(wanted);
    return self();
  }
  // Columns of labels whose combinations are meant; one alone is a text in the plan.
  Self& crossed(const char* name, std::vector<std::string> Request::*member, engine::Role role,
                const char* help) {
    columns(name, member, role, analysis::labels(), help);
    made_.options.back().get = [member](const void* request) -> std::optional<Setting> {
      const std::vector<std::string>& names = static_cast<const Request*>(request)->*member;
      if (names.empty()) return std::nullopt;
      return names.size() == 1 ? Setting(names.front()) : Setting(names);
    };
    return self();
  }
  Self& flag(const char* name, bool Request::*member, const char* help) {
    add(name, Type::kFlag, engine::Role::kValue, "", help, member);
    return self();
  }
  // The level of limits and tests.
  Self& alpha(double Request::*member) {
    return number("alpha", member, between(0, 1), "Significance level; intervals have level 1 - A",
                  "A")
        .without("0.05");
  }
  // A flag that asks for the table `table`.
  Self& table(const char* name, bool Request::*member, const char* table, const char* help) {
    add(name, Type::kFlag, engine::Role::kValue, "FILE", help, member).table = table;
    return self();
  }
  Self& number(const char* name, double Request::*member, Range range, const char* help,
               const char* valueName = "X") {
    add(name, Type::kNumber, engine::Role::kValue, valueName, help, member).range =
        std::move(range);
    return self();
  }
  Self& number(const char* name, std::optional<double> Request::*member, Range range,
               const char* help, const char* valueName = "X") {
    add(name, Type::kNumber, engine::Role::kValue, valueName, help, member).range =
        std::move(range);
    return self();
  }
  Self& numbers(const char* name, std::vector<double> Request::*member, Range range,
                const char* help, const char* valueName = "A,B,C") {
    add(name, Type::kNumbers, engine::Role::kValue, valueName, help, member).range =
        std::move(range);
    return self();
  }
  Self& text(const char* name, std::string Request::*member, engine::Role role, const char* help,
             const char* valueName = "TEXT") {
    add(name, Type::kText, role, valueName, help, member);
    return self();
  }
  // Names columns by itself; the declaration asks for them with adjustColumns().
  Self& formula(const char* name, std::string Request::*member, const char* help) {
    add(name, Type::kFormula, engine::Role::kFormula, "FORMULA", help, member);
    return self();
  }
  // Names other data than the first.
  Self& data(const char* name, std::string Request::*member, const char* help) {
    add(name, Type::kData, engine::Role::kValue, "FILE", help, member);
    return self();
  }
  // Labels of the column that option `of` names: never taken for missing there.
  Self& label(const char* name, std::string Request::*member, const char* of, const char* help,
              const char* valueName = "LABEL") {
    add(name, Type::kText, engine::Role::kLevel, valueName, help, member).labelsOf = of;
    return self();
  }
  Self& labels(const char* name, std::vector<std::string> Request::*member, const char* of,
               const char* help, const char* valueName = "A,B") {
    add(name, Type::kTexts, engine::Role::kLevel, valueName, help, member).labelsOf = of;
    return self();
  }
  Self& texts(const char* name, std::vector<std::string> Request::*member, engine::Role role,
              const char* help, const char* valueName = "A,B") {
    add(name, Type::kTexts, role, valueName, help, member);
    return self();
  }
  // `choices` pairs each word with its value; the member's default is the default.
  template <class Enum>
  Self& choice(const char* name, Enum Request::*member,
               std::vector<std::pair<std::string, Enum>> choices, const char* help) {
    Option& option = push(name, Type::kChoice, engine::Role::kValue, "KIND", help);
    const auto wordOf = [choices](Enum value) {
      for (const auto& [word, its] : choices) {
        if (its == value) return word;
      }
      return std::string();
    };
    const Enum standard = Request{}.*member;
    for (const auto& [word, value] : choices) option.choices.push_back(word);
    option.defaultText = wordOf(standard);
    option.set = [member, choices](void* request, const Setting& setting) {
      for (const auto& [word, value] : choices) {
        if (word == std::get<std::string>(setting)) static_cast<Request*>(request)->*member = value;
      }
    };
    option.get = [member, wordOf](const void* request) -> std::optional<Setting> {
      return Setting(wordOf(static_cast<const Request*>(request)->*member));
    };
    return self();
  }

  // Of the option just added.
  Self& required() {
    made_.options.back().required = true;
    return self();
  }
  Self& without(const char* text) {  // what holds where it is not given
    made_.options.back().defaultText = text;
    return self();
  }

  // It is part of the plan only where it has a meaning.
  Self& plannedWhere(std::function<bool(const Request&)> has) {
    Option& option = made_.options.back();
    option.unplanned = option.get;
    option.get = [has = std::move(has),
                  get = option.get](const void* request) -> std::optional<Setting> {
      return has(*static_cast<const Request*>(request)) ? get(request) : std::nullopt;
    };
    return self();
  }

 protected:
  Declaration made_;

 private:
  Self& self() { return static_cast<Self&>(*this); }

  Option& push(const char* name, Type type, engine::Role role, const char* valueName,
               const char* help) {
    Option& option = made_.options.emplace_back();
    option.name = name;
    option.type = type;
    option.role = role;
    option.valueName = valueName;
    option.help = help;
    return option;
  }

  // An option whose member holds the setting as it is. Numbers and choices are always part of the
  // plan; of the others what equals the default is not.
  template <class Value>
  Option& add(const char* name, Type type, engine::Role role, const char* valueName,
              const char* help, Value Request::*member) {
    Option& option = push(name, type, role, valueName, help);
    option.set = [member](void* request, const Setting& setting) {
      static_cast<Request*>(request)->*member = std::get<Plain<Value>>(setting);
    };
    option.get = [member,
                  standard = Request{}.*member](const void* request) -> std::optional<Setting> {
      const Value& value = static_cast<const Request*>(request)->*member;
      if (!std::is_same_v<Value, double> && value == standard) return std::nullopt;
      if constexpr (std::is_same_v<Value, std::optional<double>>) {
        return value ? std::optional<Setting>(*value) : std::nullopt;
      } else {
        return Setting(value);
      }
    };
    return option;
  }
  template <class Value>
  using Plain = std::conditional_t<std::is_same_v<Value, std::optional<double>>, double, Value>;
};

}  // namespace survmeth::analysis

#endif  // ANALYSIS_DECLARE_OPTIONS_H_
