// The two classes that a column tells apart.
#ifndef ANALYSIS_CLASSES_H_
#define ANALYSIS_CLASSES_H_

#include <cstdint>
#include <string>
#include <vector>

#include "frame/frame.h"
#include "report/report.h"

namespace survmeth::analysis {

struct Classes {
  std::vector<std::uint8_t> positive;             // 1 or 0, of each row
  std::vector<std::string> positives, negatives;  // labels, one at least of each
  std::vector<report::Note> notes;                // what they mean, where that is not plain

  std::string name() const;  // of the positives: "dead", "dead, died"
  std::vector<report::Fact> facts() const;
};

// In   positive  the label of the positives, all others negative; empty: model/coding.h's rule
// Throws engine::Refusal (kClass): a label that says neither, a class without rows
Classes classesOf(const frame::Column& column, const std::string& positive);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_CLASSES_H_
