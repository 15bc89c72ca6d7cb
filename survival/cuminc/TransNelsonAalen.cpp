// Nelson-Aalen cumulative hazard from a Kaplan-Meier table.
#include <cmath>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "numerics/elementary.h"
#include "survival/cuminc/cuminc.h"
#include "survival/cuminc/rows.h"

namespace numerics = survmeth::numerics;

namespace {

// Columns of the table; kError holds the variance until the last step.
enum Column { kTime = 1, kAtRisk, kEvents, kCensored, kHazard, kError, kLower, kUpper, kSurvival };

// What d events among n at risk add to the variance of the cumulative hazard.
double varianceIncrement(double d, double n, int method) {
  if (method == 1 || n == 1.0) return d / (n * n);
  if (method == 2) return d * (n - d) / (n * n * n);
  return d * (n - d) / (n * n * (n - 1.0));
}

}  // namespace

int TransNelsonAalen(matrix* kmTable, matrix* table, int, int r, double alpha, int ciMethod,
                     int varianceMethod) {
  const int rows = survival::reachableRows(r, table->count());
  for (int k = 1; k <= rows; ++k) {
    table->vbset(k, kTime, kmTable->vbget(k + 1, 1));
    table->vbset(k, kAtRisk, kmTable->vbget(k + 1, 6));
    table->vbset(k, kEvents, kmTable->vbget(k + 1, 4));
    table->vbset(k, kCensored, kmTable->vbget(k + 1, 5));
  }

  const int first = survival::firstEventRow(table, kEvents, rows);
  survival::markRowsBefore(first, kHazard, kSurvival, table);

  const double z = InvCDFNormalStd(1.0 - alpha / 2.0);
  for (int j = first; j <= rows; ++j) {
    const double d = table->vbget(j, kEvents);
    if (d > 0.0) {
      const double n = table->vbget(j, kAtRisk);
      double hazard = d / n;
      double variance = varianceIncrement(d, n, varianceMethod);
      if (j > first) {
        hazard = table->vbget(j - 1, kHazard) + hazard;
        variance = table->vbget(j - 1, kError) + variance;
      }
      const double deviation = z * std::sqrt(variance);
      double lower = hazard - deviation;
      double upper = hazard + deviation;
      if (ciMethod != 1) {
        const double ratio = numerics::exp(deviation / hazard);
        lower = hazard / ratio;
        upper = hazard * ratio;
      }
      table->vbset(j, kHazard, hazard);
      table->vbset(j, kError, variance);
      table->vbset(j, kLower, lower);
      table->vbset(j, kUpper, upper);
      table->vbset(j, kSurvival, numerics::exp(-hazard));
    } else if (d <= 0.0) {
      survival::repeatRowAbove(j, {kHazard, kError, kLower, kUpper, kSurvival}, table);
    }
  }

  // From row 1, markers included: callers tell the rows before the first event by the
  // not-a-number that the marker's root is.
  for (int k = 1; k <= rows; ++k) table->vbset(k, kError, std::sqrt(table->vbget(k, kError)));
  return 0;
}
