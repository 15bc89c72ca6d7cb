// One row of the validation table of a survival regression.
#include <algorithm>

#include "Klikro/Klikro"
#include "numerics/elementary.h"
#include "survival/validation/validation.h"

namespace numerics = survmeth::numerics;

int ComputeCVTable(int n, int p, matrix* time, matrix* status, matrix* X, matrix* beta, matrix* H,
                   matrix* F, int row, matrix* table) {
  const double nu = static_cast<double>(n) - 1.0 - p;
  const double gain = 2.0 / nu * (F->vbget(3, 1) - F->vbget(3, 2));
  // Where the exponential would overflow the measure reads 1, although the model is the worse one
  // there: callers show such rows as saturated.
  const double rSquared = gain < -700.0 ? 1.0 : 1.0 - numerics::exp(-gain);
  table->vbset(row, 1, rSquared);

  // nu divides the exponential, not its exponent: stored tables hold the measure on this scale.
  const double reached = 2.0 * F->vbget(3, 1);
  double rescaled = rSquared;
  if (!(reached / nu < -700.0)) rescaled = rSquared / (1.0 - numerics::exp(-reached) / nu);
  table->vbset(row, 2, rescaled);

  const double before = H->vbget(1, 2);
  table->vbset(row, 3, before > 0.0 ? std::max(0.0, (before - H->vbget(1, 1)) / before) : 0.0);

  const double c = ConcordIndex(n, p, time, status, X, beta);
  table->vbset(row, 4, c);
  table->vbset(row, 5, 2.0 * (c - 0.5));
  return 0;
}
