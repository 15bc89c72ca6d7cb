// What analyses say of their weights.
#ifndef ANALYSIS_WEIGHTS_H_
#define ANALYSIS_WEIGHTS_H_

#include <cstddef>
#include <vector>

#include "report/report.h"
#include "text/words.h"

namespace survmeth::analysis {

// Of so many rows of weight 0, where there are some.
inline void noteZeroWeights(std::size_t rows, std::vector<report::Note>& notes) {
  if (rows == 0) return;
  notes.push_back(
      {"zeroWeights", text::counted(rows, "row has", "rows have") + " weight 0 and no effect"});
}

}  // namespace survmeth::analysis

#endif  // ANALYSIS_WEIGHTS_H_
