// The conversions for libraries without them against this library's own.
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "text/charconvElsewhere.h"

namespace {

namespace elsewhere = survmeth::text::elsewhere;

template <class Write>
std::string written(const Write& write) {
  char buffer[800];
  const std::to_chars_result result = write(buffer, buffer + sizeof buffer);
  EXPECT_EQ(result.ec, std::errc());
  return {buffer, result.ptr};
}

std::string ours(double value) {
  return written([&](char* a, char* b) { return elsewhere::to_chars(a, b, value); });
}
std::string theirs(double value) {
  return written([&](char* a, char* b) { return std::to_chars(a, b, value); });
}
std::string ours(double value, std::chars_format format, int precision) {
  return written(
      [&](char* a, char* b) { return elsewhere::to_chars(a, b, value, format, precision); });
}
std::string theirs(double value, std::chars_format format, int precision) {
  return written([&](char* a, char* b) { return std::to_chars(a, b, value, format, precision); });
}

// Doubles of every size, those with few digits, powers of two and of ten and their neighbours.
std::vector<double> doubles() {
  std::vector<double> made = {0.0,  -0.0, 0.5,    1e15, 1e16,      1e21,
                              1e22, 1e23, 5e-324, 0.1,  123456.789};
  std::mt19937_64 random(7);
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t bits = random();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    if (std::isfinite(value)) made.push_back(value);
    made.push_back(static_cast<double>(random() % 1000000) / 1000);
    made.push_back(static_cast<double>(random() % 100000000) * 1e12);
  }
  for (int power = -1074; power < 1024; ++power) made.push_back(std::ldexp(1.0, power));
  for (int power = -320; power <= 308; ++power) {
    const double ten = std::strtod(("1e" + std::to_string(power)).c_str(), nullptr);
    for (const double value : {ten, std::nextafter(ten, 0.0), std::nextafter(ten, 1e308)}) {
      made.push_back(value);
      made.push_back(-3 * value);
    }
  }
  std::erase_if(made, [](double value) { return !std::isfinite(value); });
  return made;
}

TEST(Charconv, TheShortestTextIsTheSame) {
  for (const double value : doubles()) ASSERT_EQ(ours(value), theirs(value));
}

TEST(Charconv, TheShortestScientificTextIsTheSame) {
  const auto scientific = std::chars_format::scientific;
  for (const double value : doubles()) {
    ASSERT_EQ(
        written([&](char* a, char* b) { return elsewhere::to_chars(a, b, value, scientific); }),
        written([&](char* a, char* b) { return std::to_chars(a, b, value, scientific); }));
  }
}

TEST(Charconv, TextsOfEveryPrecisionAreTheSame) {
  const auto all = doubles();
  for (std::size_t i = 0; i < all.size(); ++i) {
    const int precision = static_cast<int>(i % 18);
    for (const auto format : {std::chars_format::scientific, std::chars_format::fixed}) {
      ASSERT_EQ(ours(all[i], format, precision), theirs(all[i], format, precision)) << precision;
    }
    const auto general = std::chars_format::general;
    ASSERT_EQ(ours(all[i], general, precision + 1), theirs(all[i], general, precision + 1));
  }
}

TEST(Charconv, InfinitiesAreTheSame) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(ours(infinity), theirs(infinity));
  EXPECT_EQ(ours(-infinity), theirs(-infinity));
}

void expectReadAlike(const std::string& text) {
  double mine = -7, its = -7;
  const char *const first = text.data(), *const last = first + text.size();
  const std::from_chars_result got = elsewhere::from_chars(first, last, mine);
  const std::from_chars_result expected = std::from_chars(first, last, its);
  ASSERT_EQ(got.ec, expected.ec) << text;
  ASSERT_EQ(got.ptr - first, expected.ptr - first) << text;
  ASSERT_EQ(std::memcmp(&mine, &its, sizeof mine), 0) << text;
}

TEST(Charconv, TextsAreReadAlike) {
  for (const double value : doubles()) expectReadAlike(theirs(value));
  for (const char* text : {"",
                           "-",
                           ".",
                           "1.",
                           ".5",
                           "1e",
                           "1e+",
                           "1e400",
                           "-1e400",
                           "1e-400",
                           "0e9999",
                           "0.000e-999",
                           "1e99999999999999999999",
                           "1e-99999999999999999999",
                           "12abc",
                           "+1",
                           " 1",
                           "0x10",
                           "2.2250738585072011e-308",
                           "4.9e-324",
                           "2.4e-324",
                           "1.7976931348623159e308",
                           "9007199254740993",
                           "9007199254740992.99999999999999999999999999999999999999999999999"}) {
    expectReadAlike(text);
  }
}

}  // namespace
