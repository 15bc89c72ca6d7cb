#include "frame/labels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <optional>
#include <unordered_map>
#include <utility>

#include "numerics/bits.h"
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

}  // namespace

Labels labelsByFirstUse(const Column& numbers) {
  // Few numbers make up most columns of labels: the last one of each hash is looked at before the
  // map is.
  constexpr unsigned kBits = 6;
  struct Recent {
    std::uint64_t bits = 0;
    std::uint32_t code = Column::kMissing;
  };
  std::array<Recent, 1u << kBits> recent;
  std::unordered_map<std::uint64_t, std::uint32_t> known;
  Labels made;
  made.codes.resize(numbers.numbers.size());
  for (std::size_t row = 0; row < made.codes.size(); ++row) {
    const double value = numbers.numbers[row] + 0.0;
    if (std::isnan(value)) {
      made.codes[row] = Column::kMissing;
      continue;
    }
    const auto bits = numerics::bitCast<std::uint64_t>(value);
    Recent& last = recent[bits * 0x9E3779B97F4A7C15u >> (64 - kBits)];
    if (last.bits != bits || last.code == Column::kMissing) {
      const auto count = static_cast<std::uint32_t>(made.labels.size());
      const auto [place, isNew] = known.try_emplace(bits, count);
      if (isNew) made.labels.push_back(text::exact(value));
      last = {bits, place->second};
    }
    made.codes[row] = last.code;
  }
  return made;
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
