// Grid, axes, their labels and the references of a panel.
#include <cmath>

#include "pictures/lettering.h"
#include "pictures/palette.h"
#include "pictures/plan.h"

namespace survmeth::pictures {
namespace {

const Pen kAxisPen{kFrame, 0.9, ""};

void drawGrid(Canvas& canvas, const Plan& plan) {
  std::vector<Path> grid;
  const Box& frame = plan.frame;
  if (plan.rows()) {
    for (const Tick& tick : plan.xTicks.marks) {
      const double x = plan.atX(tick.value);
      grid.push_back({{x, frame.top}, {x, frame.bottom}});
    }
  } else {
    for (const Tick& tick : plan.yTicks.marks) {
      const double y = plan.atY(tick.value);
      grid.push_back({{frame.left, y}, {frame.right, y}});
    }
  }
  canvas.lines(grid, {kGrid, 0.7, ""}, "grid");
}

void drawReferences(Canvas& canvas, const Plan& plan) {
  const Box& frame = plan.frame;
  std::vector<Path> lines;
  for (const report::Reference& reference : plan.panel.references) {
    const double at = reference.vertical ? plan.atX(reference.at) : plan.atY(reference.at);
    if (reference.vertical && at >= frame.left - 0.01 && at <= frame.right + 0.01) {
      lines.push_back({{at, frame.top}, {at, frame.bottom}});
    } else if (!reference.vertical && at >= frame.top - 0.01 && at <= frame.bottom + 0.01) {
      lines.push_back({{frame.left, at}, {frame.right, at}});
    }
  }
  canvas.lines(lines, {"#666666", 1, "5,3"}, "reference");
  for (const Mark& mark : sideMarks(plan)) {
    const double top = mark.at - heightOf(mark.lines.size(), kTickSize) / 2;
    canvas.block(mark.lines, {frame.right + 8, top}, {kTickSize, Align::kLeft, kInk});
  }
  const double row = heightOf(1, kTickSize);
  std::size_t rows = 0;
  const std::vector<TopMark> marks = topMarks(plan);
  for (const TopMark& mark : marks) rows = std::max(rows, mark.row + 1);
  for (const TopMark& mark : marks) {
    const double up = static_cast<double>(rows - mark.row) - 0.5;
    canvas.text(mark.text, {mark.at, frame.top - kGap - up * row},
                {kTickSize, Align::kCentre, kInk});
  }
}

void drawXAxis(Canvas& canvas, const Plan& plan) {
  const Box& frame = plan.frame;
  const double under = frame.bottom + kTickLength + kGap;
  std::vector<Path> marks;
  for (const Tick& tick : plan.xTicks.marks) {
    const double x = plan.atX(tick.value);
    marks.push_back({{x, frame.bottom}, {x, frame.bottom + kTickLength}});
    canvas.text(tick.text, {x, under + heightOf(1, kTickSize) / 2},
                {kTickSize, Align::kCentre, kInk});
  }
  canvas.lines(marks, kAxisPen, "x ticks");
  for (std::size_t i = 0; i < plan.xCategories.size(); ++i) {
    canvas.block(plan.xCategories[i], {plan.atX(static_cast<double>(i)), under},
                 {kTickSize, Align::kCentre, kInk});
  }
  canvas.lines({{{frame.left, frame.bottom}, {frame.right, frame.bottom}}}, kAxisPen, "x axis");
  // Centred under the frame unless it is wider than that.
  const double half = widestOf(plan.xLabel, kLabelSize) / 2;
  const double middle = std::min((frame.left + frame.right) / 2, plan.outer.right - half);
  canvas.block(plan.xLabel,
               {std::max(middle, plan.outer.left + half),
                frame.bottom + plan.below - heightOf(plan.xLabel.size(), kLabelSize)},
               {kLabelSize, Align::kCentre, kInk});
}

void drawRows(Canvas& canvas, const Plan& plan) {
  const Box& frame = plan.frame;
  const double left = frame.left - kTickLength - kGap - plan.tickWidth;
  const auto centred = [&](const std::vector<std::string>& lines, double x, std::size_t row,
                           const std::string& colour) {
    canvas.block(lines,
                 {x, frame.top + plan.rowCentres[row] - heightOf(lines.size(), kTickSize) / 2},
                 {kTickSize, Align::kLeft, colour});
  };
  for (const Plan::Heading& heading : plan.headings) {
    canvas.block(heading.lines, {left, frame.top + heading.top}, {kTickSize, Align::kLeft, kInk});
  }
  for (std::size_t i = 0; i < plan.yCategories.size(); ++i) {
    const auto& groups = plan.panel.y.categoryGroups;
    const bool grouped = i < groups.size() && !groups[i].empty();
    centred(plan.yCategories[i], left + (grouped ? kIndent : 0), i, grouped ? "#444444" : kInk);
    centred(plan.column[i], frame.right + 14, i, kInk);
  }
  canvas.block(
      plan.columnHeading,
      {frame.right + 14, frame.top - kGap - heightOf(plan.columnHeading.size(), kTickSize)},
      {kTickSize, Align::kLeft, "#444444"});
}

void drawYAxis(Canvas& canvas, const Plan& plan) {
  const Box& frame = plan.frame;
  if (plan.rows()) {
    drawRows(canvas, plan);
  } else {
    std::vector<Path> marks;
    for (const Tick& tick : plan.yTicks.marks) {
      const double y = plan.atY(tick.value);
      marks.push_back({{frame.left - kTickLength, y}, {frame.left, y}});
      canvas.text(tick.text, {frame.left - kTickLength - kGap, y},
                  {kTickSize, Align::kRight, kInk});
    }
    canvas.lines(marks, kAxisPen, "y ticks");
    canvas.lines({{{frame.left, frame.top}, {frame.left, frame.bottom}}}, kAxisPen, "y axis");
  }
  const double room = kTickLength + kGap + plan.tickWidth + 2 * kGap;
  canvas.block(plan.yLabel,
               {frame.left - room - heightOf(plan.yLabel.size(), kLabelSize),
                (frame.top + frame.bottom) / 2},
               {kLabelSize, Align::kCentre, kInk, true});
}

}  // namespace

void drawAxes(Canvas& canvas, const Plan& plan) {
  drawGrid(canvas, plan);
  drawReferences(canvas, plan);
  drawXAxis(canvas, plan);
  drawYAxis(canvas, plan);
  canvas.block(plan.title, {plan.frame.left, plan.outer.top}, {kLabelSize + 1, Align::kLeft, kInk});
}

}  // namespace survmeth::pictures
