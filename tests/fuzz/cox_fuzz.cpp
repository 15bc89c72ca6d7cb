// Fuzz target of the Cox family.
#include <algorithm>
#include <cmath>

#include "survival/calls/cox.h"
#include "tests/fuzz/fuzz.h"

namespace survmeth::fuzz {
namespace {

std::size_t elements(long long rows, long long cols) {
  return static_cast<std::size_t>(std::max(rows, 0LL) * std::max(cols, 0LL));
}

Call reorganize(Input& in, Arrays& a) {
  const int n = in.count(40), p = in.count(4), strata = in.count(5);
  const int s = std::max(strata, 1);
  double *time = a.inOut(in.column(n, Likely::kTimes)),
         *status = a.inOut(in.column(n, Likely::kStatus)),
         *extra = a.inOut(in.column(n, Likely::kReal)),
         *key = a.inOut(in.column(n, Likely::kStatus)),
         *x = a.inOut(in.column(std::max(n, 0) * std::max(p, 1), Likely::kReal)),
         *stratum = a.inOut(in.column(n, Likely::kGroups)), *sizes = a.in(in.sizes(strata, n));
  int *distinct = a.outInts(s), *censored = a.outInts(s),
      *start = a.outInts(static_cast<long long>(elements(s, n))),
      *size = a.outInts(static_cast<long long>(elements(s, n))),
      *events = a.outInts(static_cast<long long>(elements(s, n)));
  const int before = in.integer(0, 3);
  int* groups = a.inOut(std::vector<int>{before});
  return [=] {
    const int code = Cpp_ReorganizeDataCox(time, n, p, status, extra, key, x, stratum, sizes,
                                           strata, distinct, censored, start, size, events, groups);
    require(*groups >= before, "the number of groups is never lowered");
    return coded(code, {0, -1, -2, -3});
  };
}

// What RunCoxReg reads: rows and group tables as the preparation leaves them, with some cells
// replaced, or group tables of any numbers.
struct Prepared {
  Prepared(Input& in, int n, int p, int strata)
      : time(in.column(n, Likely::kTimes)),
        status(in.column(n, Likely::kStatus)),
        covariates(in.column(std::max(n, 0) * std::max(p, 1), Likely::kReal)),
        sizes(in.sizes(strata, n)) {
    const int s = std::max(strata, 1);
    const unsigned style = in.byte();
    if (style < 192) {
      std::vector<double> extra(time.size()), key(time.size(), 1.0);
      std::vector<double> stratum = in.column(n, Likely::kGroups);
      for (auto* list : {&distinct, &censored}) list->assign(s, 0);
      for (auto* list : {&start, &size, &events}) list->assign(elements(s, n), 0);
      Cpp_ReorganizeDataCox(time.data(), n, p, status.data(), extra.data(), key.data(),
                            covariates.data(), stratum.data(), sizes.data(), strata,
                            distinct.data(), censored.data(), start.data(), size.data(),
                            events.data(), &groups);
      if (style >= 160) groups = in.count(40);
    } else {
      groups = in.count(40);
      distinct = in.integers(s, 0, 12);
      censored = in.integers(s, 0, 12);
      start = in.integers(static_cast<int>(elements(s, groups)), 1, 12);
      size = in.integers(static_cast<int>(elements(s, groups)), 0, 3);
      events = in.integers(static_cast<int>(elements(s, groups)), 0, 3);
    }
    for (auto* list : {&start, &size, &events}) list->resize(elements(s, std::max(groups, 1)));
    if (style % 4 == 3) {
      for (auto* list : {&distinct, &censored, &start, &size, &events}) in.poke(*list);
      in.poke(sizes);
      in.poke(status);
      in.poke(covariates);
    }
  }

  std::vector<double> time, status, covariates, sizes;
  std::vector<int> distinct, censored, start, size, events;
  int groups = 0;

  // Whether counts lead far past the data, which takes long for each iteration.
  bool damaged() const {
    return std::any_of(distinct.begin(), distinct.end(), [](int d) { return d > 100; }) ||
           std::any_of(size.begin(), size.end(), [](int d) { return d > 100; }) ||
           std::any_of(events.begin(), events.end(), [](int d) { return d > 100; }) ||
           std::any_of(start.begin(), start.end(), [](int d) { return d < -100 || d > 100; }) ||
           std::any_of(sizes.begin(), sizes.end(), [](double d) { return !(std::fabs(d) < 100); });
  }
};

Call fit(Input& in, Arrays& a, int n) {
  const int p = in.count(n > 100 ? 1 : 4), strata = in.count(3);
  int limit = in.limit();
  const int ties = in.integer(0, 1), method = in.integer(-1, 1), removal = in.integer(0, 0);
  const double tolerance = in.tolerance(), entry = in.alpha(), leave = in.alpha(),
               alpha = in.alpha();
  const short survival = in.flag();
  const Prepared data(in, n, p, strata);
  if (data.damaged() && in.byte() % 16 != 15) return {};  // seldom: each takes long
  const int longest = data.damaged() || n > 100 ? 1 : 40;
  if (p > 2 || n > 100 || data.damaged()) limit = limit > 0 ? std::min(limit, longest) : longest;
  const int q = std::max(p, 1), g = data.groups;
  const long long cells = survival == -1 ? 1LL * std::max(strata, 1) * std::max(g, 1) : 1;
  double *time = a.in(data.time), *status = a.in(data.status), *x = a.in(data.covariates),
         *sizes = a.in(data.sizes);
  int *distinct = a.in(data.distinct), *size = a.in(data.size), *events = a.in(data.events),
      *censored = a.in(data.censored), *start = a.in(data.start);
  int *kept = a.outInts(), *iterations = a.inOut(std::vector<int>{limit}), *steps = a.outInts(),
      *order = a.outInts(q);
  double *beta = a.inOut(in.column(q, Likely::kReal)), *criteria = a.out(12), *tests = a.out(9),
         *table = a.out(9LL * q), *baseline = a.out(cells), *mean = a.out(cells),
         *residuals = a.out(survival == -1 ? std::max(n, 0) * std::max(2LL * p + 4, 0LL) : 1),
         *history = a.out(3LL * q);
  return [=] {
    const int code = RunCoxReg(time, n, p, kept, status, 7, x, -7, sizes, strata, iterations,
                               tolerance, ties, distinct, size, events, censored, start, method,
                               removal, entry, leave, alpha, g, survival, 1, 2, 3, beta, criteria,
                               tests, table, baseline, mean, residuals, history, steps, order);
    requireWithin(*iterations, limit);
    require(survival == -1 || (*baseline == 0 && *mean == 0 && *residuals == 0),
            "an output that was not asked for becomes 0");
    return coded(code, {0});
  };
}

Call run(Input& in, Arrays& a) { return fit(in, a, in.count(24)); }

// Past 2048 rows the residuals are summed in another way. Seldom: each takes long.
Call longRun(Input& in, Arrays& a) {
  if (in.byte() != 'l') return {};
  return fit(in, a, 2047 + static_cast<int>(in.byte() % 4));
}

}  // namespace

const std::vector<Prepare> kEntries = {reorganize, run, run, longRun};

}  // namespace survmeth::fuzz
