// One option of an analysis, as every face reads it: name, type, what its value means, range,
// help. The command line, plans, Python and the browser differ only in how they spell a Setting.
#ifndef ANALYSIS_OPTION_H_
#define ANALYSIS_OPTION_H_

#include <functional>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "engine/input.h"
#include "frame/expression.h"
#include "frame/wanted.h"
#include "report/report.h"

namespace survmeth::analysis {

using report::Setting;

enum class Type {
  kFlag,
  kNumber,
  kText,
  kChoice,
  kColumn,
  kNumbers,
  kTexts,
  kColumns,
  kFormula,
  kData,  // other data than the first: a file's name, or what the caller calls them
};

// The numbers that an option takes; `least` and `most` themselves only where they are not open.
struct Range {
  double least = -std::numeric_limits<double>::infinity();
  double most = std::numeric_limits<double>::infinity();
  bool open = false;
  bool whole = false;
  bool ascending = false;     // of lists
  std::string expected = {};  // ends the message: "a number above 0 and below 1"
  std::size_t count = 0;      // of lists: as many and no others; 0: any number
  std::string counted = {};   // "two", "four: of ..."
};

// A list of so many numbers; `counted` says it: "two".
inline Range numbersOf(std::size_t count, const char* counted) {
  return {.expected = "a number", .count = count, .counted = counted};
}

struct Option {
  std::string name = {};  // "event-value": --event-value, and event_value in Python
  Type type = Type::kText;
  engine::Role role = engine::Role::kValue;
  std::string valueName = {};  // "COL"
  std::string help = {};
  std::string defaultText = {};  // what holds without it, for people; may be empty
  bool required = false;
  Range range = {};
  std::vector<std::string> choices = {};  // the first is the default
  frame::Wanted wanted = {};              // of columns: what their cells are to be; name unused
  std::string labelsOf = {};              // of labels: the option that names their column
  // A flag that asks for a table: the command line takes a file for it.
  std::string table = {};

  std::function<void(void* request, const Setting& value)> set = {};
  // The value, as the plan says it: nothing where there is none.
  std::function<std::optional<Setting>(const void* request)> get = {};
  // The same where the plan may pass over it; empty: it never does.
  std::function<std::optional<Setting>(const void* request)> unplanned = {};
};

// A value that an option does not take; the text begins after the option's name.
class BadOption : public std::invalid_argument {
 public:
  BadOption(std::string option, const std::string& text)
      : std::invalid_argument(text), option_(std::move(option)) {}
  const std::string& option() const { return option_; }

 private:
  std::string option_;
};

// Refuses `option` where it stands beside another that excludes it.
inline void requireAlone(bool both, const char* option, const char* other) {
  if (!both) return;
  throw BadOption(option, std::string("stands beside --") + other + "; expected one of the two");
}

// Refuses a name of `option` that is none of `allowed`; `what` says what those are: "covariate".
void requireAmong(const std::vector<std::string>& names, const std::vector<std::string>& allowed,
                  const char* option, const char* what);

// What is wrong with an expression and, below it, its text with a caret under the place.
std::string withPlace(const frame::ExpressionError& wrong);

// Reads what a person typed: `texts` as they came, one for each time the option stands, none for a
// flag. Lists are separated by commas, an element in double quotes may hold some. Throws BadOption
// with what stands there and what was expected.
Setting settingOf(const Option& option, const std::vector<std::string>& texts);

// Checks a value that came from elsewhere (a plan, Python) and brings it to the option's type: a
// single element for a list, a number for a label. Throws BadOption.
Setting checked(const Option& option, const Setting& value);

// What `request` sets the options to, beside `usual`, a request of nothing.
std::vector<report::Choice> choices(const std::vector<Option>& options, const void* request,
                                    const void* usual);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_OPTION_H_
