// Where an axis has ticks and what stands beside them.
#ifndef PICTURES_TICKS_H_
#define PICTURES_TICKS_H_

#include <string>
#include <vector>

#include "pictures/scale.h"

namespace survmeth::pictures {

struct Tick {
  double value;
  std::string text;
};

struct Ticks {
  std::vector<Tick> marks;
  // What every number is short of, for the axis's label: "×10⁶", "less 1000000000"; empty: nothing.
  std::string remark;
};

// At most about `wanted` ticks (2 or more) at round values between the scale's limits. Numbers that
// are long because the axis is far from 0 or its unit unfit are shown less a constant or as
// multiples of a power of a thousand, so that no two ticks read alike.
// In   percent  numbers in percent
Ticks ticksOf(const Scale& scale, std::size_t wanted, bool percent);

// Ticks at these values, those outside the limits left out; large and small numbers as multiples.
Ticks ticksAt(const Scale& scale, const std::vector<double>& values, bool percent);

}  // namespace survmeth::pictures

#endif  // PICTURES_TICKS_H_
