// Reading of tables: CSV, TSV and semicolon-separated text with a header line, quoted cells (also
// with line ends inside), LF or CRLF; UTF-8, UTF-16 or Windows-1252, plain or packed by gzip. "-" is
// standard input. docs/data.md says what a file may hold and how it is understood.
//
// A reader says which columns it wants and gets those only, without the rows in which one of them
// is missing (missing.h):
//
//     Frame data = readFrame(file, {{.name = "weeks", .cells = Cells::kNumbers, .least = 0},
//                                   {.name = "arm", .cells = Cells::kText}});
#ifndef FRAME_READER_H_
#define FRAME_READER_H_

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/frame.h"
#include "frame/reading.h"
#include "frame/wanted.h"

namespace survmeth::frame {

// Told how many bytes of how many are read; 0 of them where the size is not known. May throw.
using ReadProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

// The wanted columns of `file`, in their order; the same one may be wanted more than once. A file
// with a header and no rows, or with no complete row, gives a frame of 0 rows.
// Throws Unreadable: whatever is wrong with the file, with line, column and what was expected;
// ExpressionError: whatever is wrong with the condition of `reading`.
// Cost one pass, no string per cell; labels of a text column are held once each. With a condition
// all rows are held until those that meet it are known.
Frame readFrame(const std::string& file, const std::vector<Wanted>& wanted,
                const Reading& reading = {}, const ReadProgress& progress = {});

// The same where what is wanted depends on the columns that there are.
Frame readFrame(const std::string& file, const Choose& choose, const Reading& reading = {},
                const ReadProgress& progress = {});

// The same from memory, where `source` names the data in messages.
Frame readText(std::string_view bytes, const std::string& source, const Choose& choose,
               const Reading& reading = {});

}  // namespace survmeth::frame

#endif  // FRAME_READER_H_
