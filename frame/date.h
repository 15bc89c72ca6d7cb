// ISO dates, which columns hold as days.
#ifndef FRAME_DATE_H_
#define FRAME_DATE_H_

#include <optional>
#include <string>
#include <string_view>

namespace survmeth::frame {

// Days from 1970-01-01 to the date that the whole of `text` spells, YYYY-MM-DD in the Gregorian
// calendar, years 0000 to 9999; nothing where it spells none, such as 2023-02-29.
std::optional<double> parseDate(std::string_view text);

// The date of so many whole days since 1970-01-01, in the same years.
std::string dateText(double days);

// A cell of a column of numbers for messages: its date where the column holds dates and the number
// is a day of these years, else text::exact.
std::string cellText(double number, bool isDate);

}  // namespace survmeth::frame

#endif  // FRAME_DATE_H_
