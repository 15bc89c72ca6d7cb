// The elementary functions over their reference tables.
#ifndef TESTS_ACCURACY_ELEMENTARY_FUNCTIONS_H_
#define TESTS_ACCURACY_ELEMENTARY_FUNCTIONS_H_

#include <string>
#include <vector>

#include "accuracy.h"
#include "dense.h"
#include "numerics/elementary.h"

namespace accuracy_tests {

inline Library elementary() {
  namespace numerics = survmeth::numerics;
  using Arguments = std::vector<double>;
  return {"elementary",
          false,
          {
              {"exp", "x from -745.2 to 709.8",
               [](const Arguments& a) { return numerics::exp(a[0]); }, denseExp},
              {"expm1", "x from -709 to 709.8",
               [](const Arguments& a) { return numerics::expm1(a[0]); }, denseExpm1},
              {"log", "x from 2^-1074 to 2^1024",
               [](const Arguments& a) { return numerics::log(a[0]); }, denseLog},
              {"log1p", "x from -1 + 2^-53 to 2^1024",
               [](const Arguments& a) { return numerics::log1p(a[0]); }, denseLog1p},
              {"pow", "x from 2^-1074 to 2^1024, results in the same range",
               [](const Arguments& a) { return numerics::pow(a[0], a[1]); }, densePow},
              {"lgamma", "x from -1e5 to 2.5e305, without (-2.4, -10)",
               [](const Arguments& a) { return numerics::lgamma(a[0]); }, nullptr},
          },
          [](const std::string& function) {
            return function == "exp" || function == "log" ? 0.52 : 1.0;
          }};
}

}  // namespace accuracy_tests

#endif  // TESTS_ACCURACY_ELEMENTARY_FUNCTIONS_H_
