// What the analysis `agree` is asked, what it finds, and what it says of that.
#ifndef ANALYSIS_AGREE_REPORT_H_
#define ANALYSIS_AGREE_REPORT_H_

#include <optional>
#include <string>

#include "analysis/agreement.h"
#include "analysis/twoMethods.h"
#include "report/report.h"

namespace survmeth::analysis {

struct AgreeRequest {
  std::string first, second, replicates;
  DifferenceKind difference = DifferenceKind::kAbsolute;
  double alpha = 0.05;
};

// Of two methods the agreement, of one the repeatability.
struct AgreeResult {
  Pairs pairs;
  std::optional<AgreementResult> agreement;
  std::optional<RepeatabilityResult> repeatability;
};

report::Report describeAgree(const AgreeResult& result, const AgreeRequest& request);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_AGREE_REPORT_H_
