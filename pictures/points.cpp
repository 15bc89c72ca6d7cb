// Markers, their limits as bars, and the labels beside them.
#include <algorithm>
#include <cmath>

#include "pictures/clip.h"
#include "pictures/lettering.h"
#include "pictures/series.h"
#include "text/words.h"

namespace survmeth::pictures {
namespace {

using report::Series;
using report::SeriesKind;

constexpr double kBar = 1.3;    // width of a bar
constexpr double kCap = 3;      // half the width of its ends
constexpr double kArrow = 6.5;  // length of an arrow's head

struct Look {
  double radius, opacity;
};

// Smaller and clearer the more there are, so that density shows.
Look lookOf(std::size_t count) {
  if (count <= 60) return {3.4, 1};
  if (count <= 300) return {2.8, 0.8};
  if (count <= 1500) return {2.1, 0.5};
  if (count <= 6000) return {1.6, 0.3};
  return {1.3, 0.18};
}

// A bar from a point to its limit; where that lies beyond the frame, an arrow to the frame's edge.
class Bars {
 public:
  explicit Bars(const Box& frame) : frame_(frame) {}

  void add(const Point& at, const Point& limit) {
    const bool across = at.y == limit.y;
    Point end = {std::clamp(limit.x, frame_.left, frame_.right),
                 std::clamp(limit.y, frame_.top, frame_.bottom)};
    const double beyond = across ? std::abs(end.x - limit.x) : std::abs(end.y - limit.y);
    const double way = across ? (limit.x < at.x ? -1 : 1) : (limit.y < at.y ? -1 : 1);
    if (beyond > 0.01) {
      const double back = way * kArrow, side = kArrow / 2.4;
      heads_.push_back(across
                           ? Path{end, {end.x - back, end.y - side}, {end.x - back, end.y + side}}
                           : Path{end, {end.x - side, end.y - back}, {end.x + side, end.y - back}});
      // The line must not blunt the point.
      (across ? end.x : end.y) -= back / 2;
    } else if (across) {
      lines_.push_back({{end.x, end.y - kCap}, {end.x, end.y + kCap}});
    } else {
      lines_.push_back({{end.x - kCap, end.y}, {end.x + kCap, end.y}});
    }
    lines_.push_back({at, end});
  }

  void draw(Canvas& canvas, const std::string& colour, const std::string& name) const {
    const std::string what = name.empty() ? "limits" : name + ", limits";
    canvas.lines(lines_, {colour, kBar, ""}, what);
    for (const Path& head : heads_) canvas.area(head, colour, 1, what + ", beyond the frame");
  }

  std::size_t arrows() const { return heads_.size(); }

