#include "frame/missing.h"

#include <algorithm>
#include <optional>

#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::frame {

using text::lowered;
using text::parseNumber;

Missing::Missing() : Missing({"na", "n/a", "nan", "null", "."}) {}

Missing::Missing(std::vector<std::string> words) {
  for (const std::string& word : words) {
    words_.push_back(lowered(word));
    longest_ = std::max(longest_, word.size());
    if (const std::optional<double> number = parseNumber(word)) numbers_.push_back(*number);
  }
}

bool Missing::operator()(std::string_view cell) const {
  if (cell.empty()) return true;
  if (!numbers_.empty()) {
    const std::optional<double> number = parseNumber(cell);
    if (number) return holds(*number);
  }
  if (cell.size() > longest_) return false;
  return std::any_of(words_.begin(), words_.end(), [cell](const std::string& word) {
    return word.size() == cell.size() &&
           std::equal(cell.begin(), cell.end(), word.begin(),
                      [](char c, char lower) { return lowered(c) == lower; });
  });
}

bool Missing::holds(double number) const {
  return std::find(numbers_.begin(), numbers_.end(), number) != numbers_.end();
}

}  // namespace survmeth::frame
