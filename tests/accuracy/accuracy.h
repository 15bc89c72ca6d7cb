// Errors of functions against their reference tables, in units of the last place of the result.
#ifndef TESTS_ACCURACY_ACCURACY_H_
#define TESTS_ACCURACY_ACCURACY_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/csv.h"

namespace accuracy_tests {

// One line of a table: the exact value is so many units in the last place above `value`; k is the
// condition number.
struct Reference {
  std::vector<double> arguments;
  double value = 0.0;
  double above = 0.0;
  double k = 0.0;
};

struct Function {
  const char* name;
  const char* range;  // of the table's arguments
  double (*compute)(const std::vector<double>& arguments);
  double (*dense)() = nullptr;  // largest error in ulp over many more arguments, see dense.h
};

// Functions whose tables stand in one folder of tests/reference.
struct Library {
  const char* folder;
  // The tables of the one kind end with value, rest and k: the exact value is the sum of the first
  // two, and errors are divided by 1 + k. The others end with value and above, and k is 0.
  bool conditioned;
  std::vector<Function> functions;
  double (*allowed)(const std::string& function);  // largest error / (1 + k) that is promised
};

inline std::string referencePath(const Library& library, const std::string& file) {
  return std::string(SURVMETH_REFERENCE) + "/" + library.folder + "/" + file;
}

// The distance of two neighbouring doubles at x.
inline double unitInLastPlace(double x) {
  int power = 0;
  std::frexp(x, &power);
  return std::ldexp(1.0, std::max(x == 0.0 ? -1074 : power - 53, -1074));
}

inline std::vector<Reference> readTable(const Library& library, const std::string& name) {
  const survmeth::test::Csv csv(referencePath(library, name + ".csv"));
  std::vector<std::vector<double>> columns;
  for (const std::string& column : csv.names()) columns.push_back(csv.numbers(column));
  const std::size_t n = columns.size() - (library.conditioned ? 3 : 2);
  std::vector<Reference> table(csv.rows());
  for (std::size_t i = 0; i < table.size(); ++i) {
    Reference& row = table[i];
    for (std::size_t j = 0; j < n; ++j) row.arguments.push_back(columns[j][i]);
    row.value = columns[n][i];
    row.above = columns[n + 1][i];
    if (library.conditioned) {
      row.above /= unitInLastPlace(row.value);
      row.k = columns[n + 2][i];
    }
  }
  return table;
}

inline double errorInUlp(double computed, const Reference& row) {
  if (!std::isfinite(computed)) return std::numeric_limits<double>::infinity();
  return std::fabs((computed - row.value) / unitInLastPlace(row.value) - row.above);
}

struct Worst {
  std::size_t rows = 0;
  double ulp = 0.0;     // largest error
  double scaled = 0.0;  // largest error / (1 + k)
  std::vector<double> where;
};

inline Worst worstOf(const Library& library, const Function& function) {
  Worst worst;
  for (const Reference& row : readTable(library, function.name)) {
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

}  // namespace accuracy_tests

#endif  // TESTS_ACCURACY_ACCURACY_H_
