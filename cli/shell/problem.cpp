// The wording that all messages share.
#include "cli/shell/problem.h"

namespace cli {
Problem problemAt(const Place& place, std::string_view what, std::string_view expected) {
  std::string text(place.source);
  const auto add = [&text](const std::string& part) {
    if (!text.empty()) text += ", ";
    text += part;
  };
  if (place.line > 0) add("line " + std::to_string(place.line));
  if (!place.column.empty()) add("column " + quote(place.column));
  if (!text.empty()) text += ": ";
  text += what;
  if (!expected.empty()) (text += "; expected ") += expected;
  return Problem(text);
}

}  // namespace cli
