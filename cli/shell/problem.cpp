#include "cli/shell/problem.h"

namespace cli {

Problem problemAt(const Place& place, std::string_view what, std::string_view expected) {
  return Problem(survmeth::frame::placed(place, what, expected));
}

}  // namespace cli
