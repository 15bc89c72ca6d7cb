#include "pictures/clip.h"

#include <algorithm>
#include <cmath>

namespace survmeth::pictures {
namespace {

constexpr double kEdge = 1e-6;  // points: rounding must not cut what lies on the frame

struct Part {
  double from = 0, to = 1;
};

// Narrows the part of a segment to where start + t * way <= limit.
bool narrow(double start, double way, double limit, Part& part) {
  if (way == 0) return start <= limit;
  const double t = (limit - start) / way;
  if (way > 0) {
    part.to = std::min(part.to, t);
  } else {
    part.from = std::max(part.from, t);
  }
  return part.from <= part.to;
}

bool within(const Point& a, const Point& b, const Box& frame, Part& part) {
  const double dx = b.x - a.x, dy = b.y - a.y;
  return narrow(a.x, dx, frame.right + kEdge, part) &&
         narrow(-a.x, -dx, -frame.left + kEdge, part) &&
         narrow(a.y, dy, frame.bottom + kEdge, part) && narrow(-a.y, -dy, -frame.top + kEdge, part);
}

}  // namespace

bool inside(const Point& point, const Box& frame) {
  return point.x >= frame.left - kEdge && point.x <= frame.right + kEdge &&
         point.y >= frame.top - kEdge && point.y <= frame.bottom + kEdge;
}

std::vector<Path> clippedLine(const Path& path, const Box& frame) {
  std::vector<Path> parts;
  bool joined = false;  // whether the last part ends at the last point
  for (std::size_t i = 1; i < path.size(); ++i) {
    const Point &a = path[i - 1], &b = path[i];
    Part part;
    const bool finite =
        std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(b.x) && std::isfinite(b.y);
    if (!finite || !within(a, b, frame, part)) {
      joined = false;
      continue;
    }
    const auto at = [&a, &b](double t) {
      return Point{a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
    };
    if (!joined || part.from > 0) parts.push_back({part.from > 0 ? at(part.from) : a});
    parts.back().push_back(part.to < 1 ? at(part.to) : b);
    joined = part.to >= 1;
  }
  return parts;
}

Path clippedArea(Path outline, const Box& frame) {
  // One edge of the frame after another (Sutherland & Hodgman, CACM 17 (1974) 32-42).
  const auto cut = [&outline](auto depth) {
    Path kept;
    for (std::size_t i = 0; i < outline.size(); ++i) {
      const Point &a = outline[i], &b = outline[(i + 1) % outline.size()];
      const double da = depth(a), db = depth(b);
      if (da >= 0) kept.push_back(a);
      if ((da >= 0) != (db >= 0)) {
        const double t = da / (da - db);
        kept.push_back({a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)});
      }
    }
    outline = std::move(kept);
  };
  cut([&frame](const Point& p) { return p.x - frame.left; });
  cut([&frame](const Point& p) { return frame.right - p.x; });
  cut([&frame](const Point& p) { return p.y - frame.top; });
  cut([&frame](const Point& p) { return frame.bottom - p.y; });
  return outline;
}

bool isBeyond(const Point& point) {
  return (std::isinf(point.x) && std::isfinite(point.y)) ||
         (std::isfinite(point.x) && std::isinf(point.y));
}

}  // namespace survmeth::pictures
