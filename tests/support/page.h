// The worked examples of docs/statistics: what a page says is what a test computes.
#ifndef TESTS_SUPPORT_PAGE_H_
#define TESTS_SUPPORT_PAGE_H_

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>

namespace survmeth::test {

// A p-value as the pages give it.
inline std::string pText(double p) {
  if (p < 0.0001) return "<0.0001";
  char text[16];
  std::snprintf(text, sizeof text, "%.4f", p);
  return text;
}

class Page {
 public:
  explicit Page(const std::string& family) {
    const std::string path = SURVMETH_DATA "/../docs/statistics/" + family + ".md";
    std::ifstream file(path);
    if (!file) throw std::runtime_error("cannot open " + path);
    // Where the page breaks its lines does not matter.
    for (std::string word; file >> word;) text_ += word + ' ';
  }

  // The page holds this text, its numbers filled in as printf does.
  [[gnu::format(printf, 2, 3)]] void says(const char* format, ...) const {
    char wanted[512];
    va_list values;
    va_start(values, format);
    const int length = std::vsnprintf(wanted, sizeof wanted, format, values);
    va_end(values);
    ASSERT_TRUE(length >= 0 && length < static_cast<int>(sizeof wanted)) << format;
    EXPECT_NE(text_.find(wanted), std::string::npos) << "not on the page: " << wanted;
  }

 private:
  std::string text_;
};

}  // namespace survmeth::test

#endif  // TESTS_SUPPORT_PAGE_H_
