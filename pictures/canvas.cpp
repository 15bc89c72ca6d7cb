// The script for gnuplot.
#include "pictures/canvas.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "pictures/glyphs.h"
#include "pictures/gnuplot.h"
#include "pictures/lettering.h"
#include "report/numbers.h"

namespace survmeth::pictures {
namespace {

// Hundredths of a point are what an SVG of gnuplot's holds.
std::string places(double value) { return report::fixed(value, 2); }

// gnuplot has colours with the transparency first: 0 is opaque.
std::string shade(const std::string& colour, double opacity) {
  static constexpr char kDigits[] = "0123456789abcdef";
  const int clear = static_cast<int>(std::lround(255 * (1 - opacity)));
  if (clear <= 0) return "'" + colour + "'";
  return std::string("'#") + kDigits[clear / 16] + kDigits[clear % 16] + colour.substr(1) + "'";
}

// gnuplot's unit of a dash is half a point for a line one point wide.
std::string dashType(const Pen& pen) {
  if (pen.dash.empty()) return "solid";
  std::string type = "(";
  for (std::size_t at = 0; at < pen.dash.size();) {
    const std::size_t comma = std::min(pen.dash.find(',', at), pen.dash.size());
    double length = 0;
    std::from_chars(pen.dash.data() + at, pen.dash.data() + comma, length);
    type += (at > 0 ? "," : "") + report::fixed(2 * length / pen.width, 2);
    at = comma + 1;
  }
  return type + ")";
}

}  // namespace

std::string Canvas::data(const std::vector<Path>& paths) {
  std::string name = "$d" + std::to_string(names_.size() + 1);
  blocks_ += name + " << END\n";
  for (std::size_t i = 0; i < paths.size(); ++i) {
    if (i > 0) blocks_ += '\n';
    for (const Point& p : paths[i]) blocks_ += places(p.x) + ' ' + places(height_ - p.y) + '\n';
  }
  blocks_ += "END\n";
  return name;
}

void Canvas::plot(const std::string& block, const std::string& how, const std::string& name) {
  plots_ += (plots_.empty() ? "plot " : ", \\\n     ") + block + " using 1:2 with " + how;
  names_.push_back(cleaned(name));
}

void Canvas::lines(const std::vector<Path>& paths, const Pen& pen, const std::string& name) {
  std::vector<Path> drawn;
  for (const Path& path : paths) {
    if (path.size() > 1) drawn.push_back(path);
  }
  if (drawn.empty()) return;
  plot(data(drawn),
       "lines linewidth " + places(pen.width) + " linecolor rgb '" + pen.colour + "' dashtype " +
           dashType(pen),
       name);
}

void Canvas::area(const Path& outline, const std::string& colour, double opacity,
                  const std::string& name) {
  if (outline.size() < 3) return;
  plot(data({outline}),
       "filledcurves closed fillcolor rgb '" + colour + "' fillstyle " +
           (opacity < 1 ? "transparent solid " + places(opacity) : "solid 1.0") + " noborder",
       name);
}

void Canvas::markers(const Path& centres, Marker marker, double radius, const std::string& colour,
                     double opacity, const std::string& name) {
  if (centres.empty()) return;
  // A marker of gnuplot's of size 1 has a radius of 4.5 points.
  plot(data({centres}),
       "points pointtype " + std::to_string(static_cast<int>(marker)) + " pointsize " +
           report::fixed(radius / 4.5, 3) + " linewidth 1.2 linecolor rgb " +
           shade(colour, opacity),
       name);
}

void Canvas::text(std::string_view text, Point at, const Lettering& lettering) {
  if (text.empty()) return;
  addUncommon(text, characters_);
  const char* align = lettering.align == Align::kLeft     ? "left"
                      : lettering.align == Align::kCentre ? "center"
                                                          : "right";
  labels_ += "set label " + std::to_string(++texts_) + ' ' + gnuplotText(text) + " at " +
             places(at.x) + ',' + places(height_ - at.y) + ' ' + align + " font '," +
             report::brief(lettering.size) + "' textcolor rgb '" + lettering.colour + "'" +
             (lettering.upright ? " rotate by 90" : "") + " front\n";
}

void Canvas::block(const std::vector<std::string>& lines, Point at, const Lettering& lettering) {
  const double step = lettering.size * kLeading;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const double down = (static_cast<double>(i) + 0.5) * step;
    const Point place = lettering.upright ? Point{at.x + down, at.y} : Point{at.x, at.y + down};
    text(lines[i], place, lettering);
  }
}

std::string Canvas::script() const {
  std::string script = terminalLine(format_, width_, height_);
  for (const char* side : {"l", "b"}) script += std::string("set ") + side + "margin at screen 0\n";
  for (const char* side : {"r", "t"}) script += std::string("set ") + side + "margin at screen 1\n";
  script += "unset border\nunset tics\nunset key\nset xrange [0:" + places(width_) +
            "]\nset yrange [0:" + places(height_) + "]\n";
  script.reserve(script.size() + labels_.size() + blocks_.size() + plots_.size() + 80);
  script += labels_;
  script += blocks_;
  // Without a plot gnuplot would draw nothing, no text either.
  script += plots_.empty() ? "plot NaN notitle" : plots_;
  return script += '\n';
}

}  // namespace survmeth::pictures
