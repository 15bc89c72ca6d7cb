// A cell without the blanks around it.
#ifndef FRAME_TRIMMED_H_
#define FRAME_TRIMMED_H_

#include <string_view>

namespace survmeth::frame {

inline std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

}  // namespace survmeth::frame

#endif  // FRAME_TRIMMED_H_
