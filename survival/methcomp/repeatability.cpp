// Within-subject standard deviation from replicate measurements.
#include "Dist/Dist"
#include "Klikro/Klikro"
#include "survival/methcomp/methcomp.h"

int GetRepeatability(matrix* values, int n, matrix* subjects, double alpha, double* withinSd,
                     double* withinSdLower, double* withinSdUpper) {
  const int measurements = V_NbNonMissing(values, n);
  const int distinctSubjects = V_NbDistinct(subjects, n);
  const double mean = V_Mean2(values, n);
  const double totalSquares = measurements * V_Var2(values, n, 0, 0);

  matrix columns(n, 2, 0);
  V_Duplicate(values, 1, 1, n, &columns, 1, 1);
  V_Duplicate(subjects, 1, 1, n, &columns, 1, 2);
  matrix groups(distinctSubjects, 3, 0);
  M_GroupBy(&columns, n, 2, 1, &groups);
  matrix subjectMeans(distinctSubjects, 1, 0);
  M_ExtractMatToMatByColDbl(&groups, distinctSubjects, 3, 3, &subjectMeans);

  // The subject's number is the row of its mean, so subjects are numbered from 1 without gaps.
  double between = 0.0;
  for (int i = 1; i <= n; ++i) {
    if (isMissing(values->vbget(i, 1))) continue;
    const double deviation = mean - subjectMeans.vbget(truncated(subjects->vbget(i, 1)), 1);
    between += deviation * deviation;
  }
  int measuredSubjects = 0;
  for (int k = 1; k <= distinctSubjects; ++k) {
    if (!isMissing(subjectMeans.vbget(k, 1))) ++measuredSubjects;
  }

  const double within = totalSquares - between;
  if (within <= kEpsilon) {
    *withinSd = *withinSdLower = *withinSdUpper = kMissing;
    return 0;
  }
  const double df = measurements - measuredSubjects;
  *withinSd = sqr(within / df);
  *withinSdLower = *withinSd / sqr(InvCDFChiSq(1.0 - alpha / 2.0, df) / df);
  *withinSdUpper = *withinSd / sqr(InvCDFChiSq(alpha / 2.0, df) / df);
  return 0;
}
