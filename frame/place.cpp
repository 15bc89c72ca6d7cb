#include "frame/place.h"

#include "text/words.h"

namespace survmeth::frame {

std::string placed(const Place& place, std::string_view what, std::string_view expected) {
  std::string sentence(place.source);
  const auto add = [&sentence](const std::string& part) {
    if (!sentence.empty()) sentence += ", ";
    sentence += part;
  };
  if (place.line > 0) add("line " + std::to_string(place.line));
  if (!place.column.empty()) add("column " + text::quote(place.column));
  if (!sentence.empty()) sentence += ": ";
  sentence += what;
  if (!expected.empty()) (sentence += "; expected ") += expected;
  return sentence;
}

}  // namespace survmeth::frame
