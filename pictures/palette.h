// Colours and dashes. The colours are told apart by colour-blind readers in pairs of neighbours and
// differ in lightness; curves differ in their dash as well, so that any twelve survive a grey
// print.
#ifndef PICTURES_PALETTE_H_
#define PICTURES_PALETTE_H_

#include <cstddef>
#include <map>
#include <string>

#include "pictures/canvas.h"
#include "report/report.h"

namespace survmeth::pictures {

inline constexpr const char* kInk = "#222222";    // text
inline constexpr const char* kFrame = "#444444";  // axes
inline constexpr const char* kGrid = "#e8e8e8";
inline constexpr const char* kGuide = "#808080";  // identity, chance, no effect

// How many series can be told apart.
inline constexpr std::size_t kStrokes = 12;

// A colour "#rrggbb" half way to white.
std::string tinted(const std::string& colour);

struct Stroke {
  std::string colour, dash;
  Marker marker = Marker::kCircle;
};

class Palette {
 public:
  // Gives strokes to the names of a figure's series, in their order.
  Palette(const report::Figure& figure, bool grey);

  Stroke of(const report::Series& series) const;
  // Of a row of the table below: the stroke of the series with its name, if there is one.
  const Stroke* named(const std::string& name) const;
  std::size_t names() const { return strokes_.size(); }
  bool grey() const { return grey_; }

 private:
  Stroke stroke(std::size_t i) const;

  bool grey_;
  std::map<std::string, Stroke> strokes_;
};

}  // namespace survmeth::pictures

#endif  // PICTURES_PALETTE_H_
