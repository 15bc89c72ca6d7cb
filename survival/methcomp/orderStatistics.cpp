// Order statistics by a histogram of the leading bits, then selection within one stretch.
#include "survival/methcomp/orderStatistics.h"

#include <algorithm>

#include "Klikro/order.h"

namespace survival {
namespace {

// Sign, exponent and four bits of the fraction: slopes crowd around 1, and this still splits a
// power of two into sixteen stretches, while the table stays in the second-level cache.
constexpr int kLeadingBits = 16;

std::uint16_t stretchOf(double value) {
  return static_cast<std::uint16_t>(klikro::rankOf(value, false) >> (64 - kLeadingBits));
}

}  // namespace

OrderStatistics::OrderStatistics(const std::vector<double>& values)
    : values_(values), stretch_(values.size()), ends_(std::size_t{1} << kLeadingBits, 0) {
  for (std::size_t i = 0; i < values_.size(); ++i) {
    stretch_[i] = stretchOf(values_[i]);
    ++ends_[stretch_[i]];
  }
  std::uint32_t end = 0;
  for (std::uint32_t& count : ends_) count = end += count;
}

double OrderStatistics::at(long long position) const {
  if (position < 1 || position > static_cast<long long>(values_.size())) return -1.0;
  const auto rank = static_cast<std::uint32_t>(position - 1);
  const auto stretch =
      static_cast<std::size_t>(std::upper_bound(ends_.begin(), ends_.end(), rank) - ends_.begin());
  const std::uint32_t start = stretch == 0 ? 0 : ends_[stretch - 1];
  std::vector<double> members;
  members.reserve(ends_[stretch] - start);
  for (std::size_t i = 0; i < values_.size(); ++i) {
    if (stretch_[i] == stretch) members.push_back(values_[i]);
  }
  const auto wanted = members.begin() + static_cast<std::ptrdiff_t>(rank - start);
  std::nth_element(members.begin(), wanted, members.end(), [](double a, double b) {
    return klikro::rankOf(a, false) < klikro::rankOf(b, false);
  });
  return *wanted;
}

}  // namespace survival
