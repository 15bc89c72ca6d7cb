// Text as HTML, character by character.
#include "report/escape.h"

#include "text/utf8.h"

namespace survmeth::report {

std::string escaped(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const std::string_view before = text;
    const std::uint32_t character = text::takeCharacter(text);
    switch (character) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\'':
        result += "&#39;";
        break;
      case '\n':
      case '\r':
      case '\t':
        result += ' ';
        break;
      default:
        if (character == text::kNoCharacter || text::isControl(character)) {
          result += "\xEF\xBF\xBD";
        } else {
          result += before.substr(0, before.size() - text.size());
        }
    }
  }
  return result;
}

}  // namespace survmeth::report
