#include "frame/date.h"

#include <cmath>
#include <cstddef>

#include "text/numbers.h"

namespace survmeth::frame {
namespace {

constexpr int kDaysIn400Years = 146097;
constexpr int kEpoch = 719468;  // days from 0000-03-01 to 1970-01-01

bool isLeap(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

int daysIn(int month, int year) {
  if (month == 2) return isLeap(year) ? 29 : 28;
  return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

// The number that two or four digits spell, or -1.
int digits(std::string_view text) {
  int value = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return -1;
    value = 10 * value + (c - '0');
  }
  return value;
}

void append(std::string& text, int value, int width) {
  const std::string plain = std::to_string(value);
  text.append(static_cast<std::size_t>(width) - plain.size(), '0') += plain;
}

}  // namespace

std::optional<double> parseDate(std::string_view text) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
  int year = digits(text.substr(0, 4));
  int month = digits(text.substr(5, 2));
  const int day = digits(text.substr(8, 2));
  if (year < 0 || month < 1 || month > 12 || day < 1 || day > daysIn(month, year)) {
    return std::nullopt;
  }
  // Years that begin in March end with the leap day; their months follow a pattern of 153 days in
  // five.
  if (month <= 2) --year, month += 12;
  const int era = (year + 400) / 400 - 1, yearOfEra = year - era * 400;
  const int dayOfYear = (153 * (month - 3) + 2) / 5 + day - 1;
  const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * kDaysIn400Years + dayOfEra - kEpoch;
}

std::string dateText(double days) {
  const int shifted = static_cast<int>(days) + kEpoch + kDaysIn400Years;
  const int era = shifted / kDaysIn400Years - 1, dayOfEra = shifted % kDaysIn400Years;
  const int yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / (kDaysIn400Years - 1)) / 365;
  const int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const int shiftedMonth = (5 * dayOfYear + 2) / 153;  // 0 is March
  const int month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
  std::string text;
  append(text, era * 400 + yearOfEra + (month <= 2 ? 1 : 0), 4);
  append(text += '-', month, 2);
  append(text += '-', dayOfYear - (153 * shiftedMonth + 2) / 5 + 1, 2);
  return text;
}

std::string cellText(double number, bool isDate) {
  constexpr double kFirst = -719528, kLast = 2932896;  // 0000-01-01 and 9999-12-31
  const bool isDay = number >= kFirst && number <= kLast && number == std::floor(number);
  return isDate && isDay ? dateText(number) : text::exact(number);
}

}  // namespace survmeth::frame
