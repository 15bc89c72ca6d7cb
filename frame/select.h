// Some rows of a frame as a frame of their own.
#ifndef FRAME_SELECT_H_
#define FRAME_SELECT_H_

#include <cstdint>
#include <span>

#include "frame/frame.h"

namespace survmeth::frame {

// In   rows   ascending for a choice of rows; any order and repetitions for resampling. Lines are
//             kept where they ascend, else rows of the result have none.
// Cost O(rows x columns); levels are kept as they are, also those that no row holds any more
Frame selectRows(const Frame& data, std::span<const std::uint32_t> rows);

}  // namespace survmeth::frame

#endif  // FRAME_SELECT_H_
