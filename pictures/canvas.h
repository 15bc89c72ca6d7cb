// Lines, areas, markers and text in points from the upper left corner of a picture, written as a
// script for gnuplot. It sees no values of the data, so that its own ranges, clipping and number
// formats have no say.
#ifndef PICTURES_CANVAS_H_
#define PICTURES_CANVAS_H_

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "pictures/pictures.h"

namespace survmeth::pictures {

struct Point {
  double x = 0, y = 0;
};
using Path = std::vector<Point>;

struct Box {
  double left = 0, top = 0, right = 0, bottom = 0;
  double width() const { return right - left; }
  double height() const { return bottom - top; }
};

struct Pen {
  std::string colour = "#333333";
  double width = 1;
  std::string dash;  // lengths of strokes and gaps in points: "6,3"; empty: solid
};

// gnuplot's numbers of these markers.
enum class Marker {
  kOpenSquare = 4,
  kSquare,
  kOpenCircle,
  kCircle,
  kOpenTriangle,
  kTriangle,
  kOpenDiamond = 12,
  kDiamond
};

enum class Align { kLeft, kCentre, kRight };

struct Lettering {
  double size = 11;
  Align align = Align::kLeft;
  std::string colour = "#222222";
  bool upright = false;  // turned by a quarter, read from below
};

class Canvas {
 public:
  Canvas(Format format, double width, double height)
      : format_(format), width_(width), height_(height) {}

  double width() const { return width_; }
  double height() const { return height_; }

  // `name` says what is drawn. Nothing is drawn of what is empty.
  void lines(const std::vector<Path>& paths, const Pen& pen, const std::string& name);
  void area(const Path& outline, const std::string& colour, double opacity,
            const std::string& name);
  void markers(const Path& centres, Marker marker, double radius, const std::string& colour,
               double opacity, const std::string& name);

  // One line of text, its middle at the height of `at`; above everything else.
  void text(std::string_view text, Point at, const Lettering& lettering);
  // Lines under one another, the first one's upper edge at `at`.
  void block(const std::vector<std::string>& lines, Point at, const Lettering& lettering);

  std::string script() const;
  const std::vector<std::string>& names() const { return names_; }
  // Of the text, those that the usual fonts may lack.
  const std::set<std::string>& characters() const { return characters_; }

 private:
  std::string data(const std::vector<Path>& paths);
  void plot(const std::string& block, const std::string& how, const std::string& name);

  Format format_;
  double width_, height_;
  std::string blocks_, labels_, plots_;
  std::vector<std::string> names_;
  std::set<std::string> characters_;
  std::size_t texts_ = 0;
};

}  // namespace survmeth::pictures

#endif  // PICTURES_CANVAS_H_
