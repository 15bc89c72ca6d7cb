// Errors of the library against the reference tables, in units of the last place of the result.
#ifndef TESTS_DIST_ACCURACY_H_
#define TESTS_DIST_ACCURACY_H_

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "Dist/Dist"
#include "tests/support/csv.h"

namespace dist_tests {

// One line of a table: the value is `value` + `rest`, k the condition number.
struct Reference {
  std::vector<double> arguments;
  double value = 0.0;
  double rest = 0.0;
  double k = 0.0;
};

inline std::string referencePath(const std::string& file) {
  return std::string(SURVMETH_REFERENCE) + "/dist/" + file;
}

inline std::vector<Reference> readTable(const std::string& name) {
  const survmeth::test::Csv csv(referencePath(name + ".csv"));
  std::vector<std::vector<double>> columns;
  for (const std::string& column : csv.names()) columns.push_back(csv.numbers(column));
  const std::size_t n = columns.size() - 3;
  std::vector<Reference> table(csv.rows());
  for (std::size_t i = 0; i < table.size(); ++i) {
    for (std::size_t j = 0; j < n; ++j) table[i].arguments.push_back(columns[j][i]);
    table[i].value = columns[n][i];
    table[i].rest = columns[n + 1][i];
    table[i].k = columns[n + 2][i];
  }
  return table;
}

// The distance of two neighbouring doubles at x.
inline double unitInLastPlace(double x) {
  int power = 0;
  std::frexp(x, &power);
  return std::ldexp(1.0, std::max(x == 0.0 ? -1074 : power - 53, -1074));
}

inline double errorInUlp(double computed, const Reference& row) {
  if (!std::isfinite(computed)) return std::numeric_limits<double>::infinity();
  return std::fabs((computed - row.value) - row.rest) / unitInLastPlace(row.value);
}

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

struct Function {
  const char* name;
  const char* range;  // of the table's arguments
  double (*compute)(const std::vector<double>& arguments);
};

inline const std::vector<Function>& functions() {
  using Arguments = std::vector<double>;
  static const std::vector<Function> kFunctions = {
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
  return kFunctions;
}

struct Worst {
  std::size_t rows = 0;
  double ulp = 0.0;     // largest error
  double scaled = 0.0;  // largest error / (1 + k)
  std::vector<double> where;
};

inline Worst worstOf(const Function& function) {
  Worst worst;
  for (const Reference& row : readTable(function.name)) {
    const double error = errorInUlp(function.compute(row.arguments), row);
    ++worst.rows;
    worst.ulp = std::fmax(worst.ulp, error);
    if (error / (1.0 + row.k) >= worst.scaled) {
      worst.scaled = error / (1.0 + row.k);
      worst.where = row.arguments;
    }
  }
  return worst;
}

}  // namespace dist_tests

#endif  // TESTS_DIST_ACCURACY_H_
