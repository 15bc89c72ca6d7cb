#include "frame/labels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>
#include <span>
#include <unordered_map>
#include <utility>

#include "numerics/bits.h"
#include "numerics/hot.h"
#include "text/numbers.h"

namespace survmeth::frame {
namespace {

// The numbers of labels that are all numbers, otherwise nothing.
std::optional<std::vector<double>> numbersOf(const std::vector<std::string>& labels) {
  std::vector<double> numbers;
  for (const std::string& label : labels) {
    const std::optional<double> number = text::parseNumber(label);
    if (!number) return std::nullopt;
    numbers.push_back(*number + 0.0);  // -0 and 0 are one number
  }
  return numbers;
}

// Gives every code its place and counts. Neighbours count apart: an addition that waits for the one
// before, of the same label, takes as long as four.
void placeAndCount(const std::vector<std::uint32_t>& place, Labels& made) {
  std::vector<std::size_t> even(made.labels.size(), 0), odd(made.labels.size(), 0);
  const auto take = [&](std::uint32_t& code, std::vector<std::size_t>& counts) {
    if (code == Column::kMissing) return;
    code = place[code];
    ++counts[code];
  };
  std::size_t i = 0;
  for (; i + 2 <= made.codes.size(); i += 2) {
    take(made.codes[i], even);
    take(made.codes[i + 1], odd);
  }
  if (i < made.codes.size()) take(made.codes[i], even);
  for (std::size_t label = 0; label < odd.size(); ++label) even[label] += odd[label];
  made.counts = std::move(even);
}

// Whether all numbers are one of two; codes[i] is 0 where it is the first, else 1.
SURVMETH_HOT bool codesOfTwo(const double* __restrict numbers, std::size_t n, double first,
                             double second, std::uint32_t* __restrict codes) {
  std::size_t others = 0;
  for (std::size_t i = 0; i < n; ++i) {
    others += numbers[i] == first || numbers[i] == second ? 0u : 1u;
    codes[i] = numbers[i] == first ? 0u : 1u;
  }
  return others == 0;
}

// Numbers, told apart and counted off in the order of first use.
class FirstUse {
 public:
  // Whether all of these are the first two numbers, of which many columns are made.
  bool areTwo(std::span<const double> numbers, std::uint32_t* codes) const {
    return labels_.size() <= firstTwo_.size() &&
           codesOfTwo(numbers.data(), numbers.size(), firstTwo_[0], firstTwo_[1], codes);
  }
  std::uint32_t codeOf(double number) {
    const double value = number + 0.0;  // -0 and 0 are one number
    if (std::isnan(value)) return Column::kMissing;
    const auto bits = numerics::bitCast<std::uint64_t>(value);
    // The last number of each hash is looked at before the map is.
    Recent& last = recent_[bits * 0x9E3779B97F4A7C15u >> (64 - kBits)];
    if (last.bits != bits || last.code == Column::kMissing) last = {bits, codeIn(value, bits)};
    return last.code;
  }
  std::vector<std::string> labels() { return std::move(labels_); }

 private:
  static constexpr unsigned kBits = 6;
  struct Recent {
    std::uint64_t bits = 0;
    std::uint32_t code = Column::kMissing;
  };

  std::uint32_t codeIn(double value, std::uint64_t bits) {
    const std::size_t count = labels_.size();
    const auto [place, isNew] = known_.try_emplace(bits, static_cast<std::uint32_t>(count));
    if (isNew) {
      if (count < firstTwo_.size()) firstTwo_[count] = value;
      labels_.push_back(text::exact(value));
    }
    return place->second;
  }

