// Curves, areas, segments and bars.
#include "pictures/series.h"

#include <algorithm>
#include <cmath>

#include "pictures/clip.h"
#include "text/words.h"

namespace survmeth::pictures {
namespace {

using report::Series;
using report::SeriesKind;

constexpr double kCurve = 1.7, kThin = 1.1;  // widths of lines
constexpr double kCensored = 7;              // height of the tick at a censoring
constexpr double kNearest = 2;               // points between ticks that are still two
constexpr double kLonely = 3.4;              // radius of a curve that is one point
constexpr double kFinest = 0.05;             // of a point: no print shows less

// Where each censoring meets its curve, those that would stand on one another once.
std::vector<Path> censoringTicks(const Plan& plan, const Series& series) {
  std::vector<double> times = series.ticks;
  std::sort(times.begin(), times.end());
  std::vector<Path> ticks;
  double last = -1e9;
  for (const double time : times) {
    const auto after = std::upper_bound(series.x.begin(), series.x.end(), time);
    if (after == series.x.begin()) continue;
    const auto row = static_cast<std::size_t>(after - series.x.begin()) - 1;
    if (row >= series.y.size()) continue;
    const Point at = plan.at(time, series.y[row]);
    if (!inside(at, plan.frame) || at.x - last < kNearest) continue;
    last = at.x;
    ticks.push_back({{at.x, at.y - kCensored / 2}, {at.x, at.y + kCensored / 2}});
  }
  return ticks;
}

std::vector<Path> clippedAll(const Path& path, const Plan& plan) {
  return clippedLine(thinned(path), plan.frame);
}

// Stacked areas: each from the sum of those before it.
void drawAreas(Canvas& canvas, const Plan& plan, const Palette& palette) {
  std::vector<double> floor;
  for (const Series& series : plan.panel.series) {
    if (series.kind != SeriesKind::kArea) continue;
    const std::size_t n = std::min(series.x.size(), series.y.size());
    floor.resize(std::max(floor.size(), n), 0);
    std::vector<double> top(floor.begin(), floor.begin() + static_cast<std::ptrdiff_t>(n));
    for (std::size_t i = 0; i < n; ++i) top[i] += std::isfinite(series.y[i]) ? series.y[i] : 0;
    const auto path = [&](const std::vector<double>& y) {
      return series.stepped ? stepPath(plan, series.x, y) : linePath(plan, series.x, y);
    };
    Path outline = path(top), back = path(floor);
    outline.insert(outline.end(), back.rbegin(), back.rend());
    const Stroke stroke = palette.of(series);
    canvas.area(clippedArea(outline, plan.frame), stroke.colour, palette.grey() ? 0.45 : 0.55,
                series.name);
    canvas.lines(clippedAll(path(top), plan), {stroke.colour, kThin, ""}, series.name);
    std::copy(top.begin(), top.end(), floor.begin());
  }
}

void drawBars(Canvas& canvas, const Plan& plan, const Palette& palette, const Series& series) {
  const bool across = plan.rows();
  const std::size_t n = std::min(series.x.size(), series.y.size());
  // As wide as the nearest neighbours allow.
  double nearest = across ? plan.rowHeight : plan.frame.width() / std::max<double>(2, n);
  std::vector<double> at;
  for (std::size_t i = 0; i < n; ++i) {
    at.push_back(across ? plan.atY(series.y[i]) : plan.atX(series.x[i]));
  }
  std::sort(at.begin(), at.end());
  for (std::size_t i = 1; i < at.size(); ++i) {
    if (at[i] - at[i - 1] > kFinest) nearest = std::min(nearest, at[i] - at[i - 1]);
  }
  const double half = std::max(0.4 * nearest, 0.5);
  const Box& frame = plan.frame;
  for (std::size_t i = 0; i < n; ++i) {
    const Point to = plan.at(series.x[i], series.y[i]);
    if (!std::isfinite(to.x) || !std::isfinite(to.y)) continue;
    // A scale without 0 has its bars stand on the frame.
    const double zero = across ? plan.atX(0) : plan.atY(0);
    const double from = std::isfinite(zero) ? zero : across ? frame.left : frame.bottom;
    const Path bar = across ? Path{{from, to.y - half},
                                   {to.x, to.y - half},
                                   {to.x, to.y + half},
                                   {from, to.y + half}}
                            : Path{{to.x - half, from},
                                   {to.x - half, to.y},
                                   {to.x + half, to.y},
                                   {to.x + half, from}};
    canvas.area(clippedArea(bar, frame), palette.of(series).colour, 0.7, series.name);
  }
}

void drawSegments(Canvas& canvas, const Plan& plan, const Pen& pen, const Series& series) {
  std::vector<Path> paths;
  const std::size_t n =
      std::min({series.x.size(), series.y.size(), series.right.size(), series.upper.size()});
  for (std::size_t i = 0; i < n; ++i) {
    const Path whole = {plan.at(series.x[i], series.y[i]),
                        plan.at(series.right[i], series.upper[i])};
    for (Path& part : clippedLine(whole, plan.frame)) paths.push_back(std::move(part));
  }
  canvas.lines(paths, pen, series.name);
}

// A curve all of whose corners are one place has no length; a marker shows where it is.
void drawCurve(Canvas& canvas, const Plan& plan, const Stroke& stroke, const Series& series,
               const Path& path, Notes& notes) {
  const Path kept = thinned(path);
  canvas.lines(clippedLine(kept, plan.frame),
               {stroke.colour, series.guide ? kThin : kCurve, stroke.dash}, series.name);
  const Point* first = nullptr;
  for (const Point& p : kept) {
    if (!std::isfinite(p.x) || !std::isfinite(p.y)) continue;
    if (first == nullptr) first = &p;
    if (std::abs(p.x - first->x) >= kFinest || std::abs(p.y - first->y) >= kFinest) return;
  }
  if (first == nullptr || series.guide || !inside(*first, plan.frame)) return;
  canvas.markers({*first}, stroke.marker, kLonely, stroke.colour, 1, series.name);
  notes.add("curveOfOnePoint",
            "the curve of " + nameOf(series) + " is one point: there is nothing to join it to",
            {series.name});
}

// Numbers that the scales have no place for, and pairs without a partner.
void countLeftOut(const Plan& plan, const Series& series, Notes& notes) {
  if (series.kind == SeriesKind::kBand) return;
  std::size_t left = 0;
  const std::size_t n = std::min(series.x.size(), series.y.size());
  for (std::size_t i = 0; i < n; ++i) {
    const Point at = plan.at(series.x[i], series.y[i]);
    if (series.kind == SeriesKind::kPoints && isBeyond(at)) continue;  // an arrow
    if (!std::isfinite(at.x) || !std::isfinite(at.y)) ++left;
  }
  if (left > 0) {
    notes.add("valuesLeftOut",
              text::counted(left, "value", "values") + " of " + nameOf(series) +
                  (left == 1 ? " has" : " have") + " no place in the figure",
              {series.name});
  }
}

}  // namespace

void Notes::add(const std::string& code, const std::string& text,
                const std::vector<std::string>& names) {
  const bool said = std::any_of(notes_.begin(), notes_.end(),
                                [&text](const report::Note& note) { return note.text == text; });
  if (!said) notes_.push_back({code, text, names});
}

std::string nameOf(const Series& series) {
  return series.name.empty() ? "a series" : text::quote(series.name);
}

Path stepPath(const Plan& plan, const std::vector<double>& x, const std::vector<double>& y) {
  Path path;
  double level = NAN;
  for (std::size_t i = 0; i < std::min(x.size(), y.size()); ++i) {
    const Point at = plan.at(x[i], y[i]);
    if (std::isfinite(level)) path.push_back({at.x, level});
    path.push_back(at);
    level = at.y;
  }
  return path;
}

Path linePath(const Plan& plan, const std::vector<double>& x, const std::vector<double>& y) {
  Path path;
  for (std::size_t i = 0; i < std::min(x.size(), y.size()); ++i) {
    path.push_back(plan.at(x[i], y[i]));
  }
  return path;
}

Path thinned(const Path& path) {
  Path kept;
  for (std::size_t i = 0; i < path.size(); ++i) {
    const bool last = i + 1 == path.size() || !std::isfinite(path[i + 1].x + path[i + 1].y);
    if (!kept.empty() && !last && std::abs(path[i].x - kept.back().x) < kFinest &&
        std::abs(path[i].y - kept.back().y) < kFinest) {
      continue;
    }
    kept.push_back(path[i]);
  }
  return kept;
}

void drawSeries(Canvas& canvas, const Plan& plan, const Palette& palette, Notes& notes) {
  drawAreas(canvas, plan, palette);
  drawBands(canvas, plan, palette, notes);
  // Points lie under the lines drawn through them.
  drawPoints(canvas, plan, palette, notes);
  for (const Series& series : plan.panel.series) {
    countLeftOut(plan, series, notes);
    const Stroke stroke = palette.of(series);
    switch (series.kind) {
      case SeriesKind::kStep:
        drawCurve(canvas, plan, stroke, series, stepPath(plan, series.x, series.y), notes);
        canvas.lines(censoringTicks(plan, series), {stroke.colour, 1.1, ""},
                     series.name.empty() ? "censored" : series.name + ", censored");
        break;
      case SeriesKind::kLine:
        drawCurve(canvas, plan, stroke, series, linePath(plan, series.x, series.y), notes);
        break;
      case SeriesKind::kSegments:
        drawSegments(canvas, plan, {stroke.colour, series.guide ? kThin : kCurve, stroke.dash},
                     series);
        break;
      case SeriesKind::kBars:
        drawBars(canvas, plan, palette, series);
        break;
      case SeriesKind::kBand:
      case SeriesKind::kArea:
      case SeriesKind::kPoints:
        break;
    }
  }
}

}  // namespace survmeth::pictures
