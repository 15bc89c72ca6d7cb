// Text as HTML.
#ifndef REPORT_ESCAPE_H_
#define REPORT_ESCAPE_H_

#include <string>
#include <string_view>

namespace survmeth::report {

// The text as content of an element or of a quoted attribute: markup escaped, line ends and tabs as
// spaces, U+FFFD for control characters and bytes that are no UTF-8.
std::string escaped(std::string_view text);

}  // namespace survmeth::report

#endif  // REPORT_ESCAPE_H_
