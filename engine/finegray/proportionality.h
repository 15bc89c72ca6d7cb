// The test of proportional subdistribution hazards: whether coefficients change with a function of
// time.
#ifndef ENGINE_FINEGRAY_PROPORTIONALITY_H_
#define ENGINE_FINEGRAY_PROPORTIONALITY_H_

#include <vector>

#include "engine/cox/proportionality.h"
#include "engine/finegray/fit.h"
#include "numerics/progress.h"

namespace survmeth::engine::finegray {

using cox::TimeTransform;

struct Proportionality : cox::TermTests {
  cox::TermTests modelBased;        // by the information, as if the weighted likelihood were one
  std::vector<double> transformed;  // g of each event, by stratum and time
  std::vector<cox::TermResiduals> scaledTerms;  // of these events
};

// The score tests of theta = 0 in coefficients b + theta g(t), the variance of the score that of its
// influences: for each row (or cluster) its part of the score of theta less what its part of the
// score of b takes along, both with what the estimated censoring curve adds where the fit's errors
// have that.
//
// In   transform   kKaplanMeier: the cumulative incidence of the cause just before the time, all
//                  strata together (Aalen-Johansen of rows), which is 1 - Kaplan-Meier where nothing
//                  competes; the others as in proportional hazards
// Edge Refusal(kTime) for kLog at times that are not positive
// Cost that of two iterations of the fit and two of its errors
// Source Zhou, Fine & Laird, Stat Med 32 (2013) 3804-3811; Grambsch & Therneau, Biometrika 81 (1994)
//        515-526
Proportionality testProportionality(const Fit& fit, TimeTransform transform,
                                    numerics::Progress& progress);

}  // namespace survmeth::engine::finegray

#endif  // ENGINE_FINEGRAY_PROPORTIONALITY_H_
