// Kaplan-Meier tables for tests, straight from counts, and calls of what is built on them.
#ifndef TESTS_SURVIVAL_CUMINC_TABLES_H_
#define TESTS_SURVIVAL_CUMINC_TABLES_H_

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

#include "Klikro/Klikro"
#include "survival/calls/cuminc.h"

namespace survmeth::test {

// Rows in ascending order of time, equal times in their given order.
struct Subjects {
  std::vector<double> time;
  std::vector<double> status;

  Subjects(std::vector<double> times, std::vector<double> statuses) {
    std::vector<std::size_t> order(times.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return times[a] < times[b]; });
    for (const std::size_t i : order) {
      time.push_back(times[i]);
      status.push_back(statuses[i]);
    }
  }

  int size() const { return static_cast<int>(time.size()); }
};

// One distinct time.
struct Count {
  double time;
  double atRisk;
  double events;
  double censored;
};

// Every status but 0 is an event.
inline std::vector<Count> countsOf(const Subjects& subjects) {
  std::vector<Count> counts;
  double atRisk = subjects.size();
  for (int i = 0; i < subjects.size(); ++i) {
    if (i == 0 || subjects.time[i] != subjects.time[i - 1]) {
      counts.push_back({subjects.time[i], atRisk, 0, 0});
    }
    ++(subjects.status[i] != 0 ? counts.back().events : counts.back().censored);
    atRisk -= 1;
  }
  return counts;
}

// Column-major block of `rows` rows.
class Table {
 public:
  Table(int rows, int cols, double fill)
      : rows_(rows), values_(static_cast<std::size_t>(rows) * cols, fill) {}
  double& operator()(int i, int j) {
    return values_[static_cast<std::size_t>(j - 1) * rows_ + (i - 1)];
  }
  double operator()(int i, int j) const {
    return values_[static_cast<std::size_t>(j - 1) * rows_ + (i - 1)];
  }
  double* data() { return values_.data(); }
  const std::vector<double>& values() const { return values_; }
  int rows() const { return rows_; }

 private:
  int rows_;
  std::vector<double> values_;
};

// The (m + 2) x 12 Kaplan-Meier table: origin, then one row for each count.
inline Table kaplanMeier(const std::vector<Count>& counts, int m) {
  Table table(m + 2, 12, 0.0);
  double survival = 1.0;
  table(1, 7) = table(1, 8) = 1.0;
  for (std::size_t k = 0; k < counts.size(); ++k) {
    const int row = static_cast<int>(k) + 2;
    const Count& count = counts[k];
    if (count.events > 0) survival *= 1.0 - count.events / count.atRisk;
    table(row, 1) = count.time;
    table(row, 3) = table(row, 6) = count.atRisk;
    table(row, 4) = count.events;
    table(row, 5) = count.censored;
    table(row, 8) = survival;
  }
  return table;
}

// Incidence table and complement of one event type, all subjects one stratum.
struct Incidence {
  Table table;
  Table complement;

  Incidence(Subjects subjects, double eventCode, double alpha = 0.05)
      : Incidence(subjects, kaplanMeier(countsOf(subjects), subjects.size()),
                  static_cast<int>(countsOf(subjects).size()), eventCode, alpha) {}

  Incidence(Subjects subjects, Table km, int r, double eventCode, double alpha = 0.05)
      : table(r, 10, 0.0), complement(r, 10, 66.0) {
    Cpp_CumIncCalc(r, subjects.size(), subjects.time.data(), subjects.status.data(),
                   static_cast<int>(eventCode), alpha, km.rows() - 2, 0, km.data(), table.data(),
                   complement.data());
  }
};

}  // namespace survmeth::test

#endif  // TESTS_SURVIVAL_CUMINC_TABLES_H_
