// How much room text takes, and how it is broken into lines. Widths are those of DejaVu Sans, with
// which gnuplot draws; the fonts that a browser may take in its place are narrower.
#ifndef PICTURES_LETTERING_H_
#define PICTURES_LETTERING_H_

#include <string>
#include <string_view>
#include <vector>

namespace survmeth::pictures {

// Distance of the base lines of two lines of text, in parts of the font's size.
inline constexpr double kLeading = 1.25;

// A label without control characters, which XML may not hold; line breaks and tabs are spaces.
std::string cleaned(std::string_view text);

// Width of one line in points.
double textWidth(std::string_view text, double size);

// The cleaned text in lines of at most `width` points, broken at spaces, or where a word is longer
// than a line within it; none for an empty text.
std::vector<std::string> linesOf(std::string_view text, double size, double width);

// Width of the longest line.
double widestOf(const std::vector<std::string>& lines, double size);

// Height of so many lines.
double heightOf(std::size_t lines, double size);

}  // namespace survmeth::pictures

#endif  // PICTURES_LETTERING_H_
