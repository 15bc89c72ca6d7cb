// std::to_chars and std::from_chars of doubles, also where the standard library does not have them:
// the same characters from every compiler.
#ifndef TEXT_CHARCONV_H_
#define TEXT_CHARCONV_H_

#include <charconv>

#ifdef __cpp_lib_to_chars

namespace survmeth::text {
using std::from_chars;
using std::to_chars;
}  // namespace survmeth::text

#else

#include "text/charconvElsewhere.h"

namespace survmeth::text {
using elsewhere::from_chars;
using elsewhere::to_chars;
using std::from_chars;  // of whole numbers
}  // namespace survmeth::text

#endif

#endif  // TEXT_CHARCONV_H_
