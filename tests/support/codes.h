// Values of a column as the codes that the engine takes.
#ifndef TESTS_SUPPORT_CODES_H_
#define TESTS_SUPPORT_CODES_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace survmeth::test {

// Codes 0, 1, ... of the values in ascending order.
inline std::vector<std::uint32_t> codesOf(const std::vector<double>& values, std::size_t& count) {
  std::map<double, std::uint32_t> codes;
  for (const double value : values) codes[value] = 0;
  std::uint32_t next = 0;
  for (auto& [value, code] : codes) code = next++;
  count = codes.size();
  std::vector<std::uint32_t> result;
  result.reserve(values.size());
  for (const double value : values) result.push_back(codes[value]);
  return result;
}

}  // namespace survmeth::test

#endif  // TESTS_SUPPORT_CODES_H_
