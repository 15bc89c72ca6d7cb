// One half of roc_against_r.sh: makes the data, or times the analysis of them.
//
//   roc_against_r make ROWS ROUNDED FILE   writes the raw columns status, first test, second test
//                                          as doubles, one after the other; ROUNDED 1 for values
//                                          in thousandths
//   roc_against_r run ROWS ROUNDED         analyses the same data: prints the seconds of table and
//                                          area, the area, its error by DeLong, the seconds of the
//                                          comparison of both tests, and their covariance
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "bench/roc_job.h"

namespace {

constexpr int kTests = 2;

int make(int rows, bool rounded, const char* path) {
  const survmeth::bench::RocData data = survmeth::bench::makeRocData(rows, kTests, rounded);
  std::FILE* file = std::fopen(path, "wb");
  if (file == nullptr) return 1;
  bool written = true;
  for (const auto* column : {&data.status, &data.tests}) {
    written = written &&
              std::fwrite(column->data(), sizeof(double), column->size(), file) == column->size();
  }
  return std::fclose(file) == 0 && written ? 0 : 1;
}

// Shortest of five runs, each from a fresh job, in seconds of the processor.
template <typename Job, typename Run>
double shortest(Job& job, const Job& fresh, Run run) {
  double best = 0.0;
  for (int k = 0; k < 5; ++k) {
    job = fresh;
    const std::clock_t start = std::clock();
    run();
    const double taken = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    best = k == 0 ? taken : std::min(best, taken);
  }
  return best;
}

int run(int rows, bool rounded) {
  survmeth::bench::RocData data = survmeth::bench::makeRocData(rows, kTests, rounded);
  const survmeth::bench::RocCurve freshCurve(data);
  survmeth::bench::RocCurve curve(freshCurve);
  const double curveSeconds = shortest(curve, freshCurve, [&] { curve.run(data, 2); });
  const survmeth::bench::RocComparison freshComparison(data, kTests);
  survmeth::bench::RocComparison comparison(freshComparison);
  const double comparisonSeconds =
      shortest(comparison, freshComparison, [&] { comparison.run(data); });
  std::printf("%.6f %.15g %.15g %.6f %.15g\n", curveSeconds, curve.summary[0], curve.summary[1],
              comparisonSeconds, comparison.covariance[kTests]);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 3 ? argv[1] : "";
  const int rows = argc > 3 ? std::atoi(argv[2]) : 0;
  const bool rounded = argc > 3 && std::string(argv[3]) == "1";
  if (rows > 0 && what == "make" && argc == 5) return make(rows, rounded, argv[4]);
  if (rows > 0 && what == "run" && argc == 4) return run(rows, rounded);
  std::fputs("usage: roc_against_r make ROWS ROUNDED FILE | run ROWS ROUNDED\n", stderr);
  return 2;
}
