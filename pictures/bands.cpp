// Bands of limits. Few are shaded; more would be mud, so that the limits then stand as bars beside
// one another at a few places. Shades of grey blend sooner than colours.
#include <algorithm>
#include <cmath>

#include "pictures/clip.h"
#include "pictures/series.h"
#include "text/words.h"

namespace survmeth::pictures {
namespace {

using report::Series;
using report::SeriesKind;

constexpr std::size_t kMostShaded = 4, kMostGrey = 3;
constexpr double kApart = 5;  // points between the bars of two groups
constexpr double kCap = 1.8;  // half the width of a bar's ends

Path corners(const Plan& plan, const Series& band, const std::vector<double>& y) {
  return band.stepped ? stepPath(plan, band.x, y) : linePath(plan, band.x, y);
}

// A limit that is infinite lies beyond the frame.
Path beyondFrame(Path path, const Box& frame) {
  for (Point& p : path) p.y = std::clamp(p.y, frame.top - 1e4, frame.bottom + 1e4);
  return path;
}

// The runs of rows that have both limits.
std::vector<Series> runsOf(const Plan& plan, const Series& band) {
  std::vector<Series> runs;
  bool open = false;
  const std::size_t n = std::min({band.x.size(), band.lower.size(), band.upper.size()});
  for (std::size_t i = 0; i < n; ++i) {
    // An infinite end reaches to the frame.
    const double x = band.x[i] == INFINITY    ? plan.x.most()
                     : band.x[i] == -INFINITY ? plan.x.least()
                                              : band.x[i];
    const bool there = std::isfinite(plan.atX(x)) && !std::isnan(plan.atY(band.lower[i])) &&
                       !std::isnan(plan.atY(band.upper[i]));
    if (there && !open) {
      runs.emplace_back();
      runs.back().stepped = band.stepped;
    }
    if (there) {
      runs.back().x.push_back(x);
      runs.back().lower.push_back(band.lower[i]);
      runs.back().upper.push_back(band.upper[i]);
    }
    // A step holds to where the next one begins.
    if (!there && open && band.stepped && std::isfinite(plan.atX(x))) {
      runs.back().x.push_back(x);
      runs.back().lower.push_back(runs.back().lower.back());
      runs.back().upper.push_back(runs.back().upper.back());
    }
    open = there;
  }
  return runs;
}

void drawShaded(Canvas& canvas, const Plan& plan, const Palette& palette, const Series& band) {
  const Stroke stroke = palette.of(band);
  const std::string name = band.name.empty() ? "limits" : band.name + ", limits";
  for (const Series& run : runsOf(plan, band)) {
    const Path lower = thinned(beyondFrame(corners(plan, run, run.lower), plan.frame));
    const Path upper = thinned(beyondFrame(corners(plan, run, run.upper), plan.frame));
    Path outline = lower;
    outline.insert(outline.end(), upper.rbegin(), upper.rend());
    canvas.area(clippedArea(outline, plan.frame), stroke.colour, 0.15, name);
    // Edges of the shades' own lightness, or a little darker, part those that overlap.
    std::vector<Path> edges = clippedLine(lower, plan.frame);
    for (Path& part : clippedLine(upper, plan.frame)) edges.push_back(std::move(part));
    canvas.lines(edges, {tinted(stroke.colour), 0.5, ""}, name);
  }
}

// Bar number `i` of `count` at the limits in force between each two ticks of the x axis.
void drawBars(Canvas& canvas, const Plan& plan, const Palette& palette, const Series& band,
              std::size_t i, std::size_t count) {
  const std::vector<Tick>& ticks = plan.xTicks.marks;
  std::vector<Path> bars;
  for (std::size_t t = 0; t + 1 < ticks.size(); ++t) {
    const double from = plan.atX(ticks[t].value), to = plan.atX(ticks[t + 1].value);
    const double apart = std::min(kApart, 0.9 * (to - from) / static_cast<double>(count));
    const double at =
        (from + to) / 2 + apart * (static_cast<double>(i) - static_cast<double>(count - 1) / 2);
    // The row in force: the last that begins at or before the place.
    std::size_t row = 0;
    const std::size_t n = std::min({band.x.size(), band.lower.size(), band.upper.size()});
    while (row < n && plan.atX(band.x[row]) <= at) ++row;
    if (row == 0 || row == n) continue;  // outside of the band
    double low = plan.atY(band.lower[row - 1]), high = plan.atY(band.upper[row - 1]);
    if (!band.stepped) {
      const double a = plan.atX(band.x[row - 1]), part = (at - a) / (plan.atX(band.x[row]) - a);
      low += part * (plan.atY(band.lower[row]) - low);
      high += part * (plan.atY(band.upper[row]) - high);
    }
    if (std::isnan(low) || std::isnan(high)) continue;
    low = std::clamp(low, plan.frame.top, plan.frame.bottom);
    high = std::clamp(high, plan.frame.top, plan.frame.bottom);
    bars.push_back({{at - kCap, low}, {at + kCap, low}});
    bars.push_back({{at, low}, {at, high}});
    bars.push_back({{at - kCap, high}, {at + kCap, high}});
  }
  canvas.lines(bars, {palette.of(band).colour, 0.9, ""},
               band.name.empty() ? "limits" : band.name + ", limits");
}

}  // namespace

void drawBands(Canvas& canvas, const Plan& plan, const Palette& palette, Notes& notes) {
  std::vector<const Series*> bands;
  for (const Series& series : plan.panel.series) {
    if (series.kind == SeriesKind::kBand) bands.push_back(&series);
  }
  if (bands.size() > kStrokes) {
    notes.add("bandsLeftOut", "the figure shows no limits: those of " +
                                  text::counted(bands.size(), "group", "groups") +
                                  " would hide the curves");
    return;
  }
  const bool asBars = bands.size() > (palette.grey() ? kMostGrey : kMostShaded);
  if (asBars) {
    notes.add("bandsAsBars", "the figure shows the limits of its " +
                                 text::counted(bands.size(), "group", "groups") +
                                 " as bars at a few places, not as bands");
  }
  for (std::size_t i = 0; i < bands.size(); ++i) {
    if (asBars) {
      drawBars(canvas, plan, palette, *bands[i], i, bands.size());
    } else {
      drawShaded(canvas, plan, palette, *bands[i]);
    }
  }
}

}  // namespace survmeth::pictures
