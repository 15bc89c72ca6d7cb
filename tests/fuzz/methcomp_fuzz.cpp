// Fuzz target of the method-comparison family.
#include <algorithm>
#include <array>

#include "survival/calls/methcomp.h"
#include "tests/fuzz/fuzz.h"

namespace survmeth::fuzz {
namespace {

// Results that go through a pointer each.
template <std::size_t count>
std::array<double*, count> scalars(Arrays& a) {
  std::array<double*, count> all{};
  for (double*& one : all) one = a.out();
  return all;
}

Call blandAltman(Input& in, Arrays& a) {
  const int n = in.count(40), type = in.integer(0, 2);
  const double alpha = in.alpha();
  double *first = a.in(in.column(n, Likely::kTimes)), *second = a.in(in.column(n, Likely::kTimes)),
         *differences = a.out(n), *means = a.out(n);
  const auto s = scalars<6>(a);
  return [=] {
    return coded(Cpp_BlandAltman(first, second, n, type, alpha, differences, means, s[0], s[1],
                                 s[2], s[3], s[4], s[5]),
                 {0});
  };
}

Call repeatability(Input& in, Arrays& a) {
  const int n = in.count(40);
  const double alpha = in.alpha();
  double *values = a.in(in.column(n, Likely::kTimes)),
         *subjects = a.in(in.column(n, Likely::kGroups));
  const auto s = scalars<3>(a);
  return [=] {
    Cpp_GetRepeatability(values, n, subjects, alpha, s[0], s[1], s[2]);
    return Outcome{};
  };
}

Call passingBablok(Input& in, Arrays& a) {
  const int n = in.count(40);
  const double alpha = in.alpha();
  double *x = a.in(in.column(n, Likely::kTimes)), *y = a.in(in.column(n, Likely::kTimes)),
         *residuals = a.out(n), *difference = a.out(n), *distances = a.out(n), *fitted = a.out(n);
  const auto s = scalars<9>(a);
  return [=] {
    return coded(VB_PassingBablok(x, n, y, alpha, s[0], s[1], s[2], s[3], s[4], s[5], residuals,
                                  difference, distances, fitted, s[6], s[7], s[8]),
                 {0});
  };
}

Call deming(Input& in, Arrays& a) {
  const int n = in.count(40), mode = in.integer(1, 4), limit = in.limit();
  const short replicates = in.flag(), weighted = in.flag();
  const double alpha = in.alpha(), ratio = in.byte() < 128 ? 1 : in.number(),
               tolerance = in.tolerance(), at1 = in.number(), at2 = in.number();
  std::vector<double> ids = in.column(n, Likely::kGroups);
  std::vector<int> counts;
  if (in.byte() < 160) {
    for (const double id : {1, 2, 3}) {
      counts.push_back(static_cast<int>(std::count(ids.begin(), ids.end(), id)));
    }
    in.poke(counts);
  } else {
    counts = in.integers(in.count(40), 1, 4);
  }
  const int m = counts.empty() ? in.count(-1) : static_cast<int>(counts.size());
  double *x = a.inOut(in.column(n, Likely::kTimes)), *y = a.inOut(in.column(n, Likely::kTimes)),
         *subjects = a.inOut(ids), *difference = a.out(n), *bias = a.out(2LL * n),
         *residuals = a.out(n), *fitted = a.out(n), *band = a.out(2LL * n);
  int* countList = a.in(counts);
  const auto s = scalars<28>(a);
  return [=] {
    return coded(
        VB_DemingRegression(x, n, y, subjects, replicates, m, countList, mode, weighted, alpha,
                            ratio, tolerance, limit, at1, at2, s[0], s[1], s[2], s[3], s[4], s[5],
                            difference, bias, residuals, fitted, band, s[6], s[7], s[8], s[9],
                            s[10], s[11], s[12], s[13], s[14], s[15], s[16], s[17], s[18], s[19],
                            s[20], s[21], s[22], s[23], s[24], s[25], s[26], s[27]),
        {0});
  };
}

}  // namespace

const std::vector<Prepare> kEntries = {blandAltman, repeatability, passingBablok, deming};

}  // namespace survmeth::fuzz
