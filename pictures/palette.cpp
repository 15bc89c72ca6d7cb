#include "pictures/palette.h"

#include <charconv>
#include <iterator>

namespace survmeth::pictures {
namespace {

// The first seven are Okabe and Ito's (2008), without the yellow that paper does not show.
constexpr const char* kColours[kStrokes] = {"#0072b2", "#d55e00", "#009e73", "#cc79a7",
                                            "#222222", "#e69f00", "#56b4e9", "#8c564b",
                                            "#6a3d9a", "#7a9a01", "#808080", "#b2182b"};
constexpr const char* kGreys[kStrokes] = {"#000000", "#808080", "#404040", "#9a9a9a",
                                          "#000000", "#606060", "#9a9a9a", "#404040",
                                          "#808080", "#000000", "#606060", "#9a9a9a"};
constexpr const char* kDashes[kStrokes] = {"", "7,3", "2,2.5", "9,3,2,3", "12,4", "5,2,2,2,2,2",
                                           "", "7,3", "2,2.5", "9,3,2,3", "12,4", "5,2,2,2,2,2"};
// Greys repeat, so no two may share both grey and dash.
constexpr const char* kGreyDashes[kStrokes] = {"",         "",   "7,3",  "2,2.5", "2,2.5",
                                               "9,3,2,3",  "",   "12,4", "7,3",   "5,2,2,2,2,2",
                                               "12,4,2,4", "4,4"};
constexpr Marker kMarkers[] = {Marker::kCircle,       Marker::kOpenSquare, Marker::kTriangle,
                               Marker::kOpenDiamond,  Marker::kSquare,     Marker::kOpenCircle,
                               Marker::kOpenTriangle, Marker::kDiamond};

}  // namespace

std::string tinted(const std::string& colour) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string result = "#";
  for (std::size_t at = 1; at + 1 < colour.size(); at += 2) {
    int part = 0;
    std::from_chars(colour.data() + at, colour.data() + at + 2, part, 16);
    part = (part + 255) / 2;
    result += kDigits[part / 16];
    result += kDigits[part % 16];
  }
  return result;
}

Palette::Palette(const report::Figure& figure, bool grey) : grey_(grey) {
  for (const report::Panel& panel : figure.panels) {
    for (const report::Series& series : panel.series) {
      if (series.guide || series.name.empty()) continue;
      strokes_.try_emplace(series.name, stroke(strokes_.size()));
    }
  }
}

Stroke Palette::stroke(std::size_t i) const {
  const std::size_t at = i % kStrokes;
  return {grey_ ? kGreys[at] : kColours[at], grey_ ? kGreyDashes[at] : kDashes[at],
          kMarkers[i % std::size(kMarkers)]};
}

Stroke Palette::of(const report::Series& series) const {
  if (series.guide) return {kGuide, "4,3", Marker::kOpenCircle};
  const auto found = strokes_.find(series.name);
  if (found != strokes_.end()) return found->second;
  // Data without a name stand back behind the lines drawn through them.
  if (series.kind == report::SeriesKind::kPoints && series.left.empty()) {
    return {"#444444", "", Marker::kOpenCircle};
  }
  return {grey_ ? "#333333" : "#0072b2", "", Marker::kSquare};
}

const Stroke* Palette::named(const std::string& name) const {
  const auto found = strokes_.find(name);
  return found == strokes_.end() ? nullptr : &found->second;
}

}  // namespace survmeth::pictures
