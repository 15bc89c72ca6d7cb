// Bland-Altman agreement.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "survival/methcomp/methcomp.h"

namespace {

enum DifferenceType { kAbsolute = 0, kRelative = 1 };  // any other code is the ratio

}  // namespace

int BlandAltman(matrix* first, matrix* second, int n, int differenceType, double alpha,
                matrix* differences, matrix* means, double* bias, double* sdDiff, double* biasLower,
                double* biasUpper, double* loaLower, double* loaUpper) {
  std::vector<short> excluded(static_cast<std::size_t>(std::max(n, 0)));
  InitVectorToFalse(excluded.data(), n);
  matrix ones(n, 1, 1);
  int usable = 0;
  for (int i = 1; i <= n; ++i) {
    const double x = first->vbget(i, 1);
    const double y = second->vbget(i, 1);
    // Nothing is written for such a pair: callers mark its rows themselves.
    if (isMissing(x) || isMissing(y)) {
      excluded[i - 1] = kTrue;
      continue;
    }
    const double mean = (x + y) * 0.5;
    means->vbset(i, 1, mean);
    ++usable;
    if (differenceType == kAbsolute) {
      differences->vbset(i, 1, y - x);
      continue;
    }
    const bool relative = differenceType == kRelative;
    const double denominator = relative ? mean : x;
    if (std::fabs(denominator) <= kEpsilon) {
      differences->vbset(i, 1, kMissing);
      excluded[i - 1] = kTrue;
      --usable;
    } else {
      differences->vbset(i, 1, (relative ? y - x : y) / denominator);
    }
  }
  V_MeanStdev(differences, n, excluded.data(), &ones, bias, sdDiff);

  const double p = 1.0 - alpha / 2.0;
  const double halfWidth = *sdDiff * InvCDFStudent(p, usable - 1.0) / sqr(usable);
  *biasLower = *bias - halfWidth;
  *biasUpper = *bias + halfWidth;
  // The limits take the normal quantile although the bias takes Student's: their users compare
  // them with tables made so.
  const double z = InvCDFNormalStd(p);
  *loaLower = *bias - z * *sdDiff;
  *loaUpper = *bias + z * *sdDiff;
  return 0;
}
