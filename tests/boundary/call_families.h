// What the files that make the calls of each family share.
#ifndef TESTS_BOUNDARY_CALL_FAMILIES_H_
#define TESTS_BOUNDARY_CALL_FAMILIES_H_

#include <random>
#include <vector>

#include "tests/boundary/calls.h"

namespace survmeth::test {

inline constexpr int kRows = 24;

// Columns of one data set.
class Data {
 public:
  explicit Data(unsigned seed) : random_(seed) {}

  std::vector<double> uniform(int count, double low, double high) {
    std::vector<double> values(count);
    for (double& value : values) value = low + (high - low) * (random_() / 4294967296.0);
    return values;
  }
  // Whole numbers low..high.
  std::vector<double> whole(int count, int low, int high) {
    std::vector<double> values(count);
    for (double& value : values) value = low + static_cast<int>(random_() % (high - low + 1));
    return values;
  }
  // Both 0 and 1 occur.
  std::vector<double> binary(int count) {
    std::vector<double> values = whole(count, 0, 1);
    values[0] = 1;
    values[1] = 0;
    return values;
  }

 private:
  std::mt19937 random_;
};

inline std::vector<double> ones(int count) { return std::vector<double>(count, 1.0); }

std::vector<Call> lifeCalls();
std::vector<Call> coxCalls();
std::vector<Call> paramCalls();
std::vector<Call> competingCalls();
std::vector<Call> diagnosticCalls();

}  // namespace survmeth::test

#endif  // TESTS_BOUNDARY_CALL_FAMILIES_H_
