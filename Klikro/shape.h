// Element counts of the containers.
#ifndef KLIKRO_SHAPE_H_
#define KLIKRO_SHAPE_H_

#include <limits>
#include <new>

namespace klikro {

// rows x cols, or nothing where a count is below zero: callers pass negative counts for "none".
struct Shape {
  Shape(int wantedRows, int wantedCols)
      : rows(wantedRows < 0 ? 0 : wantedRows), cols(wantedCols < 0 ? 0 : wantedCols) {
    const long long elements = static_cast<long long>(rows) * cols;
    if (elements > std::numeric_limits<int>::max()) throw std::bad_alloc();
    count = static_cast<int>(elements);
  }
  int rows;
  int cols;
  int count;
};

}  // namespace klikro

#endif  // KLIKRO_SHAPE_H_
