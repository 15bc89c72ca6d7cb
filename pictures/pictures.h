// Figures of a report as pictures: svg, png or pdf. A figure is laid out here, down to every line
// and label in points; gnuplot, a process of its own, only draws. What a figure could not show is
// said in notes.
//
//     Style style;
//     style.xLabel = "months";                                    // --xlabel
//     const Drawing drawing = compose(figure, style, formatOf("curves.svg"));
//     for (const report::Note& note : drawing.notes) ...
//     std::string bytes = draw(drawing);                          // runs gnuplot; throws Failure
#ifndef PICTURES_PICTURES_H_
#define PICTURES_PICTURES_H_

#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "report/report.h"

namespace survmeth::pictures {

enum class Format { kSvg, kPng, kPdf };

// What a person may ask of a picture beside what the figure says. Limits, labels and breaks apply
// to every panel whose axis is not of categories.
struct Style {
  std::optional<std::string> title, xLabel, yLabel;
  std::optional<std::pair<double, double>> xLimits, yLimits;
  std::vector<double> breaks;               // ticks of the x axis
  std::optional<std::pair<int, int>> size;  // width and height in points; png has twice as many
  bool percent = false;                     // probabilities in percent
  bool grey = false;
  std::string id;  // begins every id in an SVG; empty: the figure's own id
};

// A wish that cannot be granted: "xlim", "ylim", "size", "breaks" or "plot", and why.
class Refusal : public std::runtime_error {
 public:
  Refusal(std::string wish, const std::string& why)
      : std::runtime_error(why), option(std::move(wish)) {}
  const std::string option;
};

// gnuplot is missing or failed; in words.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A picture that only gnuplot has still to draw.
struct Drawing {
  Format format = Format::kSvg;
  std::string script;                // for gnuplot, the whole of it
  std::string title, id;             // of an SVG
  std::vector<std::string> names;    // what each plot of the script is: "6-MP", "grid", ...
  std::set<std::string> characters;  // of its labels, but for the commonest; in UTF-8
  // Codes: valuesLeftOut, bandsAsBars, bandsLeftOut, manyGroups, beyondFrame, labelsLeftOut,
  // countsLeftOut.
  std::vector<report::Note> notes;
};

// The format that a file's ending asks for. Throws a Refusal of "plot" at any other ending.
Format formatOf(const std::string& file);

// Lays a figure out.
//
// In   figure  panels with any number of series; values that are not finite are passed over
// Out  the drawing; the same figure and style give the same
// Edge an infinite limit of a point is an arrow to the frame's edge; lines are cut at the frame;
//      labels are wrapped, never cut
//      throws a Refusal of limits that do not ascend or that the scale does not know, and of a size
//      that does not hold the labels
// Cost O(values)
Drawing compose(const report::Figure& figure, const Style& style, Format format);

// The bytes of the picture. Throws a Failure; one is a character that no font here has, in a png or
// pdf: what is drawn in its place would cover the picture. An svg's fonts are its reader's business.
std::string draw(const Drawing& drawing);

}  // namespace survmeth::pictures

#endif  // PICTURES_PICTURES_H_
