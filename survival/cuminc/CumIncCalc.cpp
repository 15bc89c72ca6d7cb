// Cumulative incidence of one event type in one stratum, on top of its Kaplan-Meier table.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "numerics/elementary.h"
#include "survival/cuminc/cuminc.h"
#include "survival/cuminc/rows.h"

namespace numerics = survmeth::numerics;

namespace {

// Columns of the incidence table; kError holds the variance until the last step but one.
enum Column {
  kTime = 1,
  kAtRisk,
  kEvents,
  kPooledEvents,
  kCensored,
  kIncidence,
  kError,
  kLower,
  kUpper,
  kPooled  // 1 - survival
};
constexpr int kColumns = kPooled;
constexpr int kKmSurvival = 8;

// Up to this length the variance is summed anew for every row, in the order of its formula. Where
// the curve nears its end the variance is a difference of nearly equal sums, and the last bits
// that short tables have always shown there come from this order.
constexpr int kShortTable = 512;

// Rows offset + 1 .. offset + m of the data, counted by groups of equal times.
class EventCounter {
 public:
  EventCounter(const matrix* time, const matrix* status, double eventCode, int offset, int m)
      : time_(time),
        status_(status),
        eventCode_(eventCode),
        row_(offset),
        last_(std::int64_t{offset} + m),
        read_(std::max(time->count(), status->count())) {}

  // Adds the events of the next group to `count`, one by one. The stratum's last row starts a
  // group of its own even when its time is that of the row before it: callers' tables rely on
  // the row being left out there.
  double addNextGroup(double count) {
    do {
      ++row_;
      if (read(status_, row_) == eventCode_) count += 1.0;
      // Past both columns every row is like the next, however far the caller says they go.
      if (row_ > read_ && eventCode_ != -1.0) row_ = std::max(row_, last_ - 1);
    } while (row_ + 1 < last_ && read(time_, row_ + 1) == read(time_, row_));
    return count;
  }

 private:
  static double read(const matrix* column, std::int64_t row) {
    return row < 1 || row > column->count() ? -1.0 : column->vbget(static_cast<int>(row), 1);
  }

  const matrix* time_;
  const matrix* status_;
  double eventCode_;
  std::int64_t row_;
  std::int64_t last_;
  std::int64_t read_;  // rows that hold anything
};

// What row i adds to the variance of an incidence that lies `step` above its own:
// step^2 spread + own - 2 step shared. Nothing where nobody outlives the row's time.
struct Share {
  double survival = 0.0;  // just before
  double atRisk = 0.0;
  double pooled = 0.0;
  double events = 0.0;

  Share(const matrix* table, const matrix* kmTable, int i)
      : survival(kmTable->vbget(i, kKmSurvival)),
        atRisk(table->vbget(i, kAtRisk)),
        pooled(table->vbget(i, kPooledEvents)),
        events(table->vbget(i, kEvents)) {}

  bool counts() const { return atRisk - pooled > 0.0; }
  double spread(double step) const { return step * step * pooled / ((atRisk - pooled) * atRisk); }
  double own() const {
    return survival * survival * (atRisk - events) * events / (atRisk * atRisk * atRisk);
  }
  double shared(double step) const { return step * survival * events / (atRisk * atRisk); }
};

// Variance of the incidence of row j, summed over the rows from `first`.
double summedVariance(const matrix* table, const matrix* kmTable, int first, int j) {
  const double incidence = table->vbget(j, kIncidence);
  double sum = 0.0;
  for (int i = first; i <= j; ++i) {
    const Share share(table, kmTable, i);
    if (!share.counts()) continue;
    const double step = incidence - table->vbget(i, kIncidence);
    sum += share.spread(step) + share.own() - share.shared(2.0 * step);
    if (std::isnan(sum)) break;  // and stays so
  }
  return sum;
}

// The same sums carried from row to row. An incidence only grows, so that each running sum only
// gains positive terms and loses no digits.
class RunningVariance {
 public:
  explicit RunningVariance(double incidence) : incidence_(incidence) {}

  // Takes the next row in and returns the variance of its incidence.
  double add(const Share& share, double incidence) {
    const double step = incidence - incidence_;
    spreadSquares_ += 2.0 * step * spreadSteps_ + step * step * spread_;
    spreadSteps_ += step * spread_;
    sharedSteps_ += step * shared_;
    incidence_ = incidence;
    bool ordinary = step >= 0.0;
    if (share.counts()) {
      spread_ += share.spread(1.0);
      own_ += share.own();
      shared_ += share.shared(1.0);
      ordinary = ordinary && share.pooled >= 0.0 && share.events >= 0.0 &&
                 share.events <= share.atRisk && share.survival >= 0.0;
    }
    const double variance = spreadSquares_ + own_ - 2.0 * sharedSteps_;
    holds_ = holds_ && ordinary && std::isfinite(variance) && std::isfinite(spread_) &&
             std::isfinite(shared_);
    return variance;
  }

  // False once a row broke the signs that the sums rely on, or one of them left the numbers.
  bool holds() const { return holds_; }

