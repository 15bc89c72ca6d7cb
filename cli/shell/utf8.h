// What the shell needs to know of UTF-8: whether text is, how many terminal cells it takes,
// and where it can be cut.
#ifndef CLI_SHELL_UTF8_H_
#define CLI_SHELL_UTF8_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace cli {

bool isUtf8(std::string_view text);

// Terminal cells: 2 for East Asian wide characters, 0 for combining marks, otherwise 1.
std::size_t displayWidth(std::string_view text);

// The text, or as much of it as fits into `width` cells, followed by "...".
std::string shortened(const std::string& text, std::size_t width);

}  // namespace cli

#endif  // CLI_SHELL_UTF8_H_
