// The limits of a panel's axes.
#ifndef PICTURES_RANGE_H_
#define PICTURES_RANGE_H_

#include "pictures/pictures.h"
#include "pictures/scale.h"
#include "report/report.h"

namespace survmeth::pictures {

struct Range {
  Scale x, y;
};

// From what the figure and the style want, and otherwise from the series and references. Points
// settle an axis alone: lines through them are cut at the frame, and so is a point's limit that
// would leave its estimates no room.
Range rangeOf(const report::Panel& panel);

}  // namespace survmeth::pictures

#endif  // PICTURES_RANGE_H_
