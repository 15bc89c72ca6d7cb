// A caller in C++: containers, the solver, a matrix-level routine and a distribution.
#include <cmath>
#include <iostream>
#include <string>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "solver/solver.h"
#include "survival/SortApply.h"
#include "survival/life/life.h"

namespace {

int wrong = 0;

void expectNear(const std::string& what, double found, double wanted) {
  if (std::fabs(found - wanted) <= 1e-15) return;
  std::cout << what << ": " << found << " instead of " << wanted << '\n';
  ++wrong;
}

// Events at 2, 3 and 8, censored at 3 and 5, given in reverse and turned round first.
void estimateSurvival() {
  double times[] = {8, 5, 3, 3, 2};
  double statuses[] = {1, 0, 0, 1, 1};
  double backwards[] = {5, 4, 3, 2, 1};
  matrix time(5, 1, times, 0, 0);
  matrix status(5, 1, statuses, true);
  matrix weight(5, 1, 1);
  matrix order(5, 1, backwards, true);
  SortApply2(&time, 5, 1, &order);
  SortApply2(&status, 5, 1, &order);
  matrix table(7, 12, 0);
  matrix intervals(6, 2, 0);
  double total = 0.0;
  int nRows = 0;
  ComputeKaplanMeier(0, 5, 0, 1, &time, &status, &weight, total, &table, nRows, &intervals);
  expectNear("rows", nRows, 4);
  expectNear("S(3)", table.vbget(3, 8), 3.0 / 5.0);
  expectNear("past the end", time.vbget(6, 1), -1.0);
}

// The maximum of -x^2 + 6 x, one Newton-Raphson step from 0.
void solve() {
  matrix parameter(1, 1, 0);
  matrix mask(1, 1, 0);
  matrix gradient(1, 1, 6);
  matrix second(1, 1, -2);
  matrix work(1, 1, 0);
  matrix inverse(1, 1, 0);
  cNewtonRaphson(&parameter, 1, &mask, &gradient, &second, 1e-9, &work, &inverse, 0, 0.5);
  expectNear("maximum", parameter.vbget(1, 1), 3.0);
}

}  // namespace

int main() {
  estimateSurvival();
  solve();
  expectNear("Phi(0)", CDFNormalStd(0.0), 0.5);
  if (wrong == 0) std::cout << "as expected\n";
  return wrong;
}
