// Two 64-bit lanes, each mixed by a multiplication and a shift for every word that goes in.
#include "analysis/digest.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

namespace survmeth::analysis {
namespace {

class Mixer {
 public:
  void word(std::uint64_t value) {
    // Multipliers: the golden ratio's fraction in 64 bits, and an odd constant of like density.
    low_ = (low_ ^ value) * 0x9E3779B97F4A7C15u;
    low_ ^= low_ >> 29;
    high_ = (high_ + value) * 0xC2B2AE3D27D4EB4Fu;
    high_ ^= high_ >> 31;
  }
  void text(std::string_view text) {
    word(text.size());
    for (std::size_t at = 0; at < text.size(); at += 8) {
      std::uint64_t value = 0;
      for (std::size_t i = at; i < text.size() && i < at + 8; ++i) {
        value |= std::uint64_t{static_cast<unsigned char>(text[i])} << (8 * (i - at));
      }
      word(value);
    }
  }
  void number(double value) {
    if (std::isnan(value)) value = std::numeric_limits<double>::quiet_NaN();
    value += 0.0;  // -0 becomes 0
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    word(bits);
  }
  std::string hexadecimal() const {
    std::string text;
    for (const std::uint64_t lane : {high_, low_}) {
      for (int shift = 60; shift >= 0; shift -= 4) text += "0123456789abcdef"[lane >> shift & 15];
    }
    return text;
  }

 private:
  std::uint64_t low_ = 0x243F6A8885A308D3u, high_ = 0x13198A2E03707344u;  // digits of pi
};

}  // namespace

std::string digest(const frame::Frame& data) {
  Mixer mixer;
  mixer.word(data.columns.size());
  mixer.word(data.rows);
  for (const frame::Column& column : data.columns) {
    mixer.text(column.name);
    mixer.word(column.type == frame::Type::kNumber ? 0 : 1);
    if (column.type == frame::Type::kNumber) {
      for (const double value : column.numbers) mixer.number(value);
      continue;
    }
    // The labels in order of first use, so that codings of one content agree.
    std::vector<std::uint32_t> place(column.levels.size(), frame::Column::kMissing);
    std::uint32_t used = 0;
    for (const std::uint32_t code : column.codes) {
      if (code == frame::Column::kMissing) {
        mixer.word(frame::Column::kMissing);
        continue;
      }
      if (place[code] == frame::Column::kMissing) {
        place[code] = used++;
        mixer.text(column.levels[code]);
      }
      mixer.word(place[code]);
    }
  }
  return mixer.hexadecimal();
}

}  // namespace survmeth::analysis
