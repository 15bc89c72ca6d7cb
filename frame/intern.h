// Labels to small codes. Looking up a label that is already there allocates nothing.
#ifndef FRAME_INTERN_H_
#define FRAME_INTERN_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace survmeth::frame {

class Interner {
 public:
  // The code of `label`, and whether it is new: codes count from 0 in order of first use.
  struct Code {
    std::uint32_t code;
    bool isNew;
  };
  Code operator()(std::string_view label) {
    // Neighbouring rows mostly hold the same label.
    if (last_ != nullptr && last_->first == label) return {last_->second, false};
    const auto found = codes_.find(label);
    if (found != codes_.end()) {
      last_ = &*found;
      return {found->second, false};
    }
    const auto code = static_cast<std::uint32_t>(codes_.size());
    last_ = &*codes_.emplace(std::string(label), code).first;
    return {code, true};
  }

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };
  std::unordered_map<std::string, std::uint32_t, Hash, std::equal_to<>> codes_;
  const std::pair<const std::string, std::uint32_t>* last_ = nullptr;  // nodes stay where they are
};

}  // namespace survmeth::frame

#endif  // FRAME_INTERN_H_
