// Fuzz target of the interval and judge data.
#include <algorithm>

#include "survival/calls/judge.h"
#include "tests/fuzz/fuzz.h"

namespace survmeth::fuzz {
namespace {

int cells(int rows, int cols) { return std::max(rows, 0) * std::max(cols, 0); }

Call intervals(Input& in, Arrays& a) {
  const int n = in.count(40), k = in.count(8), p = in.count(4);
  double *answers = a.in(in.column(cells(n, k), Likely::kStatus)),
         *times = a.in(in.column(k, Likely::kSorted)),
         *x = a.in(in.column(cells(n, p), Likely::kReal)), *bounds = a.out(2LL * n),
         *type = a.out(n), *key = a.out(n), *kept = a.out(cells(n, p)), *summary = a.out(2LL * k);
  int *removed = a.outInts(), *flags = a.outInts(n), *left = a.outInts();
  return [=] {
    return coded(Cpp_PrepareIntervalData(answers, n, k, times, x, p, removed, flags, left, bounds,
                                         type, key, kept, summary),
                 {0, -1, -2});
  };
}

Call judges(Input& in, Arrays& a) {
  const int n = in.count(40), levels = in.count(12), subjects = in.count(20), p = in.count(4);
  std::vector<double> sizes = in.column(subjects, Likely::kOnes);
  // Two rows to a subject, as most callers have them.
  if (in.byte() < 160) std::fill(sizes.begin(), sizes.end(), 1 + in.byte() % 2);
  in.poke(sizes);
  double *rating = a.in(in.column(n, Likely::kTimes)),
         *key = a.in(in.column(n, in.byte() < 128 ? Likely::kTimes : Likely::kSorted)),
         *sizeList = a.in(sizes), *x = a.in(in.column(cells(n, p), Likely::kReal)),
         *indicators = a.out(cells(subjects, levels)), *kept = a.out(cells(subjects, p)),
         *list = a.out(levels);
  return [=] {
    return coded(Cpp_TransformJudgeToInt(rating, n, levels, key, subjects, sizeList, x, p,
                                         indicators, kept, list),
                 {0});
  };
}

}  // namespace

const std::vector<Prepare> kEntries = {intervals, judges};

}  // namespace survmeth::fuzz
