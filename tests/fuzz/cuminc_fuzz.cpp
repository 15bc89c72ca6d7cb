// Fuzz target of the competing-risks family.
#include "survival/calls/cuminc.h"
#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/kaplan.h"

namespace survmeth::fuzz {
namespace {

Call checkStatus(Input& in, Arrays& a) {
  const int n = in.count(40), censorCode = in.integer(-1, 3);
  double *status = a.in(in.column(n, Likely::kCodes)), *codes = a.out(n), *recoded = a.out(n);
  int* count = a.outInts();
  return [=] {
    return coded(Cpp_CheckStatusFormat(status, n, codes, count, censorCode, recoded), {0, -1});
  };
}

Call reorganize(Input& in, Arrays& a) {
  const int n = in.count(40), strata = in.count(6);
  double *time = a.inOut(in.column(n, Likely::kTimes)),
         *status = a.inOut(in.column(n, Likely::kCodes)), *flags = a.out(n),
         *stratum = a.inOut(in.column(n, Likely::kGroups)), *sizes = a.in(in.sizes(strata, n)),
         *maxTime = a.out();
  return [=] {
    return coded(Cpp_ReorganizeDataCum(time, n, status, flags, stratum, sizes, strata, maxTime),
                 {0, -3, -5}, {-2});
  };
}

Call incidence(Input& in, Arrays& a) {
  const int n = in.count(40), eventCode = in.integer(1, 3);
  const int m = in.byte() < 160 ? n : in.count(40), offset = in.byte() < 160 ? 0 : in.integer(0, 9);
  const double alpha = in.alpha();
  const std::vector<double> time = in.column(n, Likely::kSorted),
                            status = in.column(n, Likely::kCodes);
  std::vector<double> events(status);
  for (double& event : events) event = event != 0;
  int rows = 0;
  double* table = a.in(kaplanTable(in, time, events, m, &rows));
  const int r = in.byte() < 160 ? rows : in.count(45);
  double *times = a.in(time), *codes = a.in(status), *result = a.out(10LL * r),
         *complement = a.out(10LL * r);
  return [=] {
    return coded(
        Cpp_CumIncCalc(r, n, times, codes, eventCode, alpha, m, offset, table, result, complement),
        {0});
  };
}

// Past 512 rows the variance is summed in another way.
Call longIncidence(Input& in, Arrays& a) {
  const int m = 505 + static_cast<int>(in.byte() % 16), eventCode = in.integer(1, 3);
  const double alpha = in.alpha();
  const std::vector<double> status = in.column(m, Likely::kCodes);
  std::vector<double> time(status), events(status);
  for (int i = 0; i < m; ++i) {
    time[i] = i;
    events[i] = status[i] != 0;
  }
  in.poke(time);
  int rows = 0;
  double *table = a.in(kaplanTable(in, time, events, m, &rows)), *times = a.in(time),
         *codes = a.in(status), *result = a.out(10LL * rows), *complement = a.out(10LL * rows);
  return [=] {
    return coded(
        Cpp_CumIncCalc(rows, m, times, codes, eventCode, alpha, m, 0, table, result, complement),
        {0});
  };
}

Call gray(Input& in, Arrays& a) {
  const int n = in.count(40), groups = in.count(12), eventCode = in.integer(0, 3);
  const double rho = in.byte() < 128 ? 0 : in.number();
  double *time = a.in(in.column(n, Likely::kTimes)), *status = a.in(in.column(n, Likely::kCodes));
  std::vector<double> codes = in.column(n, Likely::kGroups);
  // More than eight groups are summed in another way, as long as none is without rows.
  if (in.byte() >= 128 && groups > 0) {
    for (int i = 0; i < n; ++i) codes[i] = 1 + i % groups;
    in.poke(codes);
  }
  double *group = a.in(codes), *statistic = a.out(), *df = a.out(), *p = a.out();
  return [=] {
    Cpp_GrayTest(n, groups, time, status, group, eventCode, rho, statistic, df, p);
    return Outcome{};
  };
}

Call nelsonAalen(Input& in, Arrays& a) {
  const int m = in.count(40), ciMethod = in.integer(1, 2), varianceMethod = in.integer(1, 3);
  const double alpha = in.alpha();
  const std::vector<double> time = in.column(m, Likely::kSorted),
                            status = in.column(m, Likely::kStatus);
  int rows = 0;
  double* km = a.in(kaplanTable(in, time, status, m, &rows));
  const int r = in.byte() < 160 ? rows : in.count(45);
  double* table = a.out(9LL * r);
  return [=] {
    return coded(Cpp_TransNelsonAalen(km, table, m, r, alpha, ciMethod, varianceMethod), {0});
  };
}

}  // namespace

const std::vector<Prepare> kEntries = {checkStatus, reorganize,  incidence,
                                       gray,        nelsonAalen, longIncidence};

}  // namespace survmeth::fuzz
