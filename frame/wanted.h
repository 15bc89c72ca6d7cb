// What an analysis asks of its data: which columns, and what their cells are to be.
#ifndef FRAME_WANTED_H_
#define FRAME_WANTED_H_

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace survmeth::frame {

enum class Cells {
  kNumbers,  // a cell that is neither a number nor missing is refused
  kText,     // labels, also where they look like numbers
  kEither,   // numbers where every cell is one, labels where none is; a mixture is refused
  kAny,      // numbers where every cell is one, else labels
};

// Numbers may be dates (2024-03-01) throughout; they are days since 1970-01-01.
// Rows in which a wanted column is missing are left out, unless it may be missing.
struct Wanted {
  std::string name;
  Cells cells = Cells::kNumbers;
  double least = -std::numeric_limits<double>::infinity();  // smaller numbers are refused
  bool mayBeMissing = false;                                // a missing cell keeps its row
  std::vector<std::string> named = {};  // labels that a person named: never taken for missing
  std::string labelsOption = {};        // kEither: what to say for labels, in messages
};

// What is wanted of the columns that there are.
using Choose = std::function<std::vector<Wanted>(const std::vector<std::string>& header)>;

}  // namespace survmeth::frame

#endif  // FRAME_WANTED_H_
