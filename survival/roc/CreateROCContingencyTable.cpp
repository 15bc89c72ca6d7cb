// The weighted 2 x 2 table of a test at one threshold, from labelled observations.
#include <algorithm>

#include "survival/roc/roc.h"

namespace {

// The rules count from 1 here and from 0 for the curve: callers hold both sets of codes.
bool calledPositive(double value, short exactMatch, double threshold, int thresholdRule) {
  if (exactMatch == kTrue) return value == threshold;
  switch (thresholdRule) {
    case 1:
      return value < threshold;
    case 2:
      return value <= threshold;
    case 3:
      return value >= threshold;
    case 4:
      return value > threshold;
    default:
      return false;
  }
}

}  // namespace

int CreateROCContingencyTable(Smatrix* labels, int n, const std::wstring& positiveLabel,
                              matrix* values, short exactMatch, double threshold, int thresholdRule,
                              matrix* weights, matrix* table) {
  n = std::min({n, labels->count(), values->count(), weights->count()});
  for (int i = 1; i <= n; ++i) {
    const int column = labels->vbget(i, 1) == positiveLabel ? 1 : 2;
    const int row =
        calledPositive(values->vbget(i, 1), exactMatch, threshold, thresholdRule) ? 1 : 2;
    table->vbset(row, column, table->vbget(row, column) + weights->vbget(i, 1));
  }
  return 0;
}
