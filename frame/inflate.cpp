#include "frame/inflate.h"

#ifdef SURVMETH_ZLIB
#include <zlib.h>

#include <new>
#include <vector>
#endif

#include <utility>

namespace survmeth::frame {

bool isGzip(std::string_view start) { return start.starts_with("\x1F\x8B"); }

#ifdef SURVMETH_ZLIB
namespace {

constexpr int kGzipOnly = 15 + 16;  // the largest window, and gzip's header and check

class Inflated : public Bytes {
 public:
  explicit Inflated(std::unique_ptr<Bytes> packed) : packed_(std::move(packed)), buffer_(kBlock) {
    if (inflateInit2(&stream_, kGzipOnly) != Z_OK) throw std::bad_alloc();
  }
  ~Inflated() override { inflateEnd(&stream_); }

  std::uint64_t done() const override { return packed_->done(); }

  // A full block where the text goes on. What comes before a fault is given first, so that the
  // fault stands in its line.
  std::string_view next() override {
    stream_.next_out = reinterpret_cast<Bytef*>(buffer_.data());
    stream_.avail_out = static_cast<uInt>(buffer_.size());
    while (stream_.avail_out > 0 && fault_ == nullptr && !atEnd_) advance();
    const std::size_t count = buffer_.size() - stream_.avail_out;
    if (count == 0 && fault_ != nullptr) throw Damage(fault_, "a whole gzip file");
    return {buffer_.data(), count};
  }

 private:
  void advance() {
    if (stream_.avail_in == 0 && !refill()) {
      if (inMember_) {
        fault_ = "the gzip data break off";
      } else {
        atEnd_ = true;
      }
      return;
    }
    if (!inMember_) {
      beginMember();
      return;
    }
    const int state = inflate(&stream_, Z_NO_FLUSH);
    if (state == Z_MEM_ERROR) throw std::bad_alloc();
    if (state == Z_STREAM_END) {
      inMember_ = false;
    } else if (state != Z_OK && state != Z_BUF_ERROR) {
      fault_ = "the gzip data are damaged";
    }
  }

  // Behind a member: another one, zeros up to the end, or what does not belong there.
  void beginMember() {
    if (*stream_.next_in == 0) {
      zeros_ = true;
      ++stream_.next_in, --stream_.avail_in;
    } else if (zeros_ || *stream_.next_in != 0x1F) {
      fault_ = "the gzip data are followed by something else";
    } else {
      inflateReset(&stream_);
      inMember_ = true;
    }
  }

  bool refill() {
    const std::string_view block = packed_->next();
    // zlib does not write there; its type predates const.
    stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(block.data()));
    stream_.avail_in = static_cast<uInt>(block.size());
    return !block.empty();
  }

  std::unique_ptr<Bytes> packed_;
  z_stream stream_{};
  std::vector<char> buffer_;
  bool inMember_ = true, atEnd_ = false, zeros_ = false;
  const char* fault_ = nullptr;
};

}  // namespace

std::unique_ptr<Bytes> inflated(std::unique_ptr<Bytes> packed) {
  return std::make_unique<Inflated>(std::move(packed));
}
#else
std::unique_ptr<Bytes> inflated(std::unique_ptr<Bytes>) {
  throw Damage("the file is packed by gzip, and this program was built without zlib",
               "the file unpacked");
}
#endif

}  // namespace survmeth::frame
