// Numbers under the x axis, aligned with it.
#ifndef PICTURES_RISKTABLE_H_
#define PICTURES_RISKTABLE_H_

#include <string>
#include <vector>

#include "pictures/canvas.h"
#include "pictures/palette.h"
#include "pictures/plan.h"
#include "pictures/series.h"
#include "report/report.h"

namespace survmeth::pictures {

class RiskRows {
 public:
  // In  width  of the panel with its margins, of which the names take a part
  RiskRows(report::RiskTable table, double width);

  double left() const { return left_; }  // room that names and first numbers need
  double height() const { return height_; }
  void draw(Canvas& canvas, const Plan& plan, const Palette& palette, double top,
            Notes& notes) const;

 private:
  report::RiskTable table_;
  std::vector<std::string> title_;
  std::vector<std::vector<std::string>> names_;
  double left_ = 0, height_ = 0, names_width_ = 0;
};

}  // namespace survmeth::pictures

#endif  // PICTURES_RISKTABLE_H_
