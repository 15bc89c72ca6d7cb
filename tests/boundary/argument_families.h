// What the files that make the arguments of each family share.
#ifndef TESTS_BOUNDARY_ARGUMENT_FAMILIES_H_
#define TESTS_BOUNDARY_ARGUMENT_FAMILIES_H_

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "tests/boundary/arguments.h"

namespace survmeth::test {

using Reals = std::vector<double>;
using Ints = std::vector<int>;

inline constexpr int n = 12;  // rows

template <typename T>
inline ArrayArgument argument(After after, bool real, const std::vector<T>& values) {
  ArrayArgument result{after, real, std::vector<unsigned char>(values.size() * sizeof(T))};
  std::memcpy(result.bytes.data(), values.data(), result.bytes.size());
  return result;
}
inline ArrayArgument in(const Reals& values) { return argument(After::asBefore, true, values); }
inline ArrayArgument in(const Ints& values) { return argument(After::asBefore, false, values); }
inline ArrayArgument back(const Reals& values) { return argument(After::givenBack, true, values); }
inline ArrayArgument back(const Ints& values) { return argument(After::givenBack, false, values); }
inline ArrayArgument out(int count) { return back(Reals(static_cast<std::size_t>(count), 77.0)); }
inline ArrayArgument outInts(int count) { return back(Ints(static_cast<std::size_t>(count), 77)); }
inline ArrayArgument single() { return argument(After::set, true, Reals{77.0}); }
inline ArrayArgument singleInt(int value = 77) { return argument(After::set, false, Ints{value}); }

inline std::mt19937& source() {
  static std::mt19937 generator(20);
  return generator;
}

inline Reals uniform(int count, double low, double high) {
  Reals values(static_cast<std::size_t>(count));
  for (double& value : values) value = low + (high - low) * (source()() / 4294967296.0);
  return values;
}

inline Reals whole(int count, int low, int high) {
  Reals values(static_cast<std::size_t>(count));
  for (double& value : values) value = low + static_cast<int>(source()() % (high - low + 1));
  return values;
}

inline Reals ascending(Reals values) {
  std::sort(values.begin(), values.end());
  return values;
}

inline Reals binary() {
  Reals values = whole(n, 0, 1);
  values[0] = 1;
  values[1] = 0;
  return values;
}

inline Reals ones() { return Reals(n, 1.0); }

// 1, 1, 2, 2, ...
inline Reals pairs() {
  Reals ids(n);
  for (int i = 0; i < n; ++i) ids[i] = i / 2 + 1;
  return ids;
}

std::vector<EntryPoint> competingAndValidation();
std::vector<EntryPoint> rocAndJudge();
std::vector<EntryPoint> methcomp();

}  // namespace survmeth::test

#endif  // TESTS_BOUNDARY_ARGUMENT_FAMILIES_H_
