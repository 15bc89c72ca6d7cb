// gnuplot as a process: the script goes to its standard input and the picture comes back on its
// standard output, so that no file name and no label ever passes through a shell.
#ifndef PICTURES_GNUPLOT_H_
#define PICTURES_GNUPLOT_H_

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "pictures/pictures.h"

namespace survmeth::pictures {

// Text as a string of gnuplot's that it interprets nothing of.
std::string gnuplotText(std::string_view text);

// "set terminal ..." for a picture of this size in points; a unit is as long in every format.
std::string terminalLine(Format format, double width, double height);

// Runs gnuplot on a script and hands on what it wrote in pieces, each with the size of the whole: a
// picture of many points is large, and is held once only. Throws a Failure, before any piece.
void runGnuplot(const std::string& script,
                const std::function<void(std::string_view piece, std::size_t whole)>& take);

}  // namespace survmeth::pictures

#endif  // PICTURES_GNUPLOT_H_
