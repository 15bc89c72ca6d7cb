#include "python/arrowCells.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace survmeth::python {
namespace {

bool bit(const std::uint8_t* bits, std::int64_t at) { return (bits[at / 8] >> (at % 8) & 1) != 0; }

// In a day, of the letter of a time's unit.
double unitsOf(char unit) {
  constexpr double kSeconds = 86400;
  switch (unit) {
    case 's':
      return kSeconds;
    case 'm':
      return kSeconds * 1e3;
    case 'u':
      return kSeconds * 1e6;
    default:
      return kSeconds * 1e9;
  }
}

int numberIn(std::string_view text, int fallback) {
  int number = fallback;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

// binary16
double halfOf(std::uint16_t bits) {
  const int exponent = bits >> 10 & 31;
  const int fraction = bits & 1023;
  double size = exponent == 0    ? std::ldexp(fraction, -24)
                : exponent == 31 ? (fraction == 0 ? std::numeric_limits<double>::infinity()
                                                  : std::numeric_limits<double>::quiet_NaN())
                                 : std::ldexp(1024 + fraction, exponent - 25);
  return (bits & 0x8000) != 0 ? -size : size;
}

// The digits of a whole number in two's complement, least words first.
std::string digitsOf(std::vector<std::uint32_t> words) {
  const bool negative = (words.back() >> 31) != 0;
  if (negative) {
    std::uint64_t carry = 1;
    for (std::uint32_t& word : words) {
      carry += static_cast<std::uint32_t>(~word);
      word = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
  }
  std::string digits;
  for (bool more = true; more;) {
    more = false;
    std::uint64_t rest = 0;
    for (std::size_t k = words.size(); k-- > 0;) {
      rest = rest << 32 | words[k];
      words[k] = static_cast<std::uint32_t>(rest / 10);
      rest %= 10;
      more = more || words[k] != 0;
    }
    digits.insert(digits.begin(), static_cast<char>('0' + rest));
  }
  return negative ? "-" + digits : digits;
}

}  // namespace

ArrowKind kindOf(std::string_view format) {
  if (format == "g") return ArrowKind::kDouble;
  if (format == "b") return ArrowKind::kTruth;
  if (format == "n") return ArrowKind::kNothing;
  if (format.size() == 1 && std::string_view("cCsSiIlL").find(format) != std::string_view::npos) {
    return ArrowKind::kWhole;
  }
  if (format == "e" || format == "f" || format.starts_with("d:") || format.starts_with("td") ||
      format.starts_with("ts") || format.starts_with("tD")) {
    return ArrowKind::kNumber;
  }
  for (const char* text : {"u", "U", "vu", "z", "Z", "vz"}) {
    if (format == text) return ArrowKind::kText;
  }
  return ArrowKind::kOther;
}

ArrowCells::ArrowCells(const ArrowSchema& schema, const ArrowArray& array, const ArrowArray* batch)
    : array_(array), format_(schema.format), offset_(array.offset), rows_(array.length) {
  nothing_ = format_ == "n";
  if (!nothing_ && array.n_buffers > 0 && array.null_count != 0) {
    validity_ = static_cast<const std::uint8_t*>(array.buffers[0]);
  }
  if (batch != nullptr) {
    offset_ += batch->offset;
    rows_ = batch->length;
    batchOffset_ = batch->offset;
    if (batch->n_buffers > 0 && batch->null_count != 0) {
      batchValidity_ = static_cast<const std::uint8_t*>(batch->buffers[0]);
    }
  }
  if (format_ == "tdm") {
    units_ = unitsOf('m');
  } else if (format_.starts_with("ts") || format_.starts_with("tD")) {
    units_ = unitsOf(format_[2]);
  } else if (format_.starts_with("d:")) {  // d:precision,scale[,bits]
    const std::size_t scale = format_.find(',');
    const std::size_t bits = scale == std::string_view::npos ? scale : format_.find(',', scale + 1);
    if (scale != std::string_view::npos) scale_ = numberIn(format_.substr(scale + 1), 0);
    bits_ = bits == std::string_view::npos ? 128 : numberIn(format_.substr(bits + 1), 128);
  }
}

bool ArrowCells::missing(std::int64_t row) const {
  return nothing_ || (validity_ != nullptr && !bit(validity_, offset_ + row)) ||
         (batchValidity_ != nullptr && !bit(batchValidity_, batchOffset_ + row));
}

template <class Cell>
Cell ArrowCells::at(std::int64_t row) const {
  Cell cell;
  std::memcpy(&cell, static_cast<const char*>(array_.buffers[1]) + (offset_ + row) * sizeof cell,
              sizeof cell);
  return cell;
}

const double* ArrowCells::doubles() const {
  if (rows_ == 0) return nullptr;
  const auto* cells = static_cast<const double*>(array_.buffers[1]) + offset_;
  return reinterpret_cast<std::uintptr_t>(cells) % alignof(double) == 0 ? cells : nullptr;
}

bool ArrowCells::isUnsigned() const {
  return std::string_view("CSIL").find(format_) != std::string_view::npos;
}

std::int64_t ArrowCells::whole(std::int64_t row) const {
  switch (format_[0]) {
    case 'c':
      return at<std::int8_t>(row);
    case 'C':
      return at<std::uint8_t>(row);
    case 's':
      return at<std::int16_t>(row);
    case 'S':
      return at<std::uint16_t>(row);
    case 'i':
      return at<std::int32_t>(row);
    case 'I':
      return at<std::uint32_t>(row);
    case 'L':
      return at<std::uint64_t>(row) >> 63 != 0 ? -1 : at<std::int64_t>(row);
    default:
      return at<std::int64_t>(row);
  }
}

double ArrowCells::decimal(std::int64_t row) const {
  std::vector<std::uint32_t> words(static_cast<std::size_t>(bits_) / 32);
  std::memcpy(words.data(),
              static_cast<const char*>(array_.buffers[1]) + (offset_ + row) * (bits_ / 8),
              words.size() * sizeof words[0]);
  const std::string text = digitsOf(std::move(words)) + "e" + std::to_string(-scale_);
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

double ArrowCells::number(std::int64_t row) const {
  if (format_ == "g") return at<double>(row);
  if (format_ == "f") return at<float>(row);
  if (format_ == "e") return halfOf(at<std::uint16_t>(row));
  if (format_ == "tdD") return at<std::int32_t>(row);
  if (format_.starts_with("d:")) return decimal(row);
  if (format_.starts_with("t")) return static_cast<double>(at<std::int64_t>(row)) / units_;
  return static_cast<double>(whole(row));
}

bool ArrowCells::truth(std::int64_t row) const {
  return bit(static_cast<const std::uint8_t*>(array_.buffers[1]), offset_ + row);
}

// A view: its length, then the text itself or where it lies.
std::string_view ArrowCells::view(std::int64_t row) const {
  struct View {
    std::int32_t length;
    std::array<char, 4> prefix;
    std::int32_t buffer, offset;
  };
  const auto cell = at<View>(row);
  const auto length = static_cast<std::size_t>(cell.length);
  if (length <= 12) {
    return {static_cast<const char*>(array_.buffers[1]) + (offset_ + row) * 16 + 4, length};
  }
  return {static_cast<const char*>(array_.buffers[2 + cell.buffer]) + cell.offset, length};
}

std::string_view ArrowCells::text(std::int64_t row) const {
  if (format_[0] == 'v') return view(row);
  const auto* letters = static_cast<const char*>(array_.buffers[2]);
  std::int64_t from = 0;
  std::int64_t to = 0;
  if (format_ == "U" || format_ == "Z") {
    from = at<std::int64_t>(row), to = at<std::int64_t>(row + 1);
  } else {
    from = at<std::int32_t>(row), to = at<std::int32_t>(row + 1);
  }
  if (from == to) return {};  // where all are empty there may be no letters
  return {letters + from, static_cast<std::size_t>(to - from)};
}

}  // namespace survmeth::python
