// Keeps the arrays of a call apart that a caller passed for several arguments.
#ifndef SURVIVAL_EXPORTS_APART_H_
#define SURVIVAL_EXPORTS_APART_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <memory>
#include <vector>

namespace survival {

// The elements of a matrix; none where a count is negative, also where both are.
inline long long cells(long long rows, long long columns) {
  return rows > 0 && columns > 0 ? rows * columns : 0;
}

// One array of a call: the wrapper's pointer to it, its extent, and what the call does with it.
class Argument {
 public:
  enum class Use {
    read,     // looked at only
    echoed,   // looked at only, yet given back, as it came
    written,  // given back
    set       // a single result, set while the routine runs and so before any array is given back
  };

  template <typename T>
  Argument(Use use, T*& home, long long count)
      : use_(use),
        home_(home),
        bytes_(home != nullptr && count > 0 && count <= kMostElements
                   ? static_cast<std::size_t>(count) * sizeof(T)
                   : 0),
        slot_(&home),
        assign_([](void* slot, void* to) { *static_cast<T**>(slot) = static_cast<T*>(to); }) {}

  Use use() const { return use_; }
  void* home() const { return home_; }
  std::size_t bytes() const { return bytes_; }
  std::uintptr_t begin() const { return reinterpret_cast<std::uintptr_t>(home_); }
  std::uintptr_t end() const { return begin() + bytes_; }
  bool changes() const { return use_ == Use::written || use_ == Use::set; }
  void moveTo(void* place) const { assign_(slot_, place); }

 private:
  // A matrix holds no more: with more elements, or with more than can be addressed, the call fails
  // when it makes its own.
  static constexpr long long kMostElements =
      std::min<unsigned long long>(std::numeric_limits<int>::max(), SIZE_MAX / 16);

  Use use_;
  void* home_;
  std::size_t bytes_;
  void* slot_;
  void (*assign_)(void* slot, void* to);
};

template <typename T>
Argument reads(T*& home, long long count = 1) {
  return Argument(Argument::Use::read, home, count);
}
template <typename T>
Argument echoes(T*& home, long long count) {
  return Argument(Argument::Use::echoed, home, count);
}
template <typename T>
Argument writes(T*& home, long long count) {
  return Argument(Argument::Use::written, home, count);
}
template <typename T>
Argument sets(T*& home) {
  return Argument(Argument::Use::set, home, 1);
}

// Arrays that lie upon one another, one of them written, would show each other's results while the
// routine runs. Their pointers are turned to copies, and giveBack brings those home: the results
// are those of copying every array in and back, and a call whose arrays lie apart, as nearly all
// do, costs nothing more. Arguments are listed in the order in which they are given back.
class Apart {
 public:
  Apart(std::initializer_list<Argument> arguments);

  // After every other copy has gone back.
  void giveBack() const;

 private:
  struct Copy {
    Argument argument;
    std::size_t offset;
  };
  std::vector<Copy> copies_;
  std::unique_ptr<std::byte[]> memory_;
};

}  // namespace survival

#endif  // SURVIVAL_EXPORTS_APART_H_
