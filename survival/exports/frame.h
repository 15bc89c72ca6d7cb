// The frame of every flat-array entry point: wrap the caller's arrays, run, copy back, release.
#ifndef SURVIVAL_EXPORTS_FRAME_H_
#define SURVIVAL_EXPORTS_FRAME_H_

#include <algorithm>
#include <limits>

#include "Klikro/Klikro"
#include "survival/exports/apart.h"

namespace survival {

// A count that may be 0, raised to 1 so that no block is empty.
inline int raised(int count) { return std::max(count, 1); }

// A shape formed from counts, kept within what an int holds; a matrix too large to exist then
// fails as an allocation does.
inline int shape(long long count) {
  return static_cast<int>(std::clamp<long long>(count, 0, std::numeric_limits<int>::max()));
}

// A block that is only read, or only written through the checked accessors, may be a view on the
// caller's array: where no other argument shares it, a copy there and back would show the same, at
// twice the memory.
inline matrix view(int rows, int cols, double* home) { return matrix(rows, cols, home, true); }

// An owned copy of a caller's block; copyBack returns the elements to where they came from, at most
// as many as came: some routines reshape what they are given.
class Block : public matrix {
 public:
  Block(int rows, int cols, double* home)
      : matrix(rows, cols, home, 0, 0), home_(home), came_(count()) {}

  // A block that is wanted only where `asked`: otherwise one zero, which copyBack puts into the
  // caller's first element.
  Block(bool asked, int rows, int cols, double* home)
      : matrix(asked ? rows : 1, asked ? cols : 1, 0), home_(home), came_(count()) {
    if (asked) std::copy_n(home, count(), data());
  }

  void copyBack() const { std::copy_n(data(), std::min(count(), came_), home_); }

 private:
  double* home_;
  int came_;
};

// The same for a block of int.
class IntBlock : public matrixInt {
 public:
  IntBlock(int rows, int cols, int* home)
      : matrixInt(rows, cols, home, false), home_(home), came_(count()) {}

  void copyBack() const { std::copy_n(data(), std::min(count(), came_), home_); }

 private:
  int* home_;
  int came_;
};

}  // namespace survival

#endif  // SURVIVAL_EXPORTS_FRAME_H_
