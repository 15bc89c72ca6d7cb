// JSON written as it comes, without a tree of it in memory: two spaces of indent for each level,
// arrays of numbers or texts on one line.
//
//     JsonWriter json(out);
//     json.beginObject();
//     json.member("n", 42.0);
//     json.key("rows"), json.beginArray(); ...; json.endArray();
//     json.endObject();
#ifndef REPORT_JSON_WRITER_H_
#define REPORT_JSON_WRITER_H_

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "report/report.h"

namespace survmeth::report {

class JsonWriter {
 public:
  explicit JsonWriter(std::string& out) : out_(out) {}

  // Members and elements on lines of their own, or all on one.
  void beginObject(bool oneLine = false) { begin('{', oneLine); }
  void endObject() { end('}'); }
  void beginArray(bool oneLine = false) { begin('[', oneLine); }
  void endArray() { end(']'); }

  void key(std::string_view name);

  // A whole number below 2^53 is written without a point (-0 as -0.0, so that it reads back); other
  // numbers as the shortest text that reads back as the same double; NaN and infinities as null.
  void value(double number);
  // What is no UTF-8 becomes U+FFFD.
  void value(std::string_view text);
  void value(const std::string& text) { value(std::string_view(text)); }
  void value(const char* text) { value(std::string_view(text)); }
  void value(bool flag);
  void null();
  void value(std::span<const double> numbers);
  void value(std::span<const std::string> texts);
  void value(const std::vector<double>& numbers) { value(std::span(numbers)); }
  void value(const Numbers& numbers) { value(std::span<const double>(numbers)); }
  void value(const std::vector<std::string>& texts) { value(std::span(texts)); }

  template <typename T>
  void member(std::string_view name, const T& what) {
    key(name);
    value(what);
  }

 private:
  void begin(char bracket, bool oneLine);
  void end(char bracket);
  void separate();

  struct Level {
    bool oneLine;
    bool empty;
  };
  std::string& out_;
  std::vector<Level> levels_;
  bool afterKey_ = false;
};

}  // namespace survmeth::report

#endif  // REPORT_JSON_WRITER_H_
