#include "pictures/ticks.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <set>

#include "report/numbers.h"

namespace survmeth::pictures {
namespace {

constexpr double kMostInFull = 1e6;  // larger numbers are multiples of a power of 1000
constexpr int kMostDecimals = 3;     // more are, too, unless a factor would not help
constexpr double kMostSteps = 1e6;   // from 0: farther away a constant is taken off
constexpr int kMostInOffset = 12;    // places of a constant written without a power of ten
constexpr double kSlack = 1e-9;      // of a step: a limit may be a tick despite rounding

std::string superscript(int exponent) {
  static constexpr const char* kDigits[] = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
  std::string text = exponent < 0 ? "⁻" : "";
  for (const char digit : std::to_string(std::abs(exponent))) text += kDigits[digit - '0'];
  return text;
}

std::string powerOfTen(int exponent) { return "10" + superscript(exponent); }

// count * 10^exponent in plain decimals, with exactly max(0, -exponent) of them.
std::string decimalText(double count, int exponent) {
  std::string digits = report::fixed(std::abs(count), 0);
  if (exponent > 0 && count != 0) digits.append(static_cast<std::size_t>(exponent), '0');
  if (exponent < 0) {
    const auto places = static_cast<std::size_t>(-exponent);
    if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
    digits.insert(digits.size() - places, ".");
  }
  return (count < 0 ? "−" : "") + digits;
}

std::string withoutZeros(std::string text) {
  if (text.find('.') == std::string::npos) return text;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text;
}

double scaledByTen(double value, int exponent) {
  // In two steps: 10^-320 is no double, and dividing by a power keeps decimals correctly rounded.
  while (exponent > 300) value *= 1e300, exponent -= 300;
  while (exponent < -300) value /= 1e300, exponent += 300;
  return exponent >= 0 ? value * std::pow(10, exponent) : value / std::pow(10, -exponent);
}

// Ticks at counts * 10^exponent, which ascend.
Ticks labelled(const std::vector<double>& counts, int exponent, bool percent) {
  Ticks ticks;
  if (counts.empty()) return ticks;
  const int shown = exponent + (percent ? 2 : 0);
  double offset = 0;
  if (std::max(std::abs(counts.front()), std::abs(counts.back())) >= kMostSteps) {
    offset = std::floor(counts.front() / 100) * 100;
    const bool inFull = std::abs(shown) <= kMostInOffset;
    ticks.remark = std::string(offset < 0 ? "plus " : "less ") +
                   withoutZeros(decimalText(std::abs(offset), inFull ? shown : 0)) +
                   (inFull ? "" : "×" + powerOfTen(shown));
  }
  double largest = 0;
  for (const double count : counts) largest = std::max(largest, std::abs(count - offset));
  // The power of ten of the largest number shown; counts are small whole numbers here.
  const int top = static_cast<int>(std::floor(std::log10(std::max(largest, 1.0)) + kSlack)) + shown;
  int unit = 0;
  if (scaledByTen(largest, shown) >= kMostInFull || -shown > kMostDecimals) {
    unit = 3 * static_cast<int>(std::floor(top / 3.0));
  }
  if (unit != 0) ticks.remark += (ticks.remark.empty() ? "×" : ", ×") + powerOfTen(unit);
  for (const double count : counts) {
    ticks.marks.push_back({scaledByTen(count, exponent),
                           decimalText(count - offset, shown - unit) + (percent ? "%" : "")});
  }
  return ticks;
}

Ticks linearTicks(double least, double most, std::size_t wanted, bool percent) {
  // Numbers at the ends of what doubles hold are brought to where their powers of ten are exact.
  const double size = std::max(std::abs(least), std::abs(most));
  const int moved = size > 1e200 ? 250 : size < 1e-200 ? -250 : 0;
  const double low = scaledByTen(least, -moved), high = scaledByTen(most, -moved);
  const double rough = (high - low) / static_cast<double>(std::max<std::size_t>(wanted, 2) - 1);
  if (!(rough > 0) || !std::isfinite(rough)) return {};
  int exponent = static_cast<int>(std::floor(std::log10(rough)));
  double factor = 10;
  for (const double each : {5.0, 2.0, 1.0}) {
    if (scaledByTen(each, exponent) >= rough * (1 - kSlack)) factor = each;
  }
  if (factor == 10) factor = 1, ++exponent;
  const auto counted = [&](double value) { return scaledByTen(value, -exponent) / factor; };
  std::vector<double> counts;
  const double last = std::floor(counted(high) + kSlack);
  for (double i = std::ceil(counted(low) - kSlack); i <= last && counts.size() < 100; ++i) {
    counts.push_back(i * factor);
  }
  return labelled(counts, exponent + moved, percent);
}

std::string shortText(double value, bool percent) {
  std::string text = report::brief(percent ? value * 100 : value);
  if (text[0] == '-') text.replace(0, 1, "−");
  return text + (percent ? "%" : "");
}

// 1, 2 and 5 times the powers of ten, or as many of them as are wanted.
Ticks logTicks(const Scale& scale, std::size_t wanted, bool percent) {
  const double from = std::log10(scale.least()), to = std::log10(scale.most());
  if (!std::isfinite(from) || !std::isfinite(to)) return {};
  const int first = static_cast<int>(std::floor(from)), last = static_cast<int>(std::ceil(to));
  const bool inFull = first >= -4 && last <= 6;
  const auto text = [&](int factor, int exponent) {
    if (inFull) return shortText(scaledByTen(factor, exponent), percent);
    return (factor == 1 ? "" : std::to_string(factor) + "×") + powerOfTen(exponent);
  };
  const auto fitting = [&](const std::vector<int>& factors, int stride) {
    Ticks ticks;
    for (int e = first; e <= last; ++e) {
      if (e % stride != 0) continue;
      for (const int factor : factors) {
        const double value = scaledByTen(factor, e);
        const double place = scale.place(value);
        if (place >= -kSlack && place <= 1 + kSlack)
          ticks.marks.push_back({value, text(factor, e)});
      }
    }
    return ticks;
  };
  if (to - from < 0.8) return linearTicks(scale.least(), scale.most(), wanted, percent);
  for (const std::vector<int>& factors :
       std::vector<std::vector<int>>{{1, 2, 3, 5, 7}, {1, 2, 5}, {1, 3}}) {
    Ticks ticks = fitting(factors, 1);
    if (ticks.marks.size() <= wanted && ticks.marks.size() > 1) return ticks;
  }
  for (int stride = 1;; ++stride) {
    Ticks ticks = fitting({1}, stride);
    if (ticks.marks.size() <= wanted) {
      return ticks.marks.size() > 1 ? ticks
                                    : linearTicks(scale.least(), scale.most(), wanted, percent);
    }
  }
}

// Probabilities that are round towards both ends; the first rows are the last to go.
Ticks probabilityTicks(const Scale& scale, std::size_t wanted, bool percent) {
  static const std::vector<std::vector<double>> kRows = {
      {0.01, 0.1, 0.5, 0.9, 0.99},
      {0.0001, 0.001, 0.999, 0.9999},
      {0.05, 0.2, 0.8, 0.95},
      {0.02, 0.3, 0.7, 0.98},
      {0.00001, 0.000001, 0.99999, 0.999999, 0.4, 0.6},
      {0.005, 0.002, 0.995, 0.998}};
  std::set<double> chosen;
  for (const std::vector<double>& row : kRows) {
    std::set<double> more = chosen;
    for (const double p : row) {
      if (p >= scale.least() && p <= scale.most()) more.insert(p);
    }
    if (more.size() > wanted && chosen.size() > 1) break;
    chosen = more;
  }
  if (chosen.size() < 2) return linearTicks(scale.least(), scale.most(), wanted, percent);
  return ticksAt(scale, {chosen.begin(), chosen.end()}, percent);
}

}  // namespace

Ticks ticksOf(const Scale& scale, std::size_t wanted, bool percent) {
  switch (scale.kind()) {
    case report::Scale::kLog:
      return logTicks(scale, wanted, percent);
    case report::Scale::kCloglog:
    case report::Scale::kProbit:
      return probabilityTicks(scale, wanted, percent);
    case report::Scale::kLinear:
    case report::Scale::kCategory:
      break;
  }
  return linearTicks(scale.least(), scale.most(), wanted, percent);
}

Ticks ticksAt(const Scale& scale, const std::vector<double>& values, bool percent) {
  Ticks ticks;
  double largest = 0;
  for (const double value : values) {
    const double place = scale.place(value);
    if (!(place >= -kSlack && place <= 1 + kSlack)) continue;
    ticks.marks.push_back({value, {}});
    largest = std::max(largest, std::abs(value));
  }
  int unit = 0;
  if (scale.kind() == report::Scale::kLinear && !percent && largest > 0 &&
      (largest >= kMostInFull || largest < std::pow(10, -kMostDecimals))) {
    unit = 3 * static_cast<int>(std::floor((std::log10(largest) + kSlack) / 3));
    ticks.remark = "×" + powerOfTen(unit);
  }
  std::set<std::string> texts;
  for (Tick& tick : ticks.marks) {
    tick.text = shortText(scaledByTen(tick.value, -unit), percent);
    texts.insert(tick.text);
  }
  std::sort(ticks.marks.begin(), ticks.marks.end(),
            [](const Tick& a, const Tick& b) { return a.value < b.value; });
  if (texts.size() < ticks.marks.size()) {
    ticks.remark.clear();
    for (Tick& tick : ticks.marks) tick.text = report::exact(tick.value);
  }
  return ticks;
}

}  // namespace survmeth::pictures
