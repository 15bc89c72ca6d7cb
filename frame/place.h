// Data that cannot be read, in one sentence with its place.
#ifndef FRAME_PLACE_H_
#define FRAME_PLACE_H_

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace survmeth::frame {

// A place in a file. Leave out what is not known: line 0, an empty column.
struct Place {
  std::string_view source;
  std::size_t line = 0;
  std::string_view column;
};

// "source, line 12, column "weeks": what; expected expected", without the parts that are empty.
std::string placed(const Place& place, std::string_view what, std::string_view expected = "");

// what() is such a sentence.
class Unreadable : public std::runtime_error {
 public:
  explicit Unreadable(const std::string& sentence) : std::runtime_error(sentence) {}
  Unreadable(const Place& place, std::string_view what, std::string_view expected = "")
      : std::runtime_error(placed(place, what, expected)) {}
};

}  // namespace survmeth::frame

#endif  // FRAME_PLACE_H_
