// Plots through gnuplot, run as a process of its own: the script goes to its standard input and the
// picture comes back on its standard output, so that no file name and no label ever passes through
// a shell. Labels are quoted with gnuplotText, which also switches off what gnuplot would
// interpret (the terminals are opened with "noenhanced").
//
//     Picture picture = pictureOf("curve.svg");       // refuses other endings than svg, png, pdf
//     std::string script = terminalLine(picture, 900, 640);
//     script += "set title " + gnuplotText(title) + "\n" + ...;
//     session.output.figure("curve.svg", script);       // which runs gnuplot
#ifndef CLI_SHELL_GNUPLOT_H_
#define CLI_SHELL_GNUPLOT_H_

#include <string>
#include <string_view>

namespace cli {

enum class Picture { kSvg, kPng, kPdf };

// The kind that a file's ending asks for.
Picture pictureOf(const std::string& file);

// "set terminal ..." for a picture of about this size in points; PNG has twice as many pixels.
std::string terminalLine(Picture picture, int width, int height);

// A label as a gnuplot string.
std::string gnuplotText(std::string_view text);

// Colour and dash of curve `i` (from 0): colours that colour-blind readers tell apart and that
// differ in lightness, so that they survive a grey print; the dashes differ as well.
struct Stroke {
  const char* colour;
  const char* dash;
};
Stroke strokeOf(std::size_t i);

// Runs gnuplot on the script; the picture. Throws a Problem (kFailed) with what gnuplot said, or
// that it is not installed.
std::string gnuplot(const std::string& script);

}  // namespace cli

#endif  // CLI_SHELL_GNUPLOT_H_
