// Made-up measurements by two methods, and their comparison through the flat entry points: what the
// benchmarks time.
#ifndef BENCH_METHCOMP_JOB_H_
#define BENCH_METHCOMP_JOB_H_

#include <cstddef>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "bench/columns.h"
#include "survival/survival.h"

namespace survmeth::bench {

// Two methods that measure the same n values with error, each subject twice; `out` are columns for
// results, `s` single results.
struct Methods {
  explicit Methods(std::int64_t n) : x(n), y(n), subject(n), out(9, Column(2 * n)) {
    std::mt19937_64 random(1);
    std::normal_distribution<double> normal;
    for (std::int64_t i = 0; i < n; ++i) {
      const double value = 50 + 10 * normal(random);
      x[i] = value + normal(random);
      y[i] = 1.05 * value - 2 + normal(random);
      const std::int64_t pair = i / 2 + 1;
      subject[i] = static_cast<double>(pair);
    }
  }
  Methods(Column first, Column second)
      : x(std::move(first)), y(std::move(second)), subject(x.size()), out(9, Column(2 * x.size())) {
    for (std::size_t i = 0; i < x.size(); ++i) {
      const std::size_t pair = i / 2 + 1;
      subject[i] = static_cast<double>(pair);
    }
  }

  int n() const { return static_cast<int>(x.size()); }

  void passingBablok() {
    VB_PassingBablok(x.data(), n(), y.data(), 0.05, s, s + 1, s + 2, s + 3, s + 4, s + 5,
                     out[0].data(), out[1].data(), out[2].data(), out[3].data(), s + 6, s + 7,
                     s + 8);
  }

  void deming() {
    int one = 1;
    VB_DemingRegression(x.data(), n(), y.data(), subject.data(), 0, 1, &one, 1, 0, 0.05, 1, 1e-8,
                        20, 40, 60, s, s + 1, s + 2, s + 3, s + 4, s + 5, out[0].data(),
                        out[1].data(), out[2].data(), out[3].data(), out[4].data(), s + 6, s + 7,
                        s + 8, s + 9, s + 10, s + 11, s + 12, s + 13, s + 14, s + 15, s + 16,
                        s + 17, s + 18, s + 19, s + 20, s + 21, s + 22, s + 23, s + 24, s + 25,
                        s + 26, s + 27);
  }

  void blandAltman() {
    Cpp_BlandAltman(x.data(), y.data(), n(), 0, 0.05, out[0].data(), out[1].data(), s, s + 1, s + 2,
                    s + 3, s + 4, s + 5);
  }

  void repeatability() {
    Cpp_GetRepeatability(x.data(), n(), subject.data(), 0.05, s, s + 1, s + 2);
  }

  Column x, y, subject;
  std::vector<Column> out;
  double s[40] = {};
};

}  // namespace survmeth::bench

#endif  // BENCH_METHCOMP_JOB_H_
