#include "frame/encoding.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "frame/bytes.h"
#include "text/utf8.h"
#include "text/words.h"

namespace survmeth::frame {
namespace {

constexpr std::size_t kLooked = 4096;  // bytes that are looked at for UTF-16 without a mark

// Of files that people take for tables.
struct Container {
  std::string_view start, name;
};
constexpr std::array<Container, 9> kContainers = {
    {{"PK\x03\x04", "a zip archive, as .xlsx and .ods workbooks are"},
     {"\xD0\xCF\x11\xE0", "an .xls workbook or another compound file"},
     {"BZh", "packed by bzip2"},
     {"\xFD\x37zXZ", "packed by xz"},
     {"\x28\xB5\x2F\xFD", "packed by zstd"},
     {"%PDF-", "a PDF"},
     {"PAR1", "a Parquet file"},
     {"$FL2", "a data file of SPSS"},
     {"<stata_dta>", "a data file of Stata"}}};

// Windows-1252 from 0x80 to 0x9F; 0 where it has no character. Above that it is Latin-1, which is
// the beginning of Unicode.
constexpr std::array<std::uint16_t, 32> kWindows = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void append(std::string& text, std::uint32_t character) {
  const auto tail = [&](unsigned shift) {
    text += static_cast<char>(0x80 | ((character >> shift) & 0x3F));
  };
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0 | (character >> 6));
    tail(0);
  } else if (character < 0x10000) {
    text += static_cast<char>(0xE0 | (character >> 12));
    tail(6), tail(0);
  } else {
    text += static_cast<char>(0xF0 | (character >> 18));
    tail(12), tail(6), tail(0);
  }
}

// Nothing where a byte has no character.
std::optional<std::string> fromWindows(std::string_view cell) {
  std::string text;
  for (const char c : cell) {
    const auto byte = static_cast<unsigned char>(c);
    const std::uint32_t character = byte >= 0x80 && byte < 0xA0 ? kWindows[byte - 0x80] : byte;
    if (character == 0 && byte != 0) return std::nullopt;
    append(text, character);
  }
  return text;
}

std::optional<Encoding> utf16WithoutMark(std::string_view bytes) {
  bytes = bytes.substr(0, std::min(bytes.size(), kLooked) & ~std::size_t{1});
  std::array<std::size_t, 2> zeros{};
  for (std::size_t i = 0; i < bytes.size(); ++i) zeros[i % 2] += bytes[i] == 0 ? 1 : 0;
  const auto alone = [&](std::size_t these, std::size_t others) {
    return others == 0 && these > 0 && 4 * these >= bytes.size();
  };
  if (alone(zeros[1], zeros[0])) return Encoding::kUtf16Little;
  if (alone(zeros[0], zeros[1])) return Encoding::kUtf16Big;
  return std::nullopt;
}

}  // namespace

Start startOf(std::string_view bytes) {
  using namespace std::string_view_literals;
  for (const Container& each : kContainers) {
    if (!bytes.starts_with(each.start)) continue;
    throw Damage("the file is " + std::string(each.name),
                 "comma- or tab-separated text, plain or packed by gzip");
  }
  if (bytes.starts_with("\xEF\xBB\xBF")) return {Encoding::kUtf8, 3};
  if (bytes.starts_with("\xFF\xFE\0\0"sv) || bytes.starts_with("\0\0\xFE\xFF"sv)) {
    throw Damage("the file is UTF-32", "text in UTF-8 encoding");
  }
  if (bytes.starts_with("\xFF\xFE")) return {Encoding::kUtf16Little, 2};
  if (bytes.starts_with("\xFE\xFF")) return {Encoding::kUtf16Big, 2};
  if (const std::optional<Encoding> guess = utf16WithoutMark(bytes)) return {*guess, 0, true};
  return {};
}

bool Utf16Decoder::unit(unsigned value, std::string& text) {
  const bool isHigh = value >= 0xD800 && value < 0xDC00;
  const bool isLow = value >= 0xDC00 && value < 0xE000;
  if (isLow != (high_ != 0)) return false;
  if (isHigh) {
    high_ = value;
  } else if (isLow) {
    append(text, 0x10000 + ((high_ - 0xD800) << 10) + (value - 0xDC00));
    high_ = 0;
  } else {
    append(text, value);
  }
  return true;
}

void Utf16Decoder::decode(std::string_view bytes, std::string& text) {
  requireWhole();
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (!half_) {
      half_ = byte;
      continue;
    }
    isBroken_ = !unit(isBig_ ? *half_ * 256U + byte : byte * 256U + *half_, text);
    half_.reset();
    if (isBroken_) return;
  }
}

void Utf16Decoder::requireWhole() const {
  if (!isBroken_) return;
  throw Damage("a character of the UTF-16 text is broken", "whole UTF-16, or text in UTF-8");
}

void Utf16Decoder::finish() const {
  requireWhole();
  if (half_ || high_ != 0) {
    throw Damage("the UTF-16 text ends within a character", "whole UTF-16, or text in UTF-8");
  }
}

std::string CellEncoding::utf8(std::string_view cell, const Place& place, std::string_view what) {
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  if (std::all_of(cell.begin(), cell.end(), isAscii)) return std::string(cell);
  const auto refuse = [&](const std::string& fault) {
    throw Unreadable(place, "the " + std::string(what) + fault, "text in UTF-8 encoding");
  };
  Seen now{std::string(cell), place.line};
  const bool isUtf8 = text::isUtf8(cell);
  if (!isUtf8) {
    if (mustBeUtf8_) refuse(" is not UTF-8");
    const std::optional<std::string> converted = fromWindows(cell);
    if (!converted) refuse(" is neither UTF-8 nor Windows-1252");
    now.text = *converted;
  }
  const Seen& other = isUtf8 ? converted_ : asUtf8_;
  if (!other.text.empty()) {
    refuse(" " + text::quote(now.text) +
           (isUtf8 ? " is UTF-8, unlike " : " is not UTF-8, unlike ") + text::quote(other.text) +
           " in line " + std::to_string(other.line));
  }
  Seen& first = isUtf8 ? asUtf8_ : converted_;
  if (first.text.empty()) first = now;
  return std::move(now.text);
}

std::optional<Remark> CellEncoding::remark() const {
  if (converted_.text.empty()) return std::nullopt;
  return Remark{"encoding",
                "text that is not UTF-8 is read as Windows-1252 (Latin-1), such as " +
                    text::quote(converted_.text) + " in line " + std::to_string(converted_.line),
                {}};
}

}  // namespace survmeth::frame
