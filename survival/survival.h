/* survmeth's flat-array entry points, for callers in C, C++ or any language that can call C.
 *
 * Conventions, for every function below:
 *  1. Arrays belong to the caller, are column-major and must hold the number of elements that the
 *     comment shows, outputs included. A vector is one column. Shapes may be written
 *     x[rows * cols].
 *  2. Where a shape depends on a count that may be 0 (strata, covariates, bounds, thresholds,
 *     tests), the count is raised to 1. One array may stand for several arguments: each is as if
 *     copied in and, after the computation, back.
 *  3. A flag is a short: -1 is true, every other value, 1 included, is false.
 *  4. An output that was not asked for is still touched: its first element becomes 0.
 *  5. What an entry point does not write keeps what the caller put there, unless said otherwise;
 *     callers zero their arrays.
 *  6. A statistic that cannot be formed is -1.79769313486231e308, and an input at or below that is
 *     missing; +1.79769313486231e308 stands for an infinite result or an open bound.
 *  7. Result 0 is success, a negative code is refused or degenerate input. A code called soft
 *     reports a condition: the outputs are complete all the same.
 *  8. alpha is the significance level: intervals have level 1 - alpha.
 *  9. No state is kept between calls; calls on different threads with different arrays do not
 *     interfere. Only a failed allocation throws (std::bad_alloc), after everything was released.
 */
#ifndef SURVIVAL_SURVIVAL_H_
#define SURVIVAL_SURVIVAL_H_

#include "survival/calls/cox.h"
#include "survival/calls/cuminc.h"
#include "survival/calls/judge.h"
#include "survival/calls/life.h"
#include "survival/calls/methcomp.h"
#include "survival/calls/param.h"
#include "survival/calls/roc.h"
#include "survival/calls/validation.h"

#endif /* SURVIVAL_SURVIVAL_H_ */
