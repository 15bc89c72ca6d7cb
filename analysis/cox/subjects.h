// The rows of one subject: whether they follow each other.
#ifndef ANALYSIS_COX_SUBJECTS_H_
#define ANALYSIS_COX_SUBJECTS_H_

#include <optional>
#include <string>
#include <vector>

#include "engine/input.h"
#include "frame/frame.h"
#include "frame/labels.h"
#include "model/response.h"
#include "report/report.h"

namespace survmeth::analysis {

struct CoxSubjects {
  bool severalEvents = false;        // of one subject
  std::optional<report::Note> gaps;  // "subjectGaps", where times lie between rows of a subject
};

// In   subjects   of each row
// Throws engine::Refusal (kSubject): two rows of a subject at risk at one time in one stratum.
// Cost O(rows log rows)
CoxSubjects checkSubjects(const frame::Frame& data, const engine::Response& response,
                          const engine::Rows& rows, const frame::Labels& subjects,
                          model::DatedTimes dated);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_SUBJECTS_H_
