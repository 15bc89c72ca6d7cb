#include "frame/bytes.h"

#include <cerrno>
#include <cstring>

#include "frame/place.h"

namespace survmeth::frame {

// Fills the buffer as far as the file goes; a pipe gives less at a time than is asked for.
std::string_view FileBytes::next() {
  if (atEnd_) return {};
  errno = 0;
  const std::size_t count = std::fread(buffer_.data(), 1, buffer_.size(), file_);
  if (std::ferror(file_) != 0) {
    throw Unreadable(source_ + ": cannot be read: " + std::strerror(errno));
  }
  atEnd_ = count < buffer_.size();
  done_ += count;
  return {buffer_.data(), count};
}

std::string_view MemoryBytes::next() {
  const std::string_view block = bytes_.substr(0, block_);
  bytes_.remove_prefix(block.size());
  done_ += block.size();
  return block;
}

}  // namespace survmeth::frame
