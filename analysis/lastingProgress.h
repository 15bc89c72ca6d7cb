// The progress of a run of which something lasts.
#ifndef ANALYSIS_LASTING_PROGRESS_H_
#define ANALYSIS_LASTING_PROGRESS_H_

#include "numerics/partOfProgress.h"

namespace survmeth::analysis {

// That of the analysis, and that of forming what lasts, which takes about an eighth of it; all is
// the analysis' where nothing lasts.
struct LastingProgress {
  LastingProgress(numerics::Progress& whole, bool lasts)
      : run(whole, 0, 8, lasts ? 9 : 8), lasting(whole, 8, 9) {}

  numerics::PartOfProgress run, lasting;
};

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LASTING_PROGRESS_H_
