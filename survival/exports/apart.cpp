// Finds the arguments that share memory and moves them apart.
#include "survival/exports/apart.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace survival {
namespace {

constexpr std::size_t kMostArguments = 64;
constexpr std::size_t kAlignment = alignof(std::max_align_t);

using Pointers = std::array<const Argument*, kMostArguments>;

// Puts the arguments that lie upon others, one of which is written, to the front, and returns how
// many they are. `arguments` come in ascending order of address.
std::size_t keepShared(Pointers& arguments, std::size_t count) {
  std::size_t kept = 0;
  for (std::size_t first = 0; first < count;) {
    std::uintptr_t end = arguments[first]->end();
    bool changes = arguments[first]->changes();
    std::size_t next = first + 1;
    for (; next < count && arguments[next]->begin() < end; ++next) {
      end = std::max(end, arguments[next]->end());
      changes = changes || arguments[next]->changes();
    }
    if (changes && next - first > 1) {
      for (; first < next; ++first) arguments[kept++] = arguments[first];
    }
    first = next;
  }
  return kept;
}

}  // namespace

Apart::Apart(std::initializer_list<Argument> arguments) {
  Pointers shared;
  std::size_t count = 0;
  for (const Argument& argument : arguments) {
    if (argument.bytes() > 0) shared.at(count++) = &argument;
  }
  const auto end = [&] { return shared.begin() + static_cast<std::ptrdiff_t>(count); };
  std::sort(shared.begin(), end(),
            [](const Argument* a, const Argument* b) { return a->begin() < b->begin(); });
  count = keepShared(shared, count);
  if (count == 0) return;

  std::sort(shared.begin(), end());  // in the order of the list again
  std::size_t bytes = 0;
  copies_.reserve(count);
  for (auto argument = shared.begin(); argument != end(); ++argument) {
    copies_.push_back({**argument, bytes});
    bytes += ((*argument)->bytes() + kAlignment - 1) / kAlignment * kAlignment;
  }
  memory_.reset(new std::byte[bytes]);
  for (const Copy& copy : copies_) {
    std::byte* place = memory_.get() + copy.offset;
    std::memcpy(place, copy.argument.home(), copy.argument.bytes());
    copy.argument.moveTo(place);
  }
}

void Apart::giveBack() const {
  using Use = Argument::Use;
  const auto give = [this](const auto& chosen) {
    for (const Copy& copy : copies_) {
      if (!chosen(copy.argument.use())) continue;
      std::memcpy(copy.argument.home(), memory_.get() + copy.offset, copy.argument.bytes());
    }
  };
  give([](Use use) { return use == Use::set; });
  give([](Use use) { return use == Use::echoed || use == Use::written; });
}

}  // namespace survival
