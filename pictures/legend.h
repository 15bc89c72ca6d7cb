// The names of the series beside samples of how they are drawn, between the title and the panels,
// where no curve can run into them.
#ifndef PICTURES_LEGEND_H_
#define PICTURES_LEGEND_H_

#include <string>
#include <vector>

#include "pictures/canvas.h"
#include "pictures/palette.h"
#include "report/report.h"

namespace survmeth::pictures {

class Legend {
 public:
  // Of a figure's named series, in columns as wide as the longest name, within `width`.
  Legend(const report::Figure& figure, const Palette& palette, double width);

  double height() const { return height_; }  // 0 where nothing has a name
  void draw(Canvas& canvas, Point upperLeft) const;

 private:
  struct Entry {
    std::string name;
    std::vector<std::string> lines;
    Stroke stroke;
    bool line = false, points = false, area = false, guide = false;
  };
  std::vector<Entry> entries_;
  std::size_t columns_ = 1;
  double column_ = 0, height_ = 0;
  std::vector<double> rows_;  // heights
};

}  // namespace survmeth::pictures

#endif  // PICTURES_LEGEND_H_
