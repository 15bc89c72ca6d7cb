// Which cells hold no value.
#ifndef FRAME_MISSING_H_
#define FRAME_MISSING_H_

#include <string>
#include <string_view>
#include <vector>

namespace survmeth::frame {

// An empty cell, and one that holds any of a list of words: without regard to case, and a number
// in any spelling. docs/data.md has the list for people.
class Missing {
 public:
  // NA, N/A, NaN, null and .
  Missing();
  // These words instead; an empty cell is missing all the same.
  explicit Missing(std::vector<std::string> words);

  bool operator()(std::string_view cell) const;

  // Whether a number is one of the words: for numbers in other spellings than the program's own.
  bool holds(double number) const;

 private:
  std::vector<std::string> words_;  // in lower case
  std::vector<double> numbers_;
  std::size_t longest_ = 0;
};

}  // namespace survmeth::frame

#endif  // FRAME_MISSING_H_
