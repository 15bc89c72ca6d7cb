// The series of a panel, drawn into its frame.
#ifndef PICTURES_SERIES_H_
#define PICTURES_SERIES_H_

#include <string>
#include <vector>

#include "pictures/canvas.h"
#include "pictures/palette.h"
#include "pictures/plan.h"
#include "report/report.h"

namespace survmeth::pictures {

// What could not be shown, or not as usual, gathered over the panels.
class Notes {
 public:
  void add(const std::string& code, const std::string& text,
           const std::vector<std::string>& names = {});
  const std::vector<report::Note>& all() const { return notes_; }

 private:
  std::vector<report::Note> notes_;
};

// "\"6-MP\"", or "a series" for one without a name.
std::string nameOf(const report::Series& series);

void drawSeries(Canvas& canvas, const Plan& plan, const Palette& palette, Notes& notes);

// The corners of a right-continuous step.
Path stepPath(const Plan& plan, const std::vector<double>& x, const std::vector<double>& y);
// The points of a line.
Path linePath(const Plan& plan, const std::vector<double>& x, const std::vector<double>& y);
// The path without points that lie too close to matter in print.
Path thinned(const Path& path);

void drawBands(Canvas& canvas, const Plan& plan, const Palette& palette, Notes& notes);
void drawPoints(Canvas& canvas, const Plan& plan, const Palette& palette, Notes& notes);

}  // namespace survmeth::pictures

#endif  // PICTURES_SERIES_H_
