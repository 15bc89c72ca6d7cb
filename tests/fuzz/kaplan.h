// Kaplan-Meier tables as the routines that read them usually get them.
#ifndef TESTS_FUZZ_KAPLAN_H_
#define TESTS_FUZZ_KAPLAN_H_

#include <algorithm>
#include <vector>

#include "survival/calls/life.h"
#include "tests/fuzz/fuzz.h"

namespace survmeth::fuzz {

// The (m + 2) x 12 table of m sorted rows with event code 1, with a few cells replaced or all of
// them; `rows` receives the number of groups.
inline std::vector<double> kaplanTable(Input& input, std::vector<double> time,
                                       std::vector<double> status, int m, int* rows) {
  const bool arbitrary = input.byte() >= 224;
  const int n = static_cast<int>(time.size());
  std::vector<double> table(static_cast<std::size_t>(std::max(m + 2, 0)) * 12);
  *rows = m;
  if (arbitrary) return input.column(static_cast<int>(table.size()), Likely::kProbabilities);
  std::vector<double> weight(time.size(), 1.0),
      intervals(2 * static_cast<std::size_t>(std::max(m + 1, 1)));
  double bound = 0, total = 0, grid = 0;
  int offset = 0;
  if (m >= 0) {
    RunLife(n, 1, &offset, 0, 1.0, 0, 1, m, 1, 0, 0, time.data(), status.data(), weight.data(), 0,
            0, 0, 0, &bound, intervals.data(), &total, table.data(), rows, &grid);
  }
  input.poke(table);
  return table;
}

}  // namespace survmeth::fuzz

#endif  // TESTS_FUZZ_KAPLAN_H_
