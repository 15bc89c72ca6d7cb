// The product-limit estimate of one stratum.
#include <cstddef>

#include "Klikro/Klikro"
#include "survival/life/life.h"
#include "survival/life/stratum.h"

namespace {

// Access without a check, for a matrix known to hold every cell that is asked for.
class Unchecked {
 public:
  explicit Unchecked(matrix* m) : first_(m->data()), rows_(static_cast<std::size_t>(m->rows())) {}
  double vbget(int i, int j) const { return first_[at(i, j)]; }
  void vbset(int i, int j, double value) { first_[at(i, j)] = value; }

 private:
  std::size_t at(int i, int j) const {
    return static_cast<std::size_t>(i - 1) + static_cast<std::size_t>(j - 1) * rows_;
  }
  double* first_;
  std::size_t rows_;
};

template <typename Cells>
void fillIntervals(const survival::Stratum& stratum, Cells& intervals) {
  const int m = stratum.size();
  for (int i = 1; i < m; ++i) {
    intervals.vbset(i, 1, stratum.time(i));
    intervals.vbset(i, 2, stratum.time(i + 1));
  }
  if (m > 0) {
    intervals.vbset(m, 1, stratum.time(m));
    intervals.vbset(m, 2, stratum.time(m) + 1.0);
  }
}

// Returns the number of rows after the origin.
template <typename Cells>
int fillTable(const survival::Stratum& stratum, double total, Cells& table,
              const Cells& intervals) {
  for (int j = 1; j <= 12; ++j) table.vbset(1, j, j == 7 || j == 8 ? 1.0 : 0.0);

  const int m = stratum.size();
  double atRisk = total;
  double survival = 1.0;
  double greenwood = 0.0;
  int consumed = 0;
  int group = 0;
  while (consumed < m) {
    ++group;
    const int row = group + 1;
    const double start = stratum.time(consumed + 1);
    double events = 0.0;
    double censored = 0.0;
    do {
      ++consumed;
      events += stratum.events(consumed);
      censored += stratum.censored(consumed);
    } while (consumed < m && !(stratum.time(consumed + 1) > stratum.time(consumed)));
    table.vbset(row, 1, start);
    table.vbset(row, 3, atRisk);
    table.vbset(row, 4, events);
    table.vbset(row, 5, censored);
    table.vbset(row, 6, atRisk);
    // Only zero or negative weights come here; callers know the count of data rows less one.
    if (atRisk <= 0.0) return consumed - 1;

    const double entering = atRisk;
    atRisk = atRisk - events - censored;
    if (events > 0.0) {
      // 1 - d / n and not (n - d) / n: the last bit decides where a quartile falls.
      const double conditional = 1.0 - events / entering;
      const double before = survival;
      survival = before * conditional;
      if (conditional != 0.0) greenwood += (1.0 - conditional) / (conditional * entering);
      table.vbset(row, 7, conditional);
      table.vbset(row, 8, survival);
      table.vbset(row, 9, (before - survival) / (intervals.vbget(consumed, 2) - start));
      table.vbset(row, 11, greenwood);
    } else {
      // The density of a time with censorings only is not written.
      for (const int j : {7, 8, 11}) table.vbset(row, j, table.vbget(row - 1, j));
    }
  }
  return group;
}

}  // namespace

int ComputeKaplanMeier(int offset, int m, short countsFormat, int eventCode, matrix* time,
                       matrix* status, matrix* weight, double& total, matrix* table, int& nRows,
                       matrix* intervals) {
  const survival::Stratum stratum(offset, m, countsFormat == kTrue, eventCode, time, status,
                                  weight);
  total = stratum.total();
  if (intervals->cols() >= 2 && intervals->rows() >= stratum.size() && table->cols() >= 12 &&
      table->rows() - 1 >= stratum.size()) {
    Unchecked intervalCells(intervals);
    Unchecked tableCells(table);
    fillIntervals(stratum, intervalCells);
    nRows = fillTable(stratum, total, tableCells, intervalCells);
  } else {
    fillIntervals(stratum, *intervals);
    nRows = fillTable(stratum, total, *table, *intervals);
  }
  return 0;
}
