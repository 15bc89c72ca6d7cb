// Arguments that are empty or repeated.
#include "cli/shell/arguments.h"

#include <CLI/CLI.hpp>

#include "cli/shell/problem.h"

namespace cli {
namespace {

// "--out has an empty value; expected DIR".
std::string emptyMessage(const CLI::Option& option) {
  return "--" + option.get_lnames().front() + " has an empty value; expected " +
         (option.get_items_expected_max() > 0 ? option.get_type_name() : "none");
}

const CLI::Option* named(const CLI::App& app, const std::string& argument) {
  if (argument.size() < 3 || argument.compare(0, 2, "--") != 0) return nullptr;
  return app.get_option_no_throw(argument);
}

}  // namespace

std::string emptyValue(const CLI::App& app, const std::vector<std::string>& arguments) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (argument.empty()) {
      const CLI::Option* option = i > 0 ? named(app, arguments[i - 1]) : nullptr;
      if (option != nullptr && option->get_items_expected_max() > 0) return emptyMessage(*option);
      return "an argument is empty; expected a file or an option";
    }
    if (argument.back() != '=') continue;
    const CLI::Option* option = named(app, argument.substr(0, argument.size() - 1));
    if (option != nullptr) return emptyMessage(*option);
  }
  return {};
}

std::string valueOfFlag(const CLI::App& app, const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments) {
    const std::size_t equals = argument.find('=');
    if (equals == std::string::npos) continue;
    const std::string name = argument.substr(0, equals);
    const CLI::Option* option = named(app, name);
    if (option == nullptr || option->get_items_expected_max() > 0) continue;
    return name + " takes no value; expected it without " + quote(argument.substr(equals));
  }
  return {};
}

std::string lackingArgument(const CLI::App& app) {
  const auto withinSentence = [](std::string text) {  // but not "cSV or TSV file"
    const bool word = text.size() > 1 && text[1] >= 'a' && text[1] <= 'z';
    if (word && text[0] >= 'A' && text[0] <= 'Z') text[0] = static_cast<char>(text[0] - 'A' + 'a');
    return text;
  };
  for (const CLI::Option* option : app.get_options()) {
    if (!option->get_required() || option->count() > 0) continue;
    const bool file = option->get_positional();
    return (file ? option->get_name(true) : "--" + option->get_lnames().front()) +
           " is missing; expected " +
           (file ? withinSentence(option->get_description()) : option->get_type_name());
  }
  return {};
}

std::string lackingValue(const CLI::App& app, const std::vector<std::string>& arguments) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const CLI::Option* option = named(app, arguments[i]);
    if (option == nullptr || option->get_items_expected_max() == 0) continue;
    if (i + 1 < arguments.size() && named(app, arguments[i + 1]) == nullptr) continue;
    return arguments[i] + " has no value; expected " + option->get_type_name();
  }
  return {};
}

std::string repeatedOption(const CLI::App& app) {
  for (const CLI::Option* option : app.get_options()) {
    const bool once = option->get_items_expected_max() == 1 && !option->get_lnames().empty();
    if (once && option->count() > 1) {
      return "the option --" + option->get_lnames().front() + " stands " +
             std::to_string(option->count()) + " times; expected once";
    }
  }
  return {};
}

std::string callOf(const std::vector<std::string>& arguments) {
  std::string call = "survmeth";
  for (const std::string& argument : arguments) {
    const bool plain =
        !argument.empty() && argument.find_first_not_of(
                                 "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                                 "-_.,/=:+@%") == std::string::npos;
    if (plain) {
      call += ' ' + argument;
      continue;
    }
    call += " '";
    for (const char c : argument) call += c == '\'' ? std::string("'\\''") : std::string(1, c);
    call += '\'';
  }
  return call;
}

}  // namespace cli
