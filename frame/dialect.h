// What parts the cells of a text and how its numbers are written, by its header and first rows.
#ifndef FRAME_DIALECT_H_
#define FRAME_DIALECT_H_

#include <optional>
#include <string>
#include <string_view>

#include "frame/frame.h"
#include "frame/numeral.h"
#include "frame/reading.h"
#include "frame/wanted.h"

namespace survmeth::frame {

struct Dialect {
  char delimiter = ',';
  NumberStyle numbers;
  // A decimal comma that nobody named, and the separator beside it, in words; else empty.
  std::string found;
  std::optional<Remark> remark;  // where the header could be parted in another way
};

// In   start   the first block of the text
//      choose  the columns whose cells say how numbers are written, where they may be numbers
// The delimiter is tab, comma or semicolon: of those that give the first 50 rows as many cells as
// the header the commonest in the header, else the commonest there. The decimal mark is a comma
// where cells of the block are numbers with it only and none with a point only, or where a comma
// that might be either stands between semicolons; else it is a point.
Dialect dialectOf(std::string_view start, const Choose& choose, const Reading& reading);

}  // namespace survmeth::frame

#endif  // FRAME_DIALECT_H_