 private:
  Box frame_;
  std::vector<Path> lines_, heads_;
};

// Labels beside the points that have room, not upon one another.
void drawLabels(Canvas& canvas, const Plan& plan, const Series& series, Notes& notes) {
  std::vector<Box> taken;
  std::size_t left = 0;
  for (std::size_t i = 0; i < std::min(series.labels.size(), series.x.size()); ++i) {
    const std::string label = cleaned(series.labels[i]);
    const Point at = plan.at(series.x[i], i < series.y.size() ? series.y[i] : NAN);
    if (label.empty() || !inside(at, plan.frame)) continue;
    const double width = textWidth(label, kSmallSize), half = kSmallSize * kLeading / 2;
    bool placed = false;
    for (const Align align : {Align::kLeft, Align::kRight}) {
      const double from = align == Align::kLeft ? at.x + 6 : at.x - 6 - width;
      const Box box = {from, at.y - half, from + width, at.y + half};
      const bool free = box.left >= plan.frame.left && box.right <= plan.outer.right &&
                        std::none_of(taken.begin(), taken.end(), [&box](const Box& other) {
                          return box.left < other.right && box.right > other.left &&
                                 box.top < other.bottom && box.bottom > other.top;
                        });
      if (!free) continue;
      taken.push_back(box);
      canvas.text(label, {from, at.y}, {kSmallSize, Align::kLeft, kInk});
      placed = true;
      break;
    }
    if (!placed) ++left;
  }
  if (left > 0) {
    notes.add("labelsLeftOut", text::counted(left, "label", "labels") + " of " + nameOf(series) +
                                   (left == 1 ? " has" : " have") + " no room in the figure");
  }
}

void drawOne(Canvas& canvas, const Plan& plan, const Palette& palette, const Series& series,
             Notes& notes) {
  const Stroke stroke = palette.of(series);
  Bars bars(plan.frame);
  Path centres, without;  // points, and those that have no limits where others do
  std::size_t outside = 0, infinite = 0;
  const auto limitAt = [](const std::vector<double>& limits, std::size_t i) {
    return i < limits.size() ? limits[i] : NAN;
  };
  const bool limited = !series.left.empty() || !series.right.empty() || !series.lower.empty() ||
                       !series.upper.empty();
  for (std::size_t i = 0; i < std::min(series.x.size(), series.y.size()); ++i) {
    const Point at = plan.at(series.x[i], series.y[i]);
    if (isBeyond(at)) {
      bars.add({std::clamp(at.x, plan.frame.left, plan.frame.right),
                std::clamp(at.y, plan.frame.top, plan.frame.bottom)},
               at);
      ++infinite;
    } else if (!std::isfinite(at.x) || !std::isfinite(at.y)) {
      continue;
    }
    bool any = false;
    for (const double limit : {limitAt(series.left, i), limitAt(series.right, i)}) {
      const double x = plan.atX(limit);
      if (std::isnan(x)) continue;
      bars.add({std::clamp(at.x, plan.frame.left, plan.frame.right), at.y}, {x, at.y});
      any = true;
    }
    for (const double limit : {limitAt(series.lower, i), limitAt(series.upper, i)}) {
      const double y = plan.atY(limit);
      if (std::isnan(y)) continue;
      bars.add({at.x, std::clamp(at.y, plan.frame.top, plan.frame.bottom)}, {at.x, y});
      any = true;
    }
    if (isBeyond(at)) continue;
    if (!inside(at, plan.frame)) {
      ++outside;
    } else {
      (limited && !any ? without : centres).push_back(at);
    }
  }
  bars.draw(canvas, stroke.colour, series.name);
  const Look look = lookOf(centres.size() + without.size());
  // Overlapping outlines would fill one another in.
  const Marker marker = look.opacity < 1 && series.name.empty() ? Marker::kCircle : stroke.marker;
  canvas.markers(centres, marker, look.radius, stroke.colour, look.opacity,
                 series.name.empty() ? "points" : series.name);
  canvas.markers(without, Marker::kOpenSquare, look.radius, stroke.colour, 1,
                 series.name.empty() ? "reference level" : series.name + ", reference level");
  if (!plan.rows()) drawLabels(canvas, plan, series, notes);
  const auto noteArrows = [&notes](std::size_t arrows, const char* one, const char* many) {
    if (arrows == 0) return;
    notes.add("beyondFrame", text::counted(arrows, one, many) + " beyond the figure's frame and " +
                                 (arrows == 1 ? "is an arrow" : "are arrows"));
  };
  noteArrows(infinite, "infinite value lies", "infinite values lie");
  noteArrows(bars.arrows() - infinite, "limit lies", "limits lie");
  if (outside > 0) {
    notes.add("beyondFrame", text::counted(outside, "point", "points") + " of " + nameOf(series) +
                                 (outside == 1 ? " lies" : " lie") + " outside the figure's frame");
  }
}

}  // namespace

void drawPoints(Canvas& canvas, const Plan& plan, const Palette& palette, Notes& notes) {
  for (const Series& series : plan.panel.series) {
    if (series.kind == SeriesKind::kPoints) drawOne(canvas, plan, palette, series, notes);
  }
}

}  // namespace survmeth::pictures
