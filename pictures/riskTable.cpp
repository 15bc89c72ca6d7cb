#include "pictures/riskTable.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "pictures/lettering.h"
#include "report/numbers.h"

namespace survmeth::pictures {
namespace {

constexpr double kSample = 22;     // of the line before a row's name
constexpr double kMostName = 0.3;  // of the panel's width
constexpr double kOver = 10, kRowGap = 2;

std::string countText(double count) {
  return std::isfinite(count) ? report::brief(count, 4) : std::string("−");
}

}  // namespace

RiskRows::RiskRows(report::RiskTable table, double width) : table_(std::move(table)) {
  title_ = linesOf(table_.title, kTickSize, width - 40);
  height_ = kOver + heightOf(title_.size(), kTickSize);
  double widest = 0;
  for (std::size_t i = 0; i < table_.rows.size(); ++i) {
    names_.push_back(linesOf(table_.rows[i], kSmallSize, width * kMostName));
    widest = std::max(widest, widestOf(names_.back(), kSmallSize));
    height_ += heightOf(std::max<std::size_t>(names_.back().size(), 1), kSmallSize) + kRowGap;
  }
  double first = 0;
  for (const std::vector<double>& row : table_.counts) {
    for (const double count : row) first = std::max(first, textWidth(countText(count), kSmallSize));
  }
  names_width_ = kSample + 6 + widest;
  left_ = names_width_ + 12 + first / 2;
}

void RiskRows::draw(Canvas& canvas, const Plan& plan, const Palette& palette, double top,
                    Notes& notes) const {
  double least = 1e9, widest = 0;  // distance of neighbouring columns, and the widest number
  std::vector<double> places;
  for (const double at : table_.breaks) {
    const double x = plan.atX(at);
    places.push_back(x >= plan.frame.left - 0.5 && x <= plan.frame.right + 0.5 ? x : NAN);
    if (places.size() > 1 && std::isfinite(places[places.size() - 2]) && std::isfinite(x)) {
      least = std::min(least, std::abs(x - places[places.size() - 2]));
    }
  }
  for (const std::vector<double>& row : table_.counts) {
    for (const double count : row) {
      widest = std::max(widest, textWidth(countText(count), kSmallSize));
    }
  }
  const auto stride = static_cast<std::size_t>(
      std::clamp(std::ceil((widest + 6) / std::max(least, 1.0)), 1.0, 1e6));
  if (stride > 1 && places.size() > 1) {
    notes.add("countsLeftOut", "the figure's table shows one in " + std::to_string(stride) +
                                   " of its columns: there is no room for all");
  }
  const double left = plan.outer.left;
  double y = top + kOver;
  canvas.block(title_, {left, y}, {kTickSize, Align::kLeft, kInk});
  y += heightOf(title_.size(), kTickSize);
  for (std::size_t r = 0; r < names_.size(); ++r) {
    const Stroke* stroke = palette.named(table_.rows[r]);
    const double middle = y + heightOf(1, kSmallSize) / 2;
    if (stroke != nullptr) {
      canvas.lines({{{left, middle}, {left + kSample, middle}}},
                   {stroke->colour, 1.7, stroke->dash}, "row of " + table_.rows[r]);
    }
    const bool heading = r >= table_.counts.size() || table_.counts[r].empty();
    canvas.block(names_[r], {left + (heading || stroke == nullptr ? 0 : kSample + 6), y},
                 {kSmallSize, Align::kLeft, kInk});
    for (std::size_t b = 0; !heading && b < std::min(places.size(), table_.counts[r].size());
         b += stride) {
      if (std::isnan(places[b])) continue;
      canvas.text(countText(table_.counts[r][b]), {places[b], middle},
                  {kSmallSize, Align::kCentre, kInk});
    }
    y += heightOf(std::max<std::size_t>(names_[r].size(), 1), kSmallSize) + kRowGap;
  }
}

}  // namespace survmeth::pictures