 private:
  double incidence_;
  double spread_ = 0.0;         // sum of a
  double spreadSteps_ = 0.0;    // sum of (I - I_i) a_i
  double spreadSquares_ = 0.0;  // sum of (I - I_i)^2 a_i
  double own_ = 0.0;            // sum of b
  double shared_ = 0.0;         // sum of c
  double sharedSteps_ = 0.0;    // sum of (I - I_i) c_i
  bool holds_ = true;
};

// Log-transformed limits of row j.
void setLimits(int j, double z, double error, matrix* table) {
  const double incidence = table->vbget(j, kIncidence);
  const double width = z * error / incidence;
  table->vbset(j, kLower, numerics::exp(numerics::log(incidence) - width));
  table->vbset(j, kUpper, numerics::exp(numerics::log(incidence) + width));
}

// Incidence, and the variance and limits of the first row. That variance has no factor of the
// survival before it: callers have the first standard error without it.
void estimate(const matrix* kmTable, int first, int rows, double z, matrix* table) {
  for (int j = first; j <= rows; ++j) {
    const double e = table->vbget(j, kEvents);
    if (e > 0.0) {
      const double n = table->vbget(j, kAtRisk);
      const double gain = kmTable->vbget(j, kKmSurvival) * e / n;
      if (j == first) {
        const double variance = (n - e) * e / (n * n * n);
        table->vbset(j, kIncidence, gain);
        table->vbset(j, kError, variance);
        setLimits(j, z, std::sqrt(variance), table);
      } else {
        table->vbset(j, kIncidence, table->vbget(j - 1, kIncidence) + gain);
      }
      table->vbset(j, kPooled, 1.0 - kmTable->vbget(j + 1, kKmSurvival));
    } else if (e <= 0.0) {
      survival::repeatRowAbove(j, {kIncidence, kLower, kUpper, kPooled}, table);
    }
  }
}

// Variances and limits of the rows after the first. The sums start at the first row: what other
// event types did before it is left out.
void estimateVariances(const matrix* kmTable, int first, int rows, double z, matrix* table) {
  const bool shortTable = rows <= kShortTable;
  RunningVariance running(table->vbget(first, kIncidence));
  if (!shortTable) running.add(Share(table, kmTable, first), table->vbget(first, kIncidence));
  for (int j = first + 1; j <= rows; ++j) {
    const bool runs = !shortTable && running.holds();
    double variance = 0.0;
    if (runs) variance = running.add(Share(table, kmTable, j), table->vbget(j, kIncidence));
    if (table->vbget(j, kEvents) <= 0.0) {
      survival::repeatRowAbove(j, {kError, kLower, kUpper}, table);
      continue;
    }
    if (!runs || !running.holds()) variance = summedVariance(table, kmTable, first, j);
    table->vbset(j, kError, variance);
    setLimits(j, z, variance > 0.0 ? std::sqrt(variance) : 0.0, table);
  }
}

double complementOf(double value) { return value == kMissing ? kMissing : 1.0 - value; }

}  // namespace

int CumIncCalc(int r, int, matrix* time, matrix* status, int eventCode, double alpha, int m,
               int offset, matrix* kmTable, matrix* incidence, matrix* complement) {
  const int rows = survival::reachableRows(r, std::max(incidence->count(), complement->count()));
  EventCounter counter(time, status, eventCode, offset, m);
  for (int k = 1; k <= rows; ++k) {
    incidence->vbset(k, kEvents, counter.addNextGroup(incidence->vbget(k, kEvents)));
  }
  for (int k = 1; k <= rows; ++k) {
    incidence->vbset(k, kTime, kmTable->vbget(k + 1, 1));
    incidence->vbset(k, kAtRisk, kmTable->vbget(k + 1, 6));
    incidence->vbset(k, kPooledEvents, kmTable->vbget(k + 1, 4));
    incidence->vbset(k, kCensored, kmTable->vbget(k + 1, 5));
  }

  const int first = survival::firstEventRow(incidence, kEvents, rows);
  survival::markRowsBefore(first, kIncidence, kPooled, incidence);
  const double z = InvCDFNormalStd(1.0 - alpha / 2.0);
  estimate(kmTable, first, rows, z, incidence);
  estimateVariances(kmTable, first, rows, z, incidence);
  for (int k = first; k <= rows; ++k) {
    const double variance = incidence->vbget(k, kError);
    incidence->vbset(k, kError, variance <= 0.0 ? 0.0 : std::sqrt(variance));
  }

  M_Duplicate(incidence, rows, kColumns, complement, 1, 1, 1, 1);
  for (int k = first; k <= rows; ++k) {
    complement->vbset(k, kIncidence, complementOf(incidence->vbget(k, kIncidence)));
    // The limits swap places.
    complement->vbset(k, kLower, complementOf(incidence->vbget(k, kUpper)));
    complement->vbset(k, kUpper, complementOf(incidence->vbget(k, kLower)));
    complement->vbset(k, kPooled, complementOf(incidence->vbget(k, kPooled)));
  }
  return 0;
}
