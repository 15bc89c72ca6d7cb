// libDist over the whole of its arguments.
#include <cmath>
#include <vector>

#include "Dist/Dist"
#include "tests/wordsize/calls.h"

namespace survmeth::test {
namespace {

// Both tails of a probability, from 1e-300 up.
std::vector<double> probabilities() {
  std::vector<double> values = {0, 1, 0.5, 1e-300};
  for (int k = 1; k < 64; ++k) {
    values.push_back(k / 64.0);
    values.push_back(std::ldexp(1.0 + k / 64.0, -k));
    if (k < 53) values.push_back(1 - std::ldexp(1.0, -k));
  }
  return values;
}

// Both signs, from 2^-30 to 2^10.
std::vector<double> points() {
  std::vector<double> values = {0};
  for (int k = -30; k < 10; ++k) {
    for (const double mantissa : {1.0, 1.3, 1.7}) {
      values.push_back(std::ldexp(mantissa, k));
      values.push_back(-std::ldexp(mantissa, k));
    }
  }
  for (int k = 1; k < 160; ++k) values.push_back(k / 4.0 - 20.0);
  return values;
}

const std::vector<double>& degrees() {
  static const std::vector<double> values = {0.01, 0.5, 1,  1.5,  2,   3,   4,   5.25, 7,
                                             10,   17,  30, 65.5, 100, 1e3, 1e5, 1e8};
  return values;
}

Call ofOne(const char* name, double (*f)(double), const std::vector<double>& arguments) {
  return {name, false, [=](Arrays& a, unsigned) {
            double* out = a.blank(static_cast<int>(arguments.size()));
            return [=] {
              for (std::size_t i = 0; i < arguments.size(); ++i) out[i] = f(arguments[i]);
            };
          }};
}

Call ofTwo(const char* name, double (*f)(double, double), const std::vector<double>& arguments) {
  return {name, false, [=](Arrays& a, unsigned) {
            double* out = a.blank(static_cast<int>(arguments.size() * degrees().size()));
            return [=] {
              double* next = out;
              for (const double df : degrees()) {
                for (const double argument : arguments) *next++ = f(argument, df);
              }
            };
          }};
}

// `bounds` gets two results for each of `count` cases.
template <typename Interval>
Call ofInterval(const char* name, int count, Interval interval) {
  return {name, false, [=](Arrays& a, unsigned) {
            double* bounds = a.blank(2 * count);
            return [=] {
              for (int i = 0; i < count; ++i) interval(i, bounds + 2 * i, bounds + 2 * i + 1);
            };
          }};
}

}  // namespace

std::vector<Call> distributionCalls() {
  constexpr int kCases = 500;
  const auto share = [](int i) { return i / static_cast<double>(kCases - 1); };
  return {
      ofOne("CDFNormalStd", CDFNormalStd, points()),
      ofOne("PDFNormalStd", PDFNormalStd, points()),
      ofOne("InvCDFNormalStd", InvCDFNormalStd, probabilities()),
      ofOne("CDFKolmogorov", CDFKolmogorov, points()),
      ofOne("sqr", sqr, points()),
      ofTwo("CDFStudent", CDFStudent, points()),
      ofTwo("InvCDFStudent", InvCDFStudent, probabilities()),
      ofTwo("pValChiSq", pValChiSq, points()),
      ofTwo("InvCDFChiSq", InvCDFChiSq, probabilities()),
      ofInterval("GetInfSupWald", kCases,
                 [=](int i, double* lower, double* upper) {
                   GetInfSupWald(1.9599639845400545, share(i), 3 + i, lower, upper);
                 }),
      ofInterval("GetInfSupWilson", kCases,
                 [=](int i, double* lower, double* upper) {
                   GetInfSupWilson(1.9599639845400545, share(i), 3 + i, i % 2 * 0.5, lower, upper);
                 }),
      ofInterval("GetInfSupClopper", kCases,
                 [=](int i, double* lower, double* upper) {
                   GetInfSupClopper(share(i) * (3 + i), 3 + i, 0.05, lower, upper);
                 }),
      ofInterval("GetInfSupLog", kCases,
                 [=](int i, double* lower, double* upper) {
                   GetInfSupLog(1.9599639845400545, 0.1 + share(i), 3 * share(i), lower, upper);
                 }),
      {"V_PearsonRho", false,
       [=](Arrays& a, unsigned) {
         std::vector<double> x(kCases), y(kCases);
         for (int i = 0; i < kCases; ++i) {
           x[i] = share(i) + 100;
           y[i] = share(i * 7 % kCases) - 3 * share(i);
         }
         double *first = a.reals(x), *second = a.reals(y), *out = a.blank(kCases);
         return [=] {
           for (int n = 1; n <= kCases; ++n) out[n - 1] = V_PearsonRho(first, second, n);
         };
       }},
  };
}

}  // namespace survmeth::test
