// The functions of libDist over their reference tables.
#ifndef TESTS_ACCURACY_DIST_FUNCTIONS_H_
#define TESTS_ACCURACY_DIST_FUNCTIONS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "Dist/Dist"
#include "accuracy.h"

namespace accuracy_tests {

// The data of a row of V_PearsonRho.csv, by the rule of the program that made it.
inline double pearsonRow(const std::vector<double>& a) {
  const int n = static_cast<int>(a[1]);
  auto state = static_cast<std::uint64_t>(a[0]);
  std::vector<double> x;
  std::vector<double> y;
  const auto draw = [&state] {
    state = state * 6364136223846793005U + 1442695040888963407U;
    return static_cast<double>(state >> 11) * 0x1p-53;
  };
  for (int i = 0; i < n; ++i) {
    const double first = draw();
    const double second = draw();
    x.push_back(a[2] + first);
    y.push_back(first + a[3] * second);
  }
  return V_PearsonRho(x.data(), y.data(), n);
}

template <class F>
double side(const std::vector<double>& a, F f) {
  double lower = 0.0;
  double upper = 0.0;
  f(a, &lower, &upper);
  return a[0] == 0.0 ? lower : upper;
}

inline std::vector<Function> distFunctions() {
  using Arguments = std::vector<double>;
  return {
      {"CDFNormalStd", "x from -38.4 to 40", [](const Arguments& a) { return CDFNormalStd(a[0]); }},
      {"PDFNormalStd", "x from -38 to 38", [](const Arguments& a) { return PDFNormalStd(a[0]); }},
      {"InvCDFNormalStd", "p from 1e-300 to 1 - 2^-53",
       [](const Arguments& a) { return InvCDFNormalStd(a[0]); }},
      {"pValChiSq", "df from 1e-12 to 1e10, p from 1e-305 to 1",
       [](const Arguments& a) { return pValChiSq(a[0], a[1]); }},
      {"InvCDFChiSq", "df from 0.01 to 1e6, p from 1e-300 to 1 - 2^-53",
       [](const Arguments& a) { return InvCDFChiSq(a[0], a[1]); }},
      {"CDFStudent", "df from 1e-5 to 1e18, t from -1e300 to 4",
       [](const Arguments& a) { return CDFStudent(a[0], a[1]); }},
      {"InvCDFStudent", "df from 0.5 to 1e10, p from 1e-300 to 1 - 2^-53",
       [](const Arguments& a) { return InvCDFStudent(a[0], a[1]); }},
      {"CDFKolmogorov", "x from 0.05 to 10",
       [](const Arguments& a) { return CDFKolmogorov(a[0]); }},
      {"GetInfSupWald", "m from 1 to 500",
       [](const Arguments& a) {
         return side(a, [](const Arguments& b, double* lower, double* upper) {
           GetInfSupWald(b[1], b[2], b[3], lower, upper);
         });
       }},
      {"GetInfSupWilson", "m from 1 to 1e6, correction 0 and 0.5",
       [](const Arguments& a) {
         return side(a, [](const Arguments& b, double* lower, double* upper) {
           GetInfSupWilson(b[1], b[2], b[3], b[4], lower, upper);
         });
       }},
      {"GetInfSupClopper", "m from 1 to 1e12, x fractional too, alpha from 1e-300 to 1",
       [](const Arguments& a) {
         return side(a, [](const Arguments& b, double* lower, double* upper) {
           GetInfSupClopper(b[1], b[2], b[3], lower, upper);
         });
       }},
      {"GetInfSupLog", "z s up to 588",
       [](const Arguments& a) {
         return side(a, [](const Arguments& b, double* lower, double* upper) {
           GetInfSupLog(b[1], b[2], b[3], lower, upper);
         });
       }},
      {"V_PearsonRho", "n from 2 to 300, means up to 1e6 deviations", pearsonRow},
  };
}

inline Library dist() {
  return {"dist", true, distFunctions(), [](const std::string&) { return 4.0; }};
}

}  // namespace accuracy_tests

#endif  // TESTS_ACCURACY_DIST_FUNCTIONS_H_
