// What the fuzz targets share: bytes read as the arguments of a call, and arrays of exactly the
// sizes that the call asks for.
//
// A target lists its family's entry points; the driver in fuzz.cpp picks one by the first byte,
// builds its arguments twice, makes both calls and compares what they leave.
#ifndef TESTS_FUZZ_FUZZ_H_
#define TESTS_FUZZ_FUZZ_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/fuzz/require.h"

namespace survmeth::fuzz {

// What a column usually holds; any element may be anything all the same.
enum class Likely { kTimes, kSorted, kStatus, kCodes, kGroups, kReal, kOnes, kProbabilities };

// Arguments out of the bytes, which read as 0 past their end.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  unsigned byte() { return next_ < size_ ? data_[next_++] : 0; }

  int count(int most) { return static_cast<int>(byte() % static_cast<unsigned>(most + 4)) - 3; }
  // Mostly a value near low..high, now and then the ends of int.
  int integer(int low, int high);
  short flag();
  // Of iterations.
  int limit();
  double number();
  double alpha();
  double tolerance();

  std::vector<double> column(int n, Likely kind);
  // Sizes of `parts` ranges that mostly share n rows.
  std::vector<double> sizes(int parts, int n);
  std::vector<int> integers(int n, int low, int high);
  // Replaces a few elements, or none.
  void poke(std::vector<double>& values);
  void poke(std::vector<int>& values);

 private:
  double likely(std::minstd_rand& random, Likely kind, bool coarse);

  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t next_ = 0;
};

// The arrays of one call, each a heap block of its own with no element to spare.
class Arrays {
 public:
  explicit Arrays(unsigned fill) : fill_(fill) {}

  // What the call only reads.
  double* in(const std::vector<double>& values) { return add(values, true); }
  int* in(const std::vector<int>& values) { return add(values, true); }
  // What it may write.
  double* inOut(const std::vector<double>& values) { return add(values, false); }
  int* inOut(const std::vector<int>& values) { return add(values, false); }
  // Outputs: a count below 0 is an array of no element.
  double* out(long long count = 1);
  int* outInts(long long count = 1);
  // Zero-terminated strings, and the array of them.
  wchar_t** strings(const std::vector<std::wstring>& values);
  wchar_t* text(const std::wstring& value);

  // Bit for bit.
  bool same(const Arrays& other) const;
  // What is only read holds what it held, with `all` everything.
  bool unchanged(bool all) const;

 private:
  struct Block {
    std::unique_ptr<unsigned char[]> bytes;
    std::vector<unsigned char> before;
    bool onlyRead;
    bool compared;  // not so pointers, which differ between two copies
  };
  template <class T>
  T* add(const std::vector<T>& values, bool onlyRead, bool compared = true);

  std::vector<Block> blocks_;
  unsigned fill_;
};

struct Outcome {
  int code = 0;
  bool refused = false;  // the contract promises that no array was touched
};

// Puts the arguments into the arrays; the result makes the call. An empty one: no call, because
// the arrays would be too large.
using Call = std::function<Outcome()>;
using Prepare = Call (*)(Input&, Arrays&);

// The family's entry points, one or more for each wrapper; each target defines it.
extern const std::vector<Prepare> kEntries;

// The code of a call, which has to be one of those that the contract lists.
inline Outcome coded(int code, std::initializer_list<int> listed,
                     std::initializer_list<int> refusals = {}) {
  const auto holds = [code](const std::initializer_list<int>& list) {
    for (const int one : list) {
      if (one == code) return true;
    }
    return false;
  };
  const bool refused = holds(refusals);
  require(refused || holds(listed), "a code of the list");
  return {code, refused};
}

// Iterations that a fit reports, of a limit where 0 or less stands for 1000.
inline void requireWithin(int iterations, int limit) {
  require(iterations <= (limit > 0 ? limit : 1000), "iterations within their limit");
}

}  // namespace survmeth::fuzz

#endif  // TESTS_FUZZ_FUZZ_H_
