#include "pictures/legend.h"

#include <algorithm>

#include "pictures/lettering.h"
#include "pictures/plan.h"

namespace survmeth::pictures {
namespace {

using report::SeriesKind;

constexpr double kSample = 34, kBetween = 22, kRowGap = 2, kUnder = 6;

}  // namespace

Legend::Legend(const report::Figure& figure, const Palette& palette, double width) {
  for (const report::Panel& panel : figure.panels) {
    for (const report::Series& series : panel.series) {
      if (series.name.empty()) continue;
      auto entry = std::find_if(entries_.begin(), entries_.end(),
                                [&series](const Entry& e) { return e.name == series.name; });
      if (entry == entries_.end()) {
        entries_.push_back({series.name, {}, palette.of(series)});
        entry = entries_.end() - 1;
      }
      const SeriesKind kind = series.kind;
      entry->points = entry->points || kind == SeriesKind::kPoints;
      entry->area = entry->area || kind == SeriesKind::kArea || kind == SeriesKind::kBars ||
                    kind == SeriesKind::kBand;
      entry->line = entry->line || kind == SeriesKind::kStep || kind == SeriesKind::kLine ||
                    kind == SeriesKind::kSegments;
      entry->guide = entry->guide || series.guide;
    }
  }
  if (entries_.empty()) return;
  double widest = 0;
  for (Entry& entry : entries_) {
    entry.lines = linesOf(entry.name, kTickSize, width - kSample - 6);
    widest = std::max(widest, widestOf(entry.lines, kTickSize));
  }
  column_ = kSample + 6 + widest + kBetween;
  const auto most = static_cast<std::size_t>(std::max((width + kBetween) / column_, 1.0));
  columns_ = std::min(most, entries_.size());
  // No lonely last entry where the rows can be even.
  const std::size_t rows = (entries_.size() + columns_ - 1) / columns_;
  columns_ = (entries_.size() + rows - 1) / rows;
  rows_.assign(rows, 0);
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    double& row = rows_[i / columns_];
    row = std::max(row, heightOf(entries_[i].lines.size(), kTickSize) + kRowGap);
  }
  height_ = kUnder;
  for (const double row : rows_) height_ += row;
}

void Legend::draw(Canvas& canvas, Point upperLeft) const {
  double top = upperLeft.y;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if (i > 0 && i % columns_ == 0) top += rows_[i / columns_ - 1];
    const Entry& entry = entries_[i];
    const double left = upperLeft.x + column_ * static_cast<double>(i % columns_);
    const double middle = top + heightOf(1, kTickSize) / 2;
    const std::string what = "legend of " + entry.name;
    if (entry.area && !entry.line) {
      canvas.area({{left, middle - 4},
                   {left, middle + 4},
                   {left + kSample, middle + 4},
                   {left + kSample, middle - 4}},
                  entry.stroke.colour, 0.55, what);
    }
    if (entry.line) {
      canvas.lines({{{left, middle}, {left + kSample, middle}}},
                   {entry.stroke.colour, entry.guide ? 1.1 : 1.7, entry.stroke.dash}, what);
    }
    if (entry.points) {
      canvas.markers({{left + kSample / 2, middle}}, entry.stroke.marker, 3.4, entry.stroke.colour,
                     1, what);
    }
    canvas.block(entry.lines, {left + kSample + 6, top}, {kTickSize, Align::kLeft, kInk});
  }
}

}  // namespace survmeth::pictures
