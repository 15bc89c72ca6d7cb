// The two Deming estimators on plain arrays.
#ifndef SURVIVAL_METHCOMP_DEMING_H_
#define SURVIVAL_METHCOMP_DEMING_H_

#include <cstddef>
#include <vector>

namespace survival {

struct Line {
  double intercept = 0.0;
  double slope = 0.0;
};

// Closed form; all arrays m long.
Line demingLine(const double* x, const double* y, const double* w, std::size_t m, double lambda);

// One subject's values and the variances of its replicates.
struct Subject {
  double x;
  double y;
  double xVariance;
  double yVariance;
};

// Sums of squares of each subject's replicates around their means, over `divisor`: rows of one
// subject stand together, counts[m] tells how many; rows past the end do not count.
std::vector<Subject> withReplicateVariances(const std::vector<double>& xs,
                                            const std::vector<double>& ys,
                                            const std::vector<int>& counts,
                                            const std::vector<double>& xRep,
                                            const std::vector<double>& yRep, double divisor);

// The reweighted line.
Line weightedDemingLine(const std::vector<Subject>& subjects, int maxIterations, double tolerance);

}  // namespace survival

#endif  // SURVIVAL_METHCOMP_DEMING_H_
