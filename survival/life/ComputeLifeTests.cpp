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

class Tests {
 public:
  explicit Tests(int size)
      : expected_(static_cast<std::size_t>(size), 0.0),
        tests_{Test(size), Test(size), Test(size)} {}

  // One grid time: n[j] at risk and d[j] events of stratum j = 0..K - 1.
  void add(const std::vector<double>& n, const std::vector<double>& d) {
    double events = 0.0;
    double atRisk = 0.0;
    for (std::size_t j = 0; j < n.size(); ++j) {
      events += d[j];
      atRisk += n[j];
    }
    // With nobody at risk the expectation of the time before stands.
    if (atRisk > 0.0) {
      for (std::size_t j = 0; j < expected_.size(); ++j) expected_[j] = events * n[j] / atRisk;
    }
    if (!(events > 0.0)) return;
    const double weights[kTests] = {1.0, atRisk, sqr(atRisk)};
    for (int t = 0; t < kTests; ++t) addTo(tests_[t], weights[t], n, d, events, atRisk);
  }

  const Test& operator[](int t) const { return tests_[t]; }

 private:
  void addTo(Test& test, double weight, const std::vector<double>& n, const std::vector<double>& d,
             double events, double atRisk) {
    const std::size_t size = expected_.size();
    for (std::size_t j = 0; j < size; ++j) test.score[j] += (d[j] - expected_[j]) * weight;
    if (atRisk * (atRisk - 1.0) == 0.0) return;
    const double common = weight * weight * events * (atRisk - events) / (atRisk - 1.0);
    double* cell = test.covariance.data();
    for (std::size_t l = 0; l < size; ++l) {
      const double share = n[l] / atRisk;
      for (std::size_t j = 0; j < size; ++j) {
        *cell++ += common * (n[j] / atRisk) * ((j == l ? 1.0 : 0.0) - share);
      }
    }
  }

  std::vector<double> expected_;
  Test tests_[kTests];
};

}  // namespace

int cComputeLifeTests(matrix* grid, int nTimes, int K, double alpha, matrix* result) {
  Tests tests(std::max(K, 1) - 1);
  const std::size_t strata = static_cast<std::size_t>(std::max(K, 0));
  std::vector<double> n(strata);
  std::vector<double> d(strata);
  // Columns past the grid hold no event and change nothing.
  const int columns = std::min(nTimes, grid->count());
  for (int i = 1; i <= columns; ++i) {
    for (int j = 1; j <= K; ++j) {
      const double events = grid->vbget(3 * j, i);
      n[static_cast<std::size_t>(j) - 1] = grid->vbget(3 * j - 1, i);
      d[static_cast<std::size_t>(j) - 1] = events > 0.0 ? events : 0.0;
    }
    tests.add(n, d);
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
