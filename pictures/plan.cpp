// Measuring a panel.
#include "pictures/plan.h"

#include <algorithm>
#include <cmath>

#include "pictures/lettering.h"
#include "pictures/range.h"

namespace survmeth::pictures {
namespace {

constexpr double kFrameHeight = 330, kTallest = 900, kEqualSide = 420, kRowGap = 9;
constexpr double kSideWidth = 150;    // of references' labels, unless they are too many
constexpr double kMostLeft = 0.36;    // of the panel's width: labels of categories
constexpr double kMostColumn = 0.34;  // and the column right of them

std::string withRemark(const std::string& label, const std::string& remark) {
  return remark.empty() ? label : label + (label.empty() ? "(" : " (") + remark + ")";
}

// Ticks of y for a frame of this height.
Ticks yTicksFor(const Plan& plan, bool percent, double height) {
  if (!plan.panel.y.ticks.empty()) return ticksAt(plan.y, plan.panel.y.ticks, percent);
  const double room = std::floor(height / 34);
  return ticksOf(plan.y, static_cast<std::size_t>(std::clamp(room, 2.0, 11.0)), percent);
}

// Whether no tick's text reaches another's.
bool fit(const Ticks& ticks, const Scale& scale, double width) {
  double end = -1e9;
  for (const Tick& tick : ticks.marks) {
    const double at = scale.place(tick.value) * width, half = textWidth(tick.text, kTickSize) / 2;
    if (at - half < end + 8) return false;
    end = at + half;
  }
  return true;
}

Ticks xTicksFor(const Plan& plan, bool percent, double width) {
  if (!plan.panel.x.ticks.empty()) {
    Ticks ticks = ticksAt(plan.x, plan.panel.x.ticks, percent);
    // Wanted ticks stay; a text that would touch the one before it goes.
    double end = -1e9;
    for (Tick& tick : ticks.marks) {
      const double at = plan.x.place(tick.value) * width;
      const double half = textWidth(tick.text, kTickSize) / 2;
      if (at - half < end + 4) {
        tick.text.clear();
      } else {
        end = at + half;
      }
    }
    return ticks;
  }
  Ticks ticks;
  for (std::size_t wanted = 10; wanted >= 2; --wanted) {
    ticks = ticksOf(plan.x, wanted, percent);
    if (fit(ticks, plan.x, width)) break;
  }
  return ticks;
}

// Labels of the points at each category on y, and what heads them.
void planColumn(Plan& plan, double width) {
  plan.column.resize(plan.panel.y.categories.size());
  for (const report::Series& series : plan.panel.series) {
    for (std::size_t i = 0; i < std::min(series.labels.size(), series.y.size()); ++i) {
      const double row = std::round(series.y[i]);
      if (!(row >= 0 && row < static_cast<double>(plan.column.size()))) continue;
      for (std::string& line : linesOf(series.labels[i], kTickSize, width * kMostColumn)) {
        plan.column[static_cast<std::size_t>(row)].push_back(std::move(line));
      }
    }
    if (!series.labelsHeading.empty() && plan.columnHeading.empty()) {
      plan.columnHeading = linesOf(series.labelsHeading, kTickSize, width * kMostColumn);
    }
  }
  plan.columnWidth = widestOf(plan.columnHeading, kTickSize);
  for (const auto& lines : plan.column) {
    plan.columnWidth = std::max(plan.columnWidth, widestOf(lines, kTickSize));
  }
}

// Rows of the categories on y, their groups' headings among them; the height of all.
double planRows(Plan& plan, double width, std::optional<double> height) {
  const report::Axis& axis = plan.panel.y;
  std::size_t most = 1;
  for (std::size_t i = 0; i < axis.categories.size(); ++i) {
    const bool grouped = i < axis.categoryGroups.size() && !axis.categoryGroups[i].empty();
    plan.yCategories.push_back(
        linesOf(axis.categories[i], kTickSize, width * kMostLeft - (grouped ? kIndent : 0)));
    most = std::max({most, plan.yCategories.back().size(), plan.column[i].size()});
    plan.tickWidth = std::max(
        plan.tickWidth, widestOf(plan.yCategories.back(), kTickSize) + (grouped ? kIndent : 0));
  }
  plan.rowHeight = heightOf(most, kTickSize) + kRowGap;
  double at = kRowGap / 2;
  std::string group;
  for (std::size_t i = 0; i < axis.categories.size(); ++i) {
    const std::string& own = i < axis.categoryGroups.size() ? axis.categoryGroups[i] : "";
    if (own != group && !own.empty()) {
      plan.headings.push_back({linesOf(own, kTickSize, width * kMostLeft), at + kGap});
      at += heightOf(plan.headings.back().lines.size(), kTickSize) + kGap;
      plan.tickWidth = std::max(plan.tickWidth, widestOf(plan.headings.back().lines, kTickSize));
    } else if (own != group) {
      at += kRowGap;
    }
    group = own;
    plan.rowCentres.push_back(at + plan.rowHeight / 2);
    at += plan.rowHeight;
  }
  at += kRowGap / 2;
  const double stretch = height && *height > at ? *height / at : 1;
  for (double& centre : plan.rowCentres) centre *= stretch;
  for (Plan::Heading& heading : plan.headings) heading.top *= stretch;
  return at * stretch;
}

void planXCategories(Plan& plan, double width) {
  const std::vector<std::string>& names = plan.panel.x.categories;
  const double slot = width / static_cast<double>(std::max<std::size_t>(names.size(), 1)) - 6;
  for (const std::string& name : names) {
    plan.xCategories.push_back(linesOf(name, kTickSize, std::max(slot, 2 * kTickSize)));
  }
}

// As narrow as leaves their labels no higher together than the frame, if that can be.
void planSide(Plan& plan, double width, double tall) {
  for (const double lineWidth : {kSideWidth, 0.3 * width, 0.4 * width, 0.5 * width}) {
    double widest = 0;
    plan.sideHeight = 0;
    for (const report::Reference& reference : plan.panel.references) {
      if (reference.vertical) continue;
      const std::vector<std::string> lines = linesOf(reference.label, kTickSize, lineWidth);
      widest = std::max(widest, widestOf(lines, kTickSize));
      plan.sideHeight += heightOf(lines.size(), kTickSize);
    }
    plan.sideLine = lineWidth;
    plan.sideWidth = widest > 0 ? widest + 8 : 0;
    if (plan.sideHeight <= tall) return;
  }
}

}  // namespace

double Plan::atX(double value) const { return frame.left + x.place(value) * frame.width(); }

void Plan::lower(double by) {
  for (double* each : {&outer.top, &outer.bottom, &frame.top, &frame.bottom}) *each += by;
}

double Plan::atY(double value) const {
  if (!rows()) return frame.bottom - y.place(value) * frame.height();
  if (rowCentres.empty() || !std::isfinite(value)) return NAN;
  const double row = std::clamp(std::round(value), 0.0, static_cast<double>(rowCentres.size()) - 1);
  return frame.top + rowCentres[static_cast<std::size_t>(row)] + (value - row) * rowHeight;
}

Plan planOf(const report::Panel& panel, const Style& style, Box outer, double least,
            std::optional<double> height) {
  Plan plan;
  plan.panel = panel;
  plan.outer = outer;
  const Range range = rangeOf(panel);
  plan.x = range.x;
  plan.y = range.y;
  const bool xPercent = panel.x.percent && style.percent;
  const bool yPercent = panel.y.percent && style.percent;
  const double width = outer.width();

  // A label of y too long for four lines makes the frame taller, not narrower.
  const double wanted = textWidth(cleaned(panel.y.label), kLabelSize) / 4;
  double tall = height.value_or(std::clamp(wanted, kFrameHeight, kTallest));
  planSide(plan, width, tall);
  if (!height) tall = std::max(tall, plan.sideHeight);
  if (plan.rows()) {
    planColumn(plan, width);
    tall = planRows(plan, width, height);
  } else {
    plan.yTicks = yTicksFor(plan, yPercent, tall);
    for (const Tick& tick : plan.yTicks.marks) {
      plan.tickWidth = std::max(plan.tickWidth, textWidth(tick.text, kTickSize));
    }
  }
  plan.yLabel =
      linesOf(withRemark(panel.y.label, plan.yTicks.remark), kLabelSize, std::max(tall, 120.0));
  const double labelled =
      plan.yLabel.empty() ? 0 : heightOf(plan.yLabel.size(), kLabelSize) + 2 * kGap;
  const double left = std::max(labelled + plan.tickWidth + kTickLength + kGap, least);
  const double right =
      std::max({16.0, plan.sideWidth, plan.columnWidth > 0 ? plan.columnWidth + 14 : 0});
  plan.frame.left = outer.left + left;
  plan.frame.right = std::max(outer.right - right, plan.frame.left + 60);
  if (panel.equalUnits) {
    // As large as fits: the unit is the same on both axes, whatever their lengths.
    const double xSpan = plan.x.most() - plan.x.least(), ySpan = plan.y.most() - plan.y.least();
    const double aspect = std::isfinite(xSpan) && std::isfinite(ySpan) ? ySpan / xSpan : 1;
    const double widest = std::min(plan.frame.width(), height ? 1e9 : kEqualSide);
    tall = height ? std::min(*height, widest * aspect) : widest * aspect;
    if (!height) tall = std::min(tall, kEqualSide);
    plan.frame.right = plan.frame.left + tall / aspect;
    plan.yTicks = yTicksFor(plan, yPercent, tall);
  }

  plan.title = linesOf(panel.title, kLabelSize + 1, width - left);
  if (panel.x.scale == report::Scale::kCategory) {
    planXCategories(plan, plan.frame.width());
  } else {
    plan.xTicks = xTicksFor(plan, xPercent, plan.frame.width());
  }
  plan.xLabel = linesOf(withRemark(panel.x.label, plan.xTicks.remark), kLabelSize,
                        outer.right - plan.frame.left);

  std::size_t tickLines = 1, markRows = 0;
  for (const auto& lines : plan.xCategories) tickLines = std::max(tickLines, lines.size());
  for (const TopMark& mark : topMarks(plan)) markRows = std::max(markRows, mark.row + 1);
  plan.above =
      (plan.title.empty() ? 0 : heightOf(plan.title.size(), kLabelSize + 1) + kGap) +
      std::max(heightOf(markRows, kTickSize), heightOf(plan.columnHeading.size(), kTickSize)) +
      2 * kGap;
  plan.below = kTickLength + kGap + heightOf(tickLines, kTickSize) + kGap +
               heightOf(plan.xLabel.size(), kLabelSize);
  plan.frame.top = outer.top + plan.above;
  plan.frame.bottom = plan.frame.top + tall;
  plan.outer.bottom = plan.frame.bottom + plan.below;
  return plan;
}

std::vector<Mark> sideMarks(const Plan& plan) {
  std::vector<Mark> marks;
  for (const report::Reference& reference : plan.panel.references) {
    if (reference.vertical || reference.label.empty()) continue;
    const double at = plan.atY(reference.at);
    if (!(at >= plan.frame.top - 1 && at <= plan.frame.bottom + 1)) continue;
    marks.push_back({at, linesOf(reference.label, kTickSize, plan.sideLine)});
  }
  std::stable_sort(marks.begin(), marks.end(),
                   [](const Mark& a, const Mark& b) { return a.at < b.at; });
  const auto half = [](const Mark& mark) { return heightOf(mark.lines.size(), kTickSize) / 2; };
  // Down until each is under the one before, then up again from the frame's lower edge.
  for (std::size_t i = 1; i < marks.size(); ++i) {
    marks[i].at = std::max(marks[i].at, marks[i - 1].at + half(marks[i - 1]) + half(marks[i]));
  }
  double floor = plan.frame.bottom + kTickSize;
  for (std::size_t i = marks.size(); i-- > 0;) {
    marks[i].at = std::min(marks[i].at, floor - half(marks[i]));
    floor = marks[i].at - half(marks[i]);
  }
  return marks;
}

std::vector<TopMark> topMarks(const Plan& plan) {
  std::vector<TopMark> marks;
  std::vector<std::pair<double, double>> taken;  // by mark: its ends
  std::size_t row = 0;
  for (const report::Reference& reference : plan.panel.references) {
    if (!reference.vertical || reference.label.empty()) continue;
    const double at = plan.atX(reference.at);
    if (!(at >= plan.frame.left - 1 && at <= plan.frame.right + 1)) continue;
    for (const std::string& line : linesOf(reference.label, kTickSize, plan.outer.width() / 2)) {
      const double half = textWidth(line, kTickSize) / 2;
      const double middle = std::max(plan.outer.left + half, std::min(at, plan.outer.right - half));
      const bool free = std::none_of(taken.begin(), taken.end(), [&](const auto& other) {
        return middle - half < other.second + 6 && middle + half > other.first - 6;
      });
      if (!free) {
        ++row;
        taken.clear();
      }
      taken.emplace_back(middle - half, middle + half);
      marks.push_back({middle, row, line});
    }
  }
  return marks;
}

}  // namespace survmeth::pictures