  std::array<double, 2> firstTwo_{std::numeric_limits<double>::quiet_NaN(),
                                  std::numeric_limits<double>::quiet_NaN()};
  std::array<Recent, 1u << kBits> recent_;
  std::unordered_map<std::uint64_t, std::uint32_t> known_;
  std::vector<std::string> labels_;
};

}  // namespace

Labels labelsByFirstUse(const Column& numbers) {
  constexpr std::size_t kBlock = 1024;
  const std::span<const double> values = numbers.numbers;
  FirstUse known;
  std::vector<std::uint32_t> codes(values.size());
  for (std::size_t begin = 0; begin < values.size(); begin += kBlock) {
    const std::size_t end = std::min(begin + kBlock, values.size());
    if (known.areTwo(values.subspan(begin, end - begin), &codes[begin])) continue;
    for (std::size_t row = begin; row < end; ++row) codes[row] = known.codeOf(values[row]);
  }
  return {known.labels(), std::move(codes), {}};
}

bool sameLabel(std::string_view label, std::string_view value) {
  if (label == value) return true;
  const std::optional<double> a = text::parseNumber(label), b = text::parseNumber(value);
  return a && b && *a == *b;
}

Labels allLabelsOf(const Column& column) {
  std::vector<std::string> spelled;
  Labels made;
  if (column.type == Type::kNumber) {
    Labels byUse = labelsByFirstUse(column);
    spelled = std::move(byUse.labels);
    made.codes = std::move(byUse.codes);
  } else {
    spelled = column.levels;
    made.codes.assign(column.codes.begin(), column.codes.end());
  }
  std::vector<std::size_t> order(spelled.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::optional<std::vector<double>> numbers;
  if (column.type != Type::kFactor) {
    numbers = numbersOf(spelled);
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
      const std::string &left = spelled[a], &right = spelled[b];
      if (!numbers) return left < right;
      if ((*numbers)[a] != (*numbers)[b]) return (*numbers)[a] < (*numbers)[b];
      return left.size() != right.size() ? left.size() < right.size() : left < right;
    });
  }
  std::vector<std::uint32_t> place(spelled.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    const bool merged = numbers && i > 0 && (*numbers)[order[i]] == (*numbers)[order[i - 1]];
    if (!merged) made.labels.push_back(spelled[order[i]]);
    place[order[i]] = static_cast<std::uint32_t>(made.labels.size() - 1);
  }
  placeAndCount(place, made);
  return made;
}

Labels labelsOf(const Column& column) {
  Labels all = allLabelsOf(column);
  Labels made;
  std::vector<std::uint32_t> place(all.labels.size());
  for (std::size_t i = 0; i < all.labels.size(); ++i) {
    place[i] = static_cast<std::uint32_t>(made.labels.size());
    if (all.counts[i] == 0) continue;
    made.labels.push_back(std::move(all.labels[i]));
    made.counts.push_back(all.counts[i]);
  }
  if (made.labels.size() < all.labels.size()) {
    for (std::uint32_t& code : all.codes) code = code == Column::kMissing ? code : place[code];
  }
  made.codes = std::move(all.codes);
  return made;
}

// Pairs are numbered in their order, so the codes stay below the number of rows.
void cross(Labels& made, const Labels& more, const std::string& name) {
  const bool isFirst = made.codes.empty();
  using Pair = std::pair<std::uint32_t, std::uint32_t>;
  std::vector<Pair> pairs;
  pairs.reserve(more.codes.size());
  for (std::size_t i = 0; i < more.codes.size(); ++i) {
    pairs.emplace_back(isFirst ? 0 : made.codes[i], more.codes[i]);
  }
  std::vector<Pair> different = pairs;
  std::sort(different.begin(), different.end());
  different.erase(std::unique(different.begin(), different.end()), different.end());
  Labels crossed;
  for (const auto& [before, label] : different) {
    const std::string start = isFirst ? std::string() : made.labels[before] + ", ";
    crossed.labels.push_back(start + name + "=" + more.labels[label]);
  }
  crossed.counts.assign(different.size(), 0);
  crossed.codes.reserve(pairs.size());
  for (const Pair& pair : pairs) {
    const auto found = std::lower_bound(different.begin(), different.end(), pair);
    crossed.codes.push_back(static_cast<std::uint32_t>(found - different.begin()));
    ++crossed.counts[crossed.codes.back()];
  }
  made = std::move(crossed);
}

Labels crossedLabels(const Frame& data, const std::vector<std::string>& names) {
  Labels made;
  for (const std::string& name : names) cross(made, labelsOf(*data.labels(name)), name);
  return made;
}

}  // namespace survmeth::frame
