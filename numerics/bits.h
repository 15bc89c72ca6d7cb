// The bits of a value as those of another type. What std::bit_cast does, which the standard library
// of some C++20 compilers lacks (Emscripten's of Debian 12).
#ifndef NUMERICS_BITS_H_
#define NUMERICS_BITS_H_

#include <type_traits>

namespace survmeth::numerics {

template <class To, class From>
constexpr To bitCast(const From& from) noexcept {
  static_assert(sizeof(To) == sizeof(From) && std::is_trivially_copyable_v<To> &&
                std::is_trivially_copyable_v<From>);
  return __builtin_bit_cast(To, from);
}

}  // namespace survmeth::numerics

#endif  // NUMERICS_BITS_H_
