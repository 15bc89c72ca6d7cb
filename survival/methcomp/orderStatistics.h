// Order statistics of a long list without sorting it.
#ifndef SURVIVAL_METHCOMP_ORDERSTATISTICS_H_
#define SURVIVAL_METHCOMP_ORDERSTATISTICS_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace survival {

// The values at 1-based positions of the list in ascending order, NaN last; a position outside
// the list gives -1, as reading past the end of a sorted vector does. Built in one pass over the
// values; a position then costs the length of the stretch of values that share its leading bits.
class OrderStatistics {
 public:
  explicit OrderStatistics(const std::vector<double>& values);
  double at(long long position) const;

 private:
  const std::vector<double>& values_;
  std::vector<std::uint16_t> stretch_;  // leading bits of each value
  std::vector<std::uint32_t> ends_;     // ends_[k]: how many values have leading bits <= k
};

}  // namespace survival

#endif  // SURVIVAL_METHCOMP_ORDERSTATISTICS_H_
