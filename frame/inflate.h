// Files packed by gzip.
#ifndef FRAME_INFLATE_H_
#define FRAME_INFLATE_H_

#include <memory>
#include <string_view>

#include "frame/bytes.h"

namespace survmeth::frame {

// Whether a file that begins so is one.
bool isGzip(std::string_view start);

// What `packed` holds, one member after the other; zeros behind the last are no part of it.
// Throws Damage: damaged or truncated data, and where the program was built without zlib.
std::unique_ptr<Bytes> inflated(std::unique_ptr<Bytes> packed);

}  // namespace survmeth::frame

#endif  // FRAME_INFLATE_H_
