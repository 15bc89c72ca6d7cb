// Lines and outlines cut at a frame.
#ifndef PICTURES_CLIP_H_
#define PICTURES_CLIP_H_

#include <vector>

#include "pictures/canvas.h"

namespace survmeth::pictures {

// The parts of a path within the frame. A point that is not a number ends a part.
std::vector<Path> clippedLine(const Path& path, const Box& frame);

// The part of a closed outline within the frame, its edges drawn along the frame's where it leaves.
Path clippedArea(Path outline, const Box& frame);

bool inside(const Point& point, const Box& frame);

// Infinitely far to one side, above or below.
bool isBeyond(const Point& point);

}  // namespace survmeth::pictures

#endif  // PICTURES_CLIP_H_
