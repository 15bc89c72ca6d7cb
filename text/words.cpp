// The wording that all messages share.
#include "text/words.h"

#include <algorithm>
#include <numeric>

namespace survmeth::text {
namespace {

constexpr std::size_t kLongestQuote = 40;
// Of names that are compared: a file that is no table has a header as long as itself.
constexpr std::size_t kLongestCompared = 200;

// Edits (insert, delete, replace) that lead from one text to the other.
std::size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({above + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row.back();
}

}  // namespace

std::string quote(std::string_view text) {
  std::string result = "\"";
  std::size_t length = text.size();
  if (length > kLongestQuote) {
    length = kLongestQuote;
    // Never cut within a UTF-8 sequence.
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) --length;
  }
  for (const char c : text.substr(0, length)) {
    result += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
  }
  return result + (length < text.size() ? "...\"" : "\"");
}

std::string nearestFirst(std::string_view wanted, const std::vector<std::string>& names,
                         std::size_t limit) {
  const std::string target = lowered(wanted.substr(0, kLongestCompared));
  std::vector<std::size_t> order(names.size()), far(names.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  for (std::size_t i = 0; i < names.size(); ++i) {
    far[i] = distance(target, lowered(std::string_view(names[i]).substr(0, kLongestCompared)));
  }
  std::stable_sort(order.begin(), order.end(),
                   [&far](std::size_t a, std::size_t b) { return far[a] < far[b]; });
  std::string result;
  const std::size_t shown = std::min(limit, names.size());
  for (std::size_t i = 0; i < shown; ++i) {
    if (i > 0) result += ", ";
    result += quote(names[order[i]]);
  }
  if (shown < names.size()) {
    result += " and " + std::to_string(names.size() - shown) + " more";
  }
  return result;
}

std::string grouped(std::uint64_t count) {
  std::string digits = std::to_string(count);
  for (std::size_t at = digits.size(); at > 3;) {
    at -= 3;
    digits.insert(at, 1, ',');
  }
  return digits;
}

std::string counted(std::uint64_t count, std::string_view one, std::string_view many) {
  return (grouped(count) + ' ').append(count == 1 ? one : many);
}

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

std::string lowered(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = lowered(c);
  return result;
}

}  // namespace survmeth::text
