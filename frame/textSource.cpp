#include "frame/textSource.h"

#include <utility>

#include "frame/inflate.h"

namespace survmeth::frame {
namespace {

// Bytes of which the first block was looked at already.
class Resumed : public Bytes {
 public:
  Resumed(std::string_view first, std::unique_ptr<Bytes> rest)
      : first_(first), rest_(std::move(rest)) {}
  std::string_view next() override {
    if (!first_.empty()) return std::exchange(first_, {});
    return rest_->next();
  }
  std::uint64_t done() const override { return rest_->done(); }

 private:
  std::string_view first_;
  std::unique_ptr<Bytes> rest_;
};

}  // namespace

std::string_view TextSource::begin() {
  std::string_view block = bytes_->next();
  if (isGzip(block)) {
    bytes_ = inflated(std::make_unique<Resumed>(block, std::move(bytes_)));
    block = bytes_->next();
  }
  start_ = startOf(block);
  block.remove_prefix(start_.mark);
  if (start_.encoding == Encoding::kUtf16Little || start_.encoding == Encoding::kUtf16Big) {
    utf16_.emplace(start_.encoding == Encoding::kUtf16Big);
  }
  return block.empty() ? bytes_->next() : block;
}

std::string_view TextSource::next() {
  const std::string_view block = std::exchange(begun_, true) ? bytes_->next() : begin();
  return utf16_ ? decoded(block) : block;
}

// A block may hold half a character only.
std::string_view TextSource::decoded(std::string_view block) {
  text_.clear();
  for (; !block.empty(); block = bytes_->next()) {
    utf16_->decode(block, text_);
    if (!text_.empty()) return text_;
  }
  utf16_->finish();
  return {};
}

std::optional<Remark> TextSource::remark() const {
  if (!utf16_) return std::nullopt;
  return Remark{"encoding",
                std::string("the file is read as UTF-16") +
                    (start_.isGuess ? ", though it has no byte-order mark" : ""),
                {}};
}

}  // namespace survmeth::frame
