// Whether the fonts of this computer have the characters of a picture's labels.
#ifndef PICTURES_GLYPHS_H_
#define PICTURES_GLYPHS_H_

#include <set>
#include <string>
#include <string_view>

namespace survmeth::pictures {

// Adds the characters of a text that usual fonts may lack: all but Latin, Greek and Cyrillic,
// punctuation and symbols up to U+22FF.
void addUncommon(std::string_view text, std::set<std::string>& characters);

// Throws a Failure that names those which no font has, as fontconfig knows the fonts. gnuplot's
// Cairo terminals would draw a box of hexadecimal digits for each, large enough to hide the picture.
//
// Cost a process for each character; nothing where there are none, or no fc-list
void requireGlyphs(const std::set<std::string>& characters);

}  // namespace survmeth::pictures

#endif  // PICTURES_GLYPHS_H_
