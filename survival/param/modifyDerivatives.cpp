// Reduction of a Hessian to its diagonal.
#include <algorithm>

#include "survival/param/param.h"

int modifyDerivatives(matrix* hessian, int m) {
  const int stride = hessian->rows();
  // Elements past the last one cannot be written: the loops end with the matrix, however large m.
  for (int s = 1; s <= m && (s - 1LL) * stride < hessian->count(); ++s) {
    const int rows = std::min(m, hessian->count() - (s - 1) * stride);
    for (int r = 1; r <= rows; ++r) {
      if (r != s) hessian->vbset(r, s, 0.0);
    }
  }
  return m;
}
