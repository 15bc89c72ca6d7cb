// Competing risks, validation, ROC curves, judges and methods.
#include "survival/survival.h"
#include "tests/boundary/argument_families.h"

namespace survmeth::test {
namespace {

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

}  // namespace

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

}  // namespace survmeth::test
