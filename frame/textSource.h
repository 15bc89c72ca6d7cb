// The text of a file in blocks of UTF-8, whatever it is packed and encoded in. Bytes of a file that
// does not say its encoding are passed on as they are: see CellEncoding.
#ifndef FRAME_TEXTSOURCE_H_
#define FRAME_TEXTSOURCE_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/bytes.h"
#include "frame/encoding.h"

namespace survmeth::frame {

class TextSource {
 public:
  explicit TextSource(std::unique_ptr<Bytes> bytes) : bytes_(std::move(bytes)) {}

  // The next block, which stands until the next call; empty at the end. Throws Damage.
  std::string_view next();

  // How many bytes of the file itself are read.
  std::uint64_t done() const { return bytes_->done(); }
  bool saysUtf8() const { return start_.encoding != Encoding::kUnmarked; }
  std::optional<Remark> remark() const;

 private:
  std::string_view begin();
  std::string_view decoded(std::string_view block);

  std::unique_ptr<Bytes> bytes_;
  bool begun_ = false;
  Start start_;
  std::optional<Utf16Decoder> utf16_;
  std::string text_;
};

}  // namespace survmeth::frame

#endif  // FRAME_TEXTSOURCE_H_
