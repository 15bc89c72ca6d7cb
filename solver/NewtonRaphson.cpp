// The Newton-Raphson step.
#include <cmath>

#include "solver/solver.h"

int cNewtonRaphson(matrix* parameters, int p, matrix* mask, matrix* gradient,
                   matrix* secondDerivatives, double tolerance, matrix* work, matrix* inverse,
                   short, double) {
  // Inverted apart: the caller's matrices may be larger than the model in hand.
  matrix block(p, p, 0);
  for (int j = 1; j <= p; ++j) {
    for (int i = 1; i <= p; ++i) block.vbset(i, j, secondDerivatives->vbget(i, j));
  }
  matrix full(p, p, 0);
  short status = 0;
  block.inverse1(&full, status, 0.0);
  for (int j = 1; j <= p; ++j) {
    for (int i = 1; i <= p; ++i) inverse->vbset(i, j, full.vbget(i, j));
  }
  if (status != 0) return -1;

  bool negligible = true;
  for (int i = 1; i <= p; ++i) {
    double step = 0.0;
    for (int j = 1; j <= p; ++j) step += full.vbget(i, j) * gradient->vbget(j, 1);
    work->vbset(i, 1, step);
    if (mask->vbget(i, 1) == 1.0) continue;
    parameters->vbset(i, 1, parameters->vbget(i, 1) - step);
    // Written so that a step that is not a number is never negligible.
    if (!(std::fabs(step) < tolerance)) negligible = false;
  }
  return negligible ? 1 : 0;
}
