// The elementary functions over fixed arguments.
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "numerics/elementary.h"
#include "tests/bits/results.h"
#include "tests/bits/sequence.h"

namespace survmeth::test {
namespace {

using Function = double (*)(double);
using ArrayFunction = void (*)(std::span<const double>, std::span<double>);

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::size_t kArguments = 8000;

// Where the functions are special, then numbers of every exponent, then of [-1, 1] and [-800, 800].
std::vector<double> arguments() {
  std::vector<double> values = {0.0,  -0.0,    1.0,    -1.0,  0.5,    2.0,       709.78,    -745.13,
                                1e-5, -1e-300, 5e-324, 1e308, -1e308, kInfinity, -kInfinity};
  Sequence sequence(7);
  while (values.size() < kArguments / 2) values.push_back(sequence.ofAnyExponent());
  while (values.size() < kArguments * 3 / 4) values.push_back(2.0 * sequence.share() - 1.0);
  while (values.size() < kArguments) values.push_back(1600.0 * sequence.share() - 800.0);
  return values;
}

}  // namespace

void elementaryResults(const TakeNumbers& take) {
  const std::vector<double> x = arguments();
  std::vector<double> value(x.size());
  const auto each = [&](const char* name, Function function) {
    for (std::size_t i = 0; i < x.size(); ++i) value[i] = function(x[i]);
    take(name, value);
  };
  const auto array = [&](const char* name, ArrayFunction function) {
    function(x, value);
    take(std::string(name) + " of arrays", value);
  };
  each("exp", numerics::exp);
  each("log", numerics::log);
  each("expm1", numerics::expm1);
  each("log1p", numerics::log1p);
  each("lgamma", numerics::lgamma);
  array("exp", numerics::expArray);
  array("log", numerics::logArray);
  array("expm1", numerics::expm1Array);
  array("log1p", numerics::log1pArray);

  Sequence sequence(8);
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double exponent = 64.0 * sequence.share() - 32.0;
    value[i] = numerics::pow(i % 2 == 0 ? x[i] : 1.0 + x[i] / 1e4, exponent);
  }
  take("pow", value);
}

}  // namespace survmeth::test
