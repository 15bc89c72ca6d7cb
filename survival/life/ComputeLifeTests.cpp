// Weighted K-sample tests of the log-rank family.
#include <algorithm>
#include <cstddef>
#include <vector>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "survival/life/life.h"

namespace {

constexpr int kTests = 3;

// Score and covariance of one test over the strata 1..K - 1.
struct Test {
  explicit Test(int size) : score(static_cast<std::size_t>(size), 0.0), covariance(size, size, 0) {}

  // The quadratic form of the score in the inverse covariance. A singular covariance leaves zeros
  // in the inverse, and so the statistic 0.
  double statistic() const {
    const int size = covariance.rows();
    matrix inverse(size, size, 0);
    short status = 0;
    const auto at = [this](int j) { return score[static_cast<std::size_t>(j)]; };
    covariance.inverse1(&inverse, status, 1e-12);
    double form = 0.0;
    for (int j = 0; j < size; ++j) {
      for (int l = 0; l < size; ++l) form += at(j) * inverse.vbget(l + 1, j + 1) * at(l);
    }
    return form;
  }

  std::vector<double> score;
  matrix covariance;
};

// One grid time: at risk and events of strata 0..K - 1, and both added up.
class GridTime {
 public:
  explicit GridTime(std::size_t strata) : n(strata), d(strata) {}

  void read(const matrix* grid, int column) {
    events = 0.0;
    atRisk = 0.0;
    for (std::size_t j = 0; j < n.size(); ++j) {
      const int row = 3 * (static_cast<int>(j) + 1);
      const double observed = grid->vbget(row, column);
      n[j] = grid->vbget(row - 1, column);
      d[j] = observed > 0.0 ? observed : 0.0;
      events += d[j];
      atRisk += n[j];
    }
  }

  double expected(std::size_t j) const { return events * n[j] / atRisk; }

  std::vector<double> n;
  std::vector<double> d;
  double events = 0.0;
  double atRisk = 0.0;
};

class Tests {
 public:
  explicit Tests(int size)
      : expected_(static_cast<std::size_t>(size), 0.0),
        tests_{Test(size), Test(size), Test(size)} {}

  // The expectation is one variable, which a time with nobody at risk leaves as it is. It goes
  // through the times stratum by stratum, so that the first times of a stratum may find what
  // `last`, the last time with anybody at risk, left for the stratum before.
  void carryOver(const GridTime& last) {
    for (std::size_t j = 1; j < expected_.size(); ++j) expected_[j] = last.expected(j - 1);
  }

  void add(const GridTime& time) {
    if (time.atRisk > 0.0) {
      for (std::size_t j = 0; j < expected_.size(); ++j) expected_[j] = time.expected(j);
    }
    if (!(time.events > 0.0)) return;
    const double weights[kTests] = {1.0, time.atRisk, sqr(time.atRisk)};
    for (int t = 0; t < kTests; ++t) addTo(tests_[t], weights[t], time);
  }

  const Test& operator[](int t) const { return tests_[t]; }

 private:
  void addTo(Test& test, double weight, const GridTime& time) {
    const std::size_t size = expected_.size();
    for (std::size_t j = 0; j < size; ++j) test.score[j] += (time.d[j] - expected_[j]) * weight;
    const double atRisk = time.atRisk;
    if (atRisk * (atRisk - 1.0) == 0.0) return;
    const double common = weight * weight * time.events * (atRisk - time.events) / (atRisk - 1.0);
    double* cell = test.covariance.data();
    for (std::size_t l = 0; l < size; ++l) {
      const double share = time.n[l] / atRisk;
      for (std::size_t j = 0; j < size; ++j) {
        *cell++ += common * (time.n[j] / atRisk) * ((j == l ? 1.0 : 0.0) - share);
      }
    }
  }

  std::vector<double> expected_;
  Test tests_[kTests];
};

}  // namespace

int cComputeLifeTests(matrix* grid, int nTimes, int K, double alpha, matrix* result) {
  Tests tests(std::max(K, 1) - 1);
  GridTime time(static_cast<std::size_t>(std::max(K, 0)));
  // Columns past the grid hold no event and change nothing.
  const int columns = std::min(nTimes, grid->count());
  for (int i = columns; i >= 1; --i) {
    time.read(grid, i);
    if (!(time.atRisk > 0.0)) continue;
    tests.carryOver(time);
    break;
  }
  for (int i = 1; i <= columns; ++i) {
    time.read(grid, i);
    tests.add(time);
  }

  const double df = K - 1.0;
  const double critical = InvCDFChiSq(1.0 - alpha, df);
  for (int t = 0; t < kTests; ++t) {
    const double statistic = tests[t].statistic();
    result->vbset(t + 1, 1, statistic);
    result->vbset(t + 1, 2, critical);
    result->vbset(t + 1, 3, pValChiSq(statistic, df));
    result->vbset(t + 1, 4, alpha);
  }
  return 0;
}
