// Where the parts of a panel stand: its frame, and around it what its axes need.
#ifndef PICTURES_PLAN_H_
#define PICTURES_PLAN_H_

#include <string>
#include <vector>

#include "pictures/canvas.h"
#include "pictures/pictures.h"
#include "pictures/scale.h"
#include "pictures/ticks.h"
#include "report/report.h"

namespace survmeth::pictures {

inline constexpr double kTickSize = 11, kLabelSize = 12, kTitleSize = 15, kSmallSize = 10;
inline constexpr double kTickLength = 5, kGap = 4;
inline constexpr double kIndent = 12;  // of categories under their group's heading

// A reference's label beside the frame, or several that stand at one value.
struct Mark {
  double at;  // points
  std::vector<std::string> lines;
};

struct Plan {
  report::Panel panel;  // as the style has it
  Scale x, y;
  Ticks xTicks, yTicks;
  Box outer, frame;

  std::vector<std::string> title, xLabel, yLabel;
  std::vector<std::vector<std::string>> xCategories, yCategories;
  std::vector<double> rowCentres;  // of the categories on y, from the frame's upper edge
  struct Heading {
    std::vector<std::string> lines;
    double top;
  };
  std::vector<Heading> headings;  // of their groups
  double rowHeight = 0;
  std::vector<std::vector<std::string>> column;  // labels right of the categories on y, by category
  std::vector<std::string> columnHeading;
  double columnWidth = 0, tickWidth = 0;
  double sideLine = 0, sideWidth = 0, sideHeight = 0;  // of the horizontal references' labels
  double above = 0, below = 0;  // room over the frame, and under it without the table

  double atX(double value) const;
  double atY(double value) const;
  Point at(double xValue, double yValue) const { return {atX(xValue), atY(yValue)}; }
  // Down by so much.
  void lower(double by);
  bool rows() const { return panel.y.scale == report::Scale::kCategory; }
};

// A panel between outer.left and outer.right, from outer.top on; the frame is as high as `height`
// says, where one is given, or as suits it. `least` is room at the left that others need.
// Out  outer.bottom  under the axis's label; a table is not in it
Plan planOf(const report::Panel& panel, const Style& style, Box outer, double least,
            std::optional<double> height);

// Labels of the horizontal references, moved apart so that none covers another.
std::vector<Mark> sideMarks(const Plan& plan);
// Of the vertical ones, in the rows above the frame.
struct TopMark {
  double at;  // middle, in points
  std::size_t row;
  std::string text;
};
std::vector<TopMark> topMarks(const Plan& plan);

void drawAxes(Canvas& canvas, const Plan& plan);

}  // namespace survmeth::pictures

#endif  // PICTURES_PLAN_H_
