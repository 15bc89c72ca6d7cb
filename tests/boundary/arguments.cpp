#include "tests/boundary/arguments.h"

#include <algorithm>
#include <random>

#include "survival/survival.h"

namespace survmeth::test {
namespace {

using Reals = std::vector<double>;
using Ints = std::vector<int>;

constexpr int n = 12;

template <typename T>
ArrayArgument argument(After after, bool real, const std::vector<T>& values) {
  ArrayArgument result{after, real, std::vector<unsigned char>(values.size() * sizeof(T))};
  std::memcpy(result.bytes.data(), values.data(), result.bytes.size());
  return result;
}
ArrayArgument in(const Reals& values) { return argument(After::asBefore, true, values); }
ArrayArgument in(const Ints& values) { return argument(After::asBefore, false, values); }
ArrayArgument back(const Reals& values) { return argument(After::givenBack, true, values); }
ArrayArgument back(const Ints& values) { return argument(After::givenBack, false, values); }
ArrayArgument out(int count) { return back(Reals(static_cast<std::size_t>(count), 77.0)); }
ArrayArgument outInts(int count) { return back(Ints(static_cast<std::size_t>(count), 77)); }
ArrayArgument single() { return argument(After::set, true, Reals{77.0}); }
ArrayArgument singleInt(int value = 77) { return argument(After::set, false, Ints{value}); }

std::mt19937& source() {
  static std::mt19937 generator(20);
  return generator;
}

Reals uniform(int count, double low, double high) {
  Reals values(static_cast<std::size_t>(count));
  for (double& value : values) value = low + (high - low) * (source()() / 4294967296.0);
  return values;
}

Reals whole(int count, int low, int high) {
  Reals values(static_cast<std::size_t>(count));
  for (double& value : values) value = low + static_cast<int>(source()() % (high - low + 1));
  return values;
}

Reals ascending(Reals values) {
  std::sort(values.begin(), values.end());
  return values;
}

Reals binary() {
  Reals values = whole(n, 0, 1);
  values[0] = 1;
  values[1] = 0;
  return values;
}

Reals ones() { return Reals(n, 1.0); }

// 1, 1, 2, 2, ...
Reals pairs() {
  Reals ids(n);
  for (int i = 0; i < n; ++i) ids[i] = i / 2 + 1;
  return ids;
}

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

std::vector<EntryPoint> competingAndValidation() {
  return {
      {"Cpp_CheckStatusFormat",
       {in(whole(n, 0, 3)), out(n), singleInt(), out(n)},
       [](const Places& a) { Cpp_CheckStatusFormat(a.d(0), n, a.d(1), a.i(2), 0, a.d(3)); }},
      {"Cpp_ReorganizeDataCum",
       {back(whole(n, 1, 9)), back(whole(n, 0, 2)), back(binary()), back(whole(n, 1, 2)),
        back(Reals{5, 7}), single()},
       [](const Places& a) {
         Cpp_ReorganizeDataCum(a.d(0), n, a.d(1), a.d(2), a.d(3), a.d(4), 2, a.d(5));
       }},
      {"Cpp_CumIncCalc",
       {in(ascending(uniform(n, 0, 9))), in(whole(n, 0, 2)), in(uniform((n + 2) * 12, 0, 1)),
        out(10 * n), out(10 * n)},
       [](const Places& a) {
         Cpp_CumIncCalc(n, n, a.d(0), a.d(1), 1, 0.05, n, 0, a.d(2), a.d(3), a.d(4));
       }},
      {"Cpp_GrayTest",
       {in(whole(n, 1, 9)), in(whole(n, 0, 2)), in(whole(n, 1, 2)), single(), single(), single()},
       [](const Places& a) {
         Cpp_GrayTest(n, 2, a.d(0), a.d(1), a.d(2), 1, 0, a.d(3), a.d(4), a.d(5));
       }},
      {"Cpp_TransNelsonAalen",
       {in(whole((n + 2) * 12, 1, 9)), out(9 * n)},
       [](const Places& a) { Cpp_TransNelsonAalen(a.d(0), a.d(1), n, n, 0.05, 1, 2); }},
      {"Cpp_ComputeBootOut",
       {in(uniform(5 * n, 0, 1)), out(20)},
       [](const Places& a) { Cpp_ComputeBootOut(n, 0.05, a.d(0), a.d(1)); }},
      {"Cpp_ComputeCVTable",
       {in(whole(n, 1, 9)), in(binary()), in(uniform(2 * n, -1, 1)), in(Reals{1, -1}),
        in(uniform(9, 0, 1)), in(uniform(12, 0, 1)), out(15)},
       [](const Places& a) {
         Cpp_ComputeCVTable(n, 2, a.d(0), a.d(1), a.d(2), a.d(3), a.d(4), a.d(5), 2, 3, a.d(6));
       }},
  };
}

EntryPoint compareAreas(const std::string& options, short paired) {
  return {
      "Cpp_ComputeROCComparisonsDep2, " + options,
      {in(binary()), in(uniform(2 * n, 0, 1)), in(ones()), in(Reals{n, n}), in(Reals{0.6, 0.7}),
       back(Reals{0.1, 0.2}), in(Ints{1, 1}), out(4), out(4), out(4), out(4), out(4), outInts(4)},
      [=](const Places& a) {
        Cpp_ComputeROCComparisonsDep2(a.d(0), n, a.d(1), a.d(2), a.d(3), 2, 0.05, paired, a.d(4),
                                      a.d(5), a.i(6), a.d(7), a.d(8), a.d(9), a.d(10), a.d(11),
                                      a.i(12));
      },
      {12, 11, 10, 9, 7, 8, 5}};
}

std::vector<EntryPoint> rocAndJudge() {
  static wchar_t ill[] = L"ill";
  static wchar_t well[] = L"well";
  static wchar_t* labels[n];
  for (int i = 0; i < n; ++i) labels[i] = i % 3 == 0 ? ill : well;
  Reals values(n);
  for (int i = 0; i < n; ++i) values[i] = 5 * i % 6;  // six distinct ones
  return {
      {"Cpp_ComputeROC",
       {in(binary()), back(values), in(ones()), out(6), out(14), out(18), out(18), out(6), out(6),
        out(6), out(6), out(12), out(12), out(9), out(6)},
       [](const Places& a) {
         Cpp_ComputeROC(a.d(0), n, 6, a.d(1), a.d(2), 2, 0.05, 0, 2, -1, 2, 0, 1, 2, 3, 4, a.d(3),
                        a.d(4), a.d(5), a.d(6), a.d(7), a.d(8), a.d(9), a.d(10), a.d(11), a.d(12),
                        a.d(13), a.d(14));
       }},
      {"Cpp_GetROCStats",
       {back(whole(4, 1, 50)), out(39), out(9)},
       [](const Places& a) { Cpp_GetROCStats(a.d(0), 0.05, 3, -1, 0, a.d(1), a.d(2)); },
       {0, 2, 1}},
      {"Cpp_CreateROCContingencyTable",
       {in(uniform(n, 0, 1)), in(ones()), back(Reals(4, 0.0))},
       [](const Places& a) {
         Cpp_CreateROCContingencyTable(labels, n, ill, a.d(0), 0, 0.5, 3, a.d(1), a.d(2));
       }},
      compareAreas("paired", -1),
      compareAreas("independent", 0),
      {"Cpp_PrepareIntervalData",
       {in(whole(4 * n, 0, 1)), in(Reals{1, 2, 3, 4}), in(uniform(2 * n, 0, 1)), singleInt(),
        back(Ints(n, 0)), singleInt(), out(2 * n), out(n), out(n), out(2 * n), out(8)},
       [](const Places& a) {
         Cpp_PrepareIntervalData(a.d(0), n, 4, a.d(1), a.d(2), 2, a.i(3), a.i(4), a.i(5), a.d(6),
                                 a.d(7), a.d(8), a.d(9), a.d(10));
       }},
      {"Cpp_TransformJudgeToInt",
       {in(whole(n, 1, 5)), in(pairs()), in(Reals(n / 2, 2)), in(uniform(2 * n, 0, 1)),
        out(n / 2 * 6), out(n), out(6)},
       [](const Places& a) {
         Cpp_TransformJudgeToInt(a.d(0), n, 6, a.d(1), n / 2, a.d(2), a.d(3), 2, a.d(4), a.d(5),
                                 a.d(6));
       },
       {6, 5, 4}},
  };
}

// After the arrays x, y, ids, counts come six results, five arrays and 22 results.
EntryPoint deming(const std::string& options, short weighted) {
  std::vector<ArrayArgument> arguments{back(uniform(n, 1, 9)), back(uniform(n, 1, 9)),
                                       back(pairs()), in(Ints(n / 2, 2))};
  const auto singles = [&](int count) {
    for (int i = 0; i < count; ++i) arguments.push_back(single());
  };
  singles(6);
  for (const int columns : {1, 2, 1, 1, 2}) arguments.push_back(out(columns * n));
  singles(22);
  return {"VB_DemingRegression, " + options, arguments, [=](const Places& a) {
            VB_DemingRegression(a.d(0), n, a.d(1), a.d(2), -1, n / 2, a.i(3), 1, weighted, 0.05,
                                1.0, 1e-9, 30, 3, 6, a.d(4), a.d(5), a.d(6), a.d(7), a.d(8), a.d(9),
                                a.d(10), a.d(11), a.d(12), a.d(13), a.d(14), a.d(15), a.d(16),
                                a.d(17), a.d(18), a.d(19), a.d(20), a.d(21), a.d(22), a.d(23),
                                a.d(24), a.d(25), a.d(26), a.d(27), a.d(28), a.d(29), a.d(30),
                                a.d(31), a.d(32), a.d(33), a.d(34), a.d(35), a.d(36));
          }};
}

std::vector<EntryPoint> methcomp() {
  return {
      {"Cpp_BlandAltman",
       {in(uniform(n, 1, 9)), in(uniform(n, 1, 9)), out(n), out(n), single(), single(), single(),
        single(), single(), single()},
       [](const Places& a) {
         Cpp_BlandAltman(a.d(0), a.d(1), n, 1, 0.05, a.d(2), a.d(3), a.d(4), a.d(5), a.d(6), a.d(7),
                         a.d(8), a.d(9));
       },
       {3, 2}},
      {"Cpp_GetRepeatability",
       {in(uniform(n, 1, 9)), in(pairs()), single(), single(), single()},
       [](const Places& a) {
         Cpp_GetRepeatability(a.d(0), n, a.d(1), 0.05, a.d(2), a.d(3), a.d(4));
       }},
      {"VB_PassingBablok",
       {in(uniform(n, 1, 9)), in(uniform(n, 1, 9)), single(), single(), single(), single(),
        single(), single(), out(n), out(n), out(n), out(n), single(), single(), single()},
       [](const Places& a) {
         VB_PassingBablok(a.d(0), n, a.d(1), 0.05, a.d(2), a.d(3), a.d(4), a.d(5), a.d(6), a.d(7),
                          a.d(8), a.d(9), a.d(10), a.d(11), a.d(12), a.d(13), a.d(14));
       }},
      deming("closed form", 0),
      deming("weighted", -1),
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
