// What text for people needs to know of UTF-8: whether text is, what of it may be shown, how many
// terminal cells it takes, and where it can be cut.
#ifndef TEXT_UTF8_H_
#define TEXT_UTF8_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace survmeth::text {

// What takeCharacter answers for a byte that begins no character.
inline constexpr std::uint32_t kNoCharacter = 0xFFFFFFFF;

// Takes one character off the front of `text`, which is not empty; where none begins, one byte.
std::uint32_t takeCharacter(std::string_view& text);

bool isUtf8(std::string_view text);

// Whether a character would break lines, reach the terminal as a command or turn the direction of
// what follows it: controls, line and paragraph separators, directional overrides and isolates.
bool isControl(std::uint32_t character);

// The text with '?' for every control character and every byte that is no UTF-8.
std::string printable(std::string_view text);

// Terminal cells: 2 for East Asian wide characters and emoji, 0 for combining marks, otherwise 1.
std::size_t displayWidth(std::string_view text);

// The text, or as much of it as fits into `width` cells, followed by "...".
std::string shortened(const std::string& text, std::size_t width);

// The text in lines of at most `width` cells (not 0), broken at spaces; a word that is longer is
// broken inside. At least one line. A character wider than `width` has a line of its own.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

}  // namespace survmeth::text

#endif  // TEXT_UTF8_H_
