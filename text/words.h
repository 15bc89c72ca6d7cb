// The wording that all messages share: names in quotes, the nearest names, counts, lower
// case.
#ifndef TEXT_WORDS_H_
#define TEXT_WORDS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace survmeth::text {

// `text` in double quotes as messages show it: shortened when long, control characters as '?'.
std::string quote(std::string_view text);

// The names nearest to `wanted` first, quoted and joined by commas; at most `limit` of them, then
// how many there are besides.
std::string nearestFirst(std::string_view wanted, const std::vector<std::string>& names,
                         std::size_t limit = 12);

// 1,234,567 -> "1,234,567".
std::string grouped(std::uint64_t count);

// "1 row", "3 rows".
std::string counted(std::uint64_t count, std::string_view one, std::string_view many);

// The letters of ASCII in lower case, everything else as it is.
char lowered(char c);
std::string lowered(std::string_view text);

}  // namespace survmeth::text

#endif  // TEXT_WORDS_H_
