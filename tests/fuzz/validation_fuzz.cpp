// Fuzz target of the validation family.
#include <algorithm>

#include "survival/calls/validation.h"
#include "tests/fuzz/fuzz.h"

namespace survmeth::fuzz {
namespace {

Call bootOut(Input& in, Arrays& a) {
  const int samples = in.count(40);
  const double alpha = in.alpha();
  double *statistics = a.in(in.column(5 * samples, Likely::kProbabilities)), *summary = a.out(20);
  return [=] {
    Cpp_ComputeBootOut(samples, alpha, statistics, summary);
    return Outcome{};
  };
}

Call crossValidation(Input& in, Arrays& a) {
  const int n = in.count(40), p = in.count(4), nOut = in.count(6), row = in.integer(1, 6);
  const int columns = std::max(p, 1);
  double *time = a.in(in.column(n, Likely::kTimes)), *status = a.in(in.column(n, Likely::kStatus)),
         *x = a.in(in.column(std::max(n, 0) * columns, Likely::kReal)),
         *beta = a.in(in.column(columns, Likely::kReal)), *h = a.in(in.column(9, Likely::kTimes)),
         *f = a.in(in.column(12, Likely::kTimes)), *table = a.out(5LL * nOut);
  return [=] {
    Cpp_ComputeCVTable(n, p, time, status, x, beta, h, f, row, nOut, table);
    return Outcome{};
  };
}

}  // namespace

const std::vector<Prepare> kEntries = {bootOut, crossValidation};

}  // namespace survmeth::fuzz
