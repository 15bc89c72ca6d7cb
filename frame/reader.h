// Reading of tables: CSV, TSV and semicolon-separated text with a header line, quoted cells (also
// with line ends inside), LF or CRLF, with or without a byte-order mark, UTF-8. "-" is standard
// input. The separator is the commonest of tab, comma and semicolon in the header line.
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
#include <vector>

#include "frame/frame.h"
#include "frame/missing.h"
#include "frame/wanted.h"

namespace survmeth::frame {

// Told how many bytes of how many are read; 0 of them where the size is not known. May throw.
using ReadProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

// The wanted columns of `file`, in their order; the same one may be wanted more than once. A file
// with a header and no rows, or with no complete row, gives a frame of 0 rows.
// Throws Unreadable: whatever is wrong with the file, with line, column and what was expected.
// Cost one pass, no string per cell; labels of a text column are held once each
Frame readFrame(const std::string& file, const std::vector<Wanted>& wanted,
                const Missing& missing = Missing(), const ReadProgress& progress = {});

// The same where what is wanted depends on the columns that there are.
using Choose = std::function<std::vector<Wanted>(const std::vector<std::string>& header)>;
Frame readFrame(const std::string& file, const Choose& choose, const Missing& missing = Missing(),
                const ReadProgress& progress = {});

}  // namespace survmeth::frame

#endif  // FRAME_READER_H_
