#include "tests/fuzz/fuzz.h"

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>

namespace survmeth::fuzz {
namespace {

constexpr double kMarker = 1.79769313486231e308;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Numbers at which routines branch, overflow or lose everything.
constexpr double kSpecial[] = {0.0,
                               -0.0,
                               1.0,
                               -1.0,
                               0.5,
                               0.25,
                               kNaN,
                               -kNaN,
                               kInfinity,
                               -kInfinity,
                               kMarker,
                               -kMarker,
                               DBL_MAX,
                               -DBL_MAX,
                               DBL_MIN,
                               5e-324,
                               -5e-324,
                               1e-320,
                               DBL_EPSILON,
                               1e-12,
                               1e-11,
                               1e-300,
                               1e300,
                               -1e300,
                               2147483647.0,
                               2147483648.0,
                               -2147483648.0,
                               -2147483649.0,
                               4294967296.0,
                               4294967297.0,
                               1073741824.0,
                               134217727.0,
                               1e10,
                               1e16,
                               -1e16,
                               9007199254740993.0,
                               700.0,
                               -700.0,
                               709.8,
                               -745.2,
                               1e154,
                               1e-154,
                               2.0,
                               3.0,
                               1.0000000000000002,
                               0.9999999999999999};

constexpr int kSpecialInts[] = {INT_MAX, INT_MIN, INT_MAX - 1, INT_MIN + 1, 1 << 30,
                                1 << 16, -1,      0,           65535,       1000000};

constexpr double kFills[] = {0, 0, 0, 77, kNaN, -kMarker, kInfinity, -1};
constexpr int kIntFills[] = {0, 0, 0, 77, INT_MIN, INT_MAX, -1, 1};

}  // namespace

int Input::integer(int low, int high) {
  const unsigned b = byte();
  if (b >= 250) return kSpecialInts[byte() % std::size(kSpecialInts)];
  return low - 1 + static_cast<int>(b % static_cast<unsigned>(high - low + 3));
}

short Input::flag() {
  constexpr short kFlags[] = {-1, 0, -1, 0, 1, 2, -2, SHRT_MAX, SHRT_MIN};
  return kFlags[byte() % std::size(kFlags)];
}

int Input::limit() {
  const unsigned b = byte();
  if (b < 240) return static_cast<int>(b % 24) + 1;
  constexpr int kLimits[] = {0, -1, INT_MIN, 60, 200, 1200};
  return kLimits[b % std::size(kLimits)];
}

double Input::number() {
  const unsigned b = byte();
  if (b < 64) return static_cast<int>(b) - 8;
  if (b < 128) return (b - 64) / 16.0;
  if (b < 200) return kSpecial[(b - 128) % std::size(kSpecial)];
  if (b < 230) return (static_cast<int>(byte() + 256 * byte()) - 32768) / 100.0;
  std::uint64_t bits = 0;
  for (int i = 0; i < 8; ++i) bits = bits << 8 | byte();
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

double Input::alpha() {
  constexpr double kAlphas[] = {0.05, 0.01, 0.1, 0.5};
  const unsigned b = byte();
  return b < 160 ? kAlphas[b % std::size(kAlphas)] : number();
}

double Input::tolerance() {
  constexpr double kTolerances[] = {1e-9, 1e-6, 1e-3, 1e-12};
  constexpr double kOdd[] = {0.0, -1.0, kNaN, kInfinity, 5e-324};
  const unsigned b = byte();
  if (b < 160) return kTolerances[b % std::size(kTolerances)];
  return b < 224 ? kOdd[b % std::size(kOdd)] : number();
}

double Input::likely(std::minstd_rand& random, Likely kind, bool coarse) {
  const auto whole = [&random](unsigned values) { return static_cast<double>(random() % values); };
  const auto fraction = [&random] { return static_cast<double>(random()) / 2147483647.0; };
  switch (kind) {
    case Likely::kTimes:
    case Likely::kSorted:
      return coarse ? whole(12) : 10 * fraction();
    case Likely::kStatus:
      return whole(2);
    case Likely::kCodes:
      return whole(4);
    case Likely::kGroups:
      return 1 + whole(3);
    case Likely::kReal:
      return coarse ? whole(5) - 2 : 2 * fraction() - 1;
    case Likely::kOnes:
      return coarse ? 1 + whole(3) : 1;
    case Likely::kProbabilities:
      return fraction();
  }
  return 0;
}

std::vector<double> Input::column(int n, Likely kind) {
  const unsigned style = byte();
  std::vector<double> values(static_cast<std::size_t>(std::max(n, 0)));
  if (style >= 216) {
    for (double& value : values) value = number();
    return values;
  }
  std::minstd_rand random(byte() + 1);
  for (double& value : values) value = likely(random, kind, style % 2 != 0);
  if (kind == Likely::kSorted) std::sort(values.begin(), values.end());
  if (style >= 128) poke(values);
  return values;
}

std::vector<double> Input::sizes(int parts, int n) {
  std::vector<double> values(static_cast<std::size_t>(std::max(parts, 1)));
  const int share = std::max(n, 0) / static_cast<int>(values.size());
  for (double& value : values) value = share;
  values[0] += std::max(n, 0) - share * static_cast<int>(values.size());
  const unsigned style = byte();
  if (style >= 224) {
    for (double& value : values) value = number();
  } else if (style >= 128) {
    poke(values);
  }
  return values;
}

std::vector<int> Input::integers(int n, int low, int high) {
  std::vector<int> values(static_cast<std::size_t>(std::max(n, 0)));
  const unsigned style = byte();
  std::minstd_rand random(byte() + 1);
  for (int& value : values) {
    value = style >= 192 ? integer(low, high)
                         : low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
  }
  if (style >= 128 && style < 192) poke(values);
  return values;
}

void Input::poke(std::vector<double>& values) {
  if (values.empty()) return;
  for (unsigned left = byte() % 4; left > 0; --left) {
    const std::size_t place = (byte() * 256 + byte()) % values.size();
    values[place] = number();
  }
}

void Input::poke(std::vector<int>& values) {
  if (values.empty()) return;
  for (unsigned left = byte() % 4; left > 0; --left) {
    const std::size_t place = (byte() * 256 + byte()) % values.size();
    values[place] = integer(-2, 40);
  }
}

template <class T>
T* Arrays::add(const std::vector<T>& values, bool onlyRead, bool compared) {
  const std::size_t size = values.size() * sizeof(T);
  Block block{std::unique_ptr<unsigned char[]>(new unsigned char[size]),
              std::vector<unsigned char>(size), onlyRead, compared};
  if (size > 0) {
    std::memcpy(block.bytes.get(), values.data(), size);
    std::memcpy(block.before.data(), values.data(), size);
  }
  blocks_.push_back(std::move(block));
  return reinterpret_cast<T*>(blocks_.back().bytes.get());
}

double* Arrays::out(long long count) {
  const auto size = static_cast<std::size_t>(std::max(count, 0LL));
  return add(std::vector<double>(size, kFills[fill_ % std::size(kFills)]), false);
}

int* Arrays::outInts(long long count) {
  const auto size = static_cast<std::size_t>(std::max(count, 0LL));
  return add(std::vector<int>(size, kIntFills[fill_ % std::size(kIntFills)]), false);
}

wchar_t* Arrays::text(const std::wstring& value) {
  std::vector<wchar_t> characters(value.begin(), value.end());
  characters.push_back(L'\0');
  return add(characters, true);
}

wchar_t** Arrays::strings(const std::vector<std::wstring>& values) {
  std::vector<wchar_t*> pointers;
  pointers.reserve(values.size());
  for (const std::wstring& value : values) pointers.push_back(text(value));
  return add(pointers, true, false);
}

bool Arrays::same(const Arrays& other) const {
  if (blocks_.size() != other.blocks_.size()) return false;
  for (std::size_t i = 0; i < blocks_.size(); ++i) {
    const Block &a = blocks_[i], &b = other.blocks_[i];
    if (a.before.size() != b.before.size()) return false;
    if (a.compared && !std::equal(a.bytes.get(), a.bytes.get() + a.before.size(), b.bytes.get())) {
      return false;
    }
  }
  return true;
}

bool Arrays::unchanged(bool all) const {
  return std::all_of(blocks_.begin(), blocks_.end(), [all](const Block& block) {
    return !(all || block.onlyRead) ||
           std::equal(block.before.begin(), block.before.end(), block.bytes.get());
  });
}

namespace {

// One entry point called once, with arguments out of the bytes.
class Once {
 public:
  Once(const std::uint8_t* data, std::size_t size)
      : input_(data, size),
        prepare_(kEntries[input_.byte() % kEntries.size()]),
        arrays_(input_.byte()),
        call_(prepare_(input_, arrays_)) {}

  bool fits() const { return call_ != nullptr; }
  Outcome run() { return call_(); }
  const Arrays& arrays() const { return arrays_; }

 private:
  Input input_;
  Prepare prepare_;
  Arrays arrays_;
  Call call_;
};

}  // namespace
}  // namespace survmeth::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using survmeth::fuzz::require;
  survmeth::fuzz::Once first(data, size);
  if (!first.fits()) return 0;
  survmeth::fuzz::Once second(data, size);
  const survmeth::fuzz::Outcome one = first.run();
  const survmeth::fuzz::Outcome two = second.run();
  require(one.code == two.code, "the same code for the same arguments");
  require(first.arrays().same(second.arrays()), "the same bits for the same arguments");
  require(first.arrays().unchanged(one.refused),
          one.refused ? "a refusal touches no array" : "what is only read stays");
  return 0;
}
