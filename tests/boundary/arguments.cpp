#include "survival/survival.h"
#include "tests/boundary/argument_families.h"

namespace survmeth::test {
namespace {

EntryPoint runLife(const std::string& options, short grid, short lifeTable, short byWidth) {
  const int tableCells = lifeTable == -1 ? 16 * (byWidth == -1 ? 9 + 3 : 3 + 3) : 12 * (n + 2);
  const int intervalRows = lifeTable == -1 ? (byWidth == -1 ? 9 + 2 : 3 + 2) : n + 1;
  Reals times = ascending(whole(n, 1, 9));
  times.back() = 9;
  return {"RunLife, " + options,
          {in(Ints{0}), back(times), back(binary()), back(ones()), back(Reals{2, 4, 10}),
           out(2 * intervalRows), single(), out(tableCells), singleInt(),
           back(grid == -1 ? ascending(whole(4 * 9, 1, 9)) : Reals{77})},
          [=](const Places& a) {
            RunLife(n, 1, a.i(0), 3, 1.0, 9, 1, n, 1, 0, 0, a.d(1), a.d(2), a.d(3), 0, grid,
                    lifeTable, byWidth, a.d(4), a.d(5), a.d(6), a.d(7), a.i(8), a.d(9));
          },
          {},
          1};
}

std::vector<EntryPoint> life() {
  return {
      {"ReorganizeData",
       {back(whole(n, 1, 9)), in(Ints{n}), back(binary()), back(uniform(n, 0, 1)),
        back(whole(n, 1, 2)), back(Reals{5, 7}), single()},
       [](const Places& a) {
         ReorganizeData(a.d(0), a.i(1), a.d(2), a.d(3), a.d(4), a.d(5), 2, 0, a.d(6));
       }},
      runLife("Kaplan-Meier", 0, 0, 0),
      runLife("Kaplan-Meier and grid", -1, 0, 0),
      runLife("table by width", -1, -1, -1),
      runLife("table between bounds", 0, -1, 0),
      {"ComputeKaplanMeanMedian",
       {in(ascending(uniform((n + 2) * 12, 0, 9))), single(), out(4), out(12)},
       [](const Places& a) {
         ComputeKaplanMeanMedian(a.d(0), n, 0.05, n, n, a.d(1), a.d(2), a.d(3));
       }},
      {"ComputeLifeTests",
       {in(whole(7 * 5, 1, 9)), out(12)},
       [](const Places& a) { ComputeLifeTests(a.d(0), 5, 5, 2, 0.05, a.d(1)); }},
      {"LoadKaplanTest",
       {singleInt(n), in(whole(n, 1, 9)), out(7 * n)},
       [](const Places& a) { LoadKaplanTest(a.i(0), n, 2, a.d(1), a.d(2)); }},
  };
}

EntryPoint runCox(const std::string& options, int method, short survival) {
  const int cells = survival == -1 ? n : 1;
  Ints starts(n), events(n);
  const Reals status = binary();
  for (int i = 0; i < n; ++i) {
    starts[i] = i + 1;
    events[i] = status[i] != 0;
  }
  const int censored = static_cast<int>(std::count(events.begin(), events.end(), 0));
  return {"RunCoxReg, " + options,
          {in(ascending(uniform(n, 0, 9))),
           singleInt(),
           in(status),
           in(uniform(2 * n, -1, 1)),
           in(Reals{n}),
           singleInt(20),
           in(Ints{n}),
           in(Ints(n, 1)),
           in(events),
           in(Ints{censored}),
           in(starts),
           out(2),
           out(12),
           out(9),
           out(18),
           out(cells),
           out(cells),
           out(survival == -1 ? 8 * n : 1),
           out(6),
           singleInt(),
           outInts(2)},
          [=](const Places& a) {
            RunCoxReg(a.d(0), n, 2, a.i(1), a.d(2), 0, a.d(3), 0, a.d(4), 1, a.i(5), 1e-9, 0,
                      a.i(6), a.i(7), a.i(8), a.i(9), a.i(10), method, 0, 0.9, 0.1, 0.05, n,
                      survival, 0, 0, 0, a.d(11), a.d(12), a.d(13), a.d(14), a.d(15), a.d(16),
                      a.d(17), a.d(18), a.i(19), a.i(20));
          }};
}

std::vector<EntryPoint> cox() {
  return {
      {"Cpp_ReorganizeDataCox",
       {back(whole(n, 1, 9)), back(binary()), back(uniform(n, 0, 1)), back(ones()),
        back(uniform(2 * n, 0, 1)), back(whole(n, 1, 2)), back(Reals{5, 7}), outInts(2), outInts(2),
        outInts(2 * n), outInts(2 * n), outInts(2 * n), singleInt(0)},
       [](const Places& a) {
         Cpp_ReorganizeDataCox(a.d(0), n, 2, a.d(1), a.d(2), a.d(3), a.d(4), a.d(5), a.d(6), 2,
                               a.i(7), a.i(8), a.i(9), a.i(10), a.i(11), a.i(12));
       }},
      runCox("every covariate", -1, -1),
      runCox("without survival", -1, 0),
      runCox("forward", 0, -1),
      runCox("backward", 1, -1),
  };
}

constexpr int p = 2, k = 2, m = p + k;

// times, status, bounds, covariates and weights, with arguments before the second of them.
std::vector<ArrayArgument> observations(const std::vector<ArrayArgument>& second,
                                        ArrayArgument (*covariates)(const Reals&),
                                        const std::vector<ArrayArgument>& others) {
  std::vector<ArrayArgument> all{in(uniform(n, 0.1, 3))};
  all.insert(all.end(), second.begin(), second.end());
  all.insert(all.end(), {in(binary()), in(uniform(2 * n, 0.1, 3)), covariates(uniform(p * n, 0, 1)),
                         in(ones())});
  all.insert(all.end(), others.begin(), others.end());
  return all;
}

std::vector<ArrayArgument> selected() {
  return observations(
      {singleInt(p)}, back,
      {singleInt(15), in(Reals{0, 0, 1, 1}), out(m), single(), single(), out(m), out(m * m),
       out(m * m), out(m), out(m * m), out(3 * p), singleInt(), outInts(p)});
}
// The parameters are an argument before the likelihoods and come home before the gradient.
const std::vector<std::size_t> kSelectedHomeward = {4, 8, 11, 12, 13, 14, 15, 16, 18};

EntryPoint runParam(const std::string& options, int method) {
  return {"Cpp_RunParamReg, " + options,
          observations({singleInt()}, in,
                       {in(Reals{0, 0, 1, 1}), out(m), out(14), out(9), out(9 * m), out(n),
                        out(2 * n), out(2 * n), out(9 * n), out(3 * p), singleInt(), outInts(p)}),
          [=](const Places& a) {
            Cpp_RunParamReg(a.d(0), n, p, a.i(1), k, a.d(2), a.d(3), a.d(4), a.d(5), 25, 1e-8, -1,
                            2, 0, method, 0, 0.9, 0.1, 0.05, 0, 0, a.d(6), 0, 0, a.d(7), a.d(8),
                            a.d(9), a.d(10), a.d(11), a.d(12), a.d(13), a.d(14), a.d(15), a.i(16),
                            a.i(17));
          }};
}

std::vector<EntryPoint> param() {
  return {
      {"Cpp_ComputeLogLikeDerivativesParam",
       {in(uniform(n, 0, 3)), in(binary()), in(uniform(2 * n, 0, 3)), in(uniform(p * n, 0, 1)),
        in(Reals{0.1, 0.2, 1, 1.5}), in(ones()), single(), out(m), out(m * m)},
       [](const Places& a) {
         Cpp_ComputeLogLikeDerivativesParam(a.d(0), n, p, k, a.d(1), a.d(2), a.d(3), a.d(4), a.d(5),
                                            2, a.d(6), a.d(7), a.d(8));
       }},
      {"Cpp_OptimizeParamModel",
       observations({}, in,
                    {singleInt(15), in(Reals{0, 0, 1, 1}), single(), single(), out(m), out(m * m),
                     out(m), out(m), out(m * m), out(m)}),
       [](const Places& a) {
         Cpp_OptimizeParamModel(a.d(0), n, p, k, a.d(1), a.d(2), a.d(3), a.d(4), a.i(5), 1e-8, 2,
                                -1, a.d(6), 0, 0, a.d(7), a.d(8), a.d(9), a.d(10), a.d(11), a.d(12),
                                a.d(13), a.d(14));
       },
       {14, 9, 10, 11, 12, 13}},
      {"Cpp_Param_BackSelection", selected(),
       [](const Places& a) {
         Cpp_Param_BackSelection(a.d(0), n, a.i(1), k, a.d(2), a.d(3), a.d(4), a.d(5), a.i(6), 1e-8,
                                 2, 0, a.d(7), 0, 0, 0, 0.1, a.d(8), a.d(9), a.d(10), a.d(11),
                                 a.d(12), a.d(13), a.d(14), a.d(15), a.d(16), a.i(17), a.i(18));
       },
       kSelectedHomeward, 1},
      {"Cpp_Param_ForSelection", selected(),
       [](const Places& a) {
         Cpp_Param_ForSelection(a.d(0), n, a.i(1), k, a.d(2), a.d(3), a.d(4), a.d(5), a.i(6), 1e-8,
                                2, 0, a.d(7), 0, 0, 0.9, a.d(8), a.d(9), a.d(10), a.d(11), a.d(12),
                                a.d(13), a.d(14), a.d(15), a.d(16), a.i(17), a.i(18));
       },
       kSelectedHomeward, 1},
      {"Cpp_ComputeCritParam",
       {in(uniform(m, -1, 1)), in(uniform(m * m, -1, 0)), in(uniform(m, -1, 0)), single(),
        in(uniform(m, -1, 1)), in(uniform(m * m, -1, 0)), out(14), out(9 * m), out(9)},
       [](const Places& a) {
         Cpp_ComputeCritParam(n, p, k, -10, -12, 5, 0.05, a.d(0), a.d(1), a.d(2), a.d(3), a.d(4),
                              a.d(5), a.d(6), a.d(7), a.d(8));
       }},
      {"Cpp_ResParam",
       {in(uniform(n, 0, 3)), in(uniform(p * n, 0, 1)), in(Reals{0.1, 0.2, 1, 1.5}), out(n),
        out(2 * n), out(n), out(9 * n)},
       [](const Places& a) {
         Cpp_ResParam(a.d(0), n, p, k, 2, -1, a.d(1), a.d(2), a.d(3), a.d(4), a.d(5), a.d(6));
       }},
      runParam("every covariate", -1),
      runParam("forward", 0),
      runParam("backward", 1),
  };
}

}  // namespace

const std::vector<EntryPoint>& entryPoints() {
  static const std::vector<EntryPoint> all = [] {
    std::vector<EntryPoint> list;
    for (auto family : {life, cox, param, competingAndValidation, rocAndJudge, methcomp}) {
      for (EntryPoint& entry : family()) list.push_back(std::move(entry));
    }
    return list;
  }();
  return all;
}

}  // namespace survmeth::test
