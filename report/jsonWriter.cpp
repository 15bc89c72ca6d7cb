// JSON as RFC 8259 has it.
#include "report/jsonWriter.h"

#include <cmath>
#include <cstdint>

#include "text/charconv.h"
#include "text/utf8.h"

namespace survmeth::report {
namespace {

constexpr double kExactWhole = 9007199254740992.0;  // 2^53
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

void addNumber(double number, std::string& out) {
  if (!std::isfinite(number)) {
    out += "null";
    return;
  }
  char buffer[32];  // the shortest form of a double takes at most 24 characters
  if (number == 0 && std::signbit(number)) {
    out += "-0.0";
  } else if (number == std::trunc(number) && std::fabs(number) < kExactWhole) {
    const auto end =
        std::to_chars(buffer, buffer + sizeof buffer, static_cast<std::int64_t>(number));
    out.append(buffer, end.ptr);
  } else {
    const auto end = text::to_chars(buffer, buffer + sizeof buffer, number);
    out.append(buffer, end.ptr);
  }
}

void addEscape(char c, std::string& out) {
  switch (c) {
    case '"':
    case '\\':
      out += '\\';
      out += c;
      return;
    case '\n':
      out += "\\n";
      return;
    case '\t':
      out += "\\t";
      return;
    case '\r':
      out += "\\r";
      return;
    default:
      break;
  }
  constexpr char kHex[] = "0123456789abcdef";
  const auto code = static_cast<unsigned char>(c);
  out += "\\u00";
  out += kHex[code >> 4];
  out += kHex[code & 15];
}

void addText(std::string_view text, std::string& out) {
  out += '"';
  while (!text.empty()) {
    const auto byte = static_cast<unsigned char>(text.front());
    if (byte < 0x20 || byte == '"' || byte == '\\') {
      addEscape(text.front(), out);
      text.remove_prefix(1);
    } else if (byte < 0x80) {
      out += text.front();
      text.remove_prefix(1);
    } else {
      const std::string_view before = text;
      const bool valid = text::takeCharacter(text) != text::kNoCharacter;
      out += valid ? before.substr(0, before.size() - text.size()) : kReplacement;
    }
  }
  out += '"';
}

}  // namespace

void JsonWriter::separate() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (levels_.empty()) return;
  Level& level = levels_.back();
  if (!level.empty) out_ += level.oneLine ? ", " : ",";
  level.empty = false;
  if (level.oneLine) return;
  out_ += '\n';
  out_.append(2 * levels_.size(), ' ');
}

void JsonWriter::begin(char bracket, bool oneLine) {
  separate();
  out_ += bracket;
  const bool within = !levels_.empty() && levels_.back().oneLine;
  levels_.push_back({oneLine || within, true});
}

void JsonWriter::end(char bracket) {
  const Level level = levels_.back();
  levels_.pop_back();
  if (!level.oneLine && !level.empty) {
    out_ += '\n';
    out_.append(2 * levels_.size(), ' ');
  }
  out_ += bracket;
}

void JsonWriter::key(std::string_view name) {
  separate();
  addText(name, out_);
  out_ += ": ";
  afterKey_ = true;
}

void JsonWriter::value(double number) {
  separate();
  addNumber(number, out_);
}

void JsonWriter::value(std::string_view text) {
  separate();
  addText(text, out_);
}

void JsonWriter::value(bool flag) {
  separate();
  out_ += flag ? "true" : "false";
}

void JsonWriter::null() {
  separate();
  out_ += "null";
}

void JsonWriter::value(std::span<const double> numbers) {
  separate();
  out_ += '[';
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (i > 0) out_ += ',';
    addNumber(numbers[i], out_);
  }
  out_ += ']';
}

void JsonWriter::value(std::span<const std::string> texts) {
  separate();
  out_ += '[';
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i > 0) out_ += ',';
    addText(texts[i], out_);
  }
  out_ += ']';
}

}  // namespace survmeth::report
