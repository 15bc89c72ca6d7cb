#include "frame/operators.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "numerics/elementary.h"

namespace survmeth::frame {
namespace {

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

double squareRoot(double x) { return std::sqrt(x); }
double absolute(double x) { return std::fabs(x); }
// Powers of the base are exact, as people expect of log10(1000).
double logTen(double x) {
  constexpr double kLogOfTen = 0x1.26bb1bbb55516p+1;
  const double value = numerics::log(x) / kLogOfTen, whole = std::nearbyint(value);
  return numerics::pow(10, whole) == x ? whole : value;
}
double logTwo(double x) {
  constexpr double kLogOfTwo = 0x1.62e42fefa39efp-1;
  const double value = numerics::log(x) / kLogOfTwo, whole = std::nearbyint(value);
  return numerics::pow(2, whole) == x ? whole : value;
}
constexpr Function kFunctions[] = {
    {"I", nullptr},         {"(", nullptr},
    {"log", numerics::log}, {"log2", logTwo},
    {"log10", logTen},      {"log1p", numerics::log1p},
    {"exp", numerics::exp}, {"expm1", numerics::expm1},
    {"sqrt", squareRoot},   {"abs", absolute},
};

double logicalAnd(double a, double b) {
  if (a == 0 || b == 0) return 0;
  return std::isnan(a) || std::isnan(b) ? kMissing : 1;
}
double logicalOr(double a, double b) {
  if ((a != 0 && !std::isnan(a)) || (b != 0 && !std::isnan(b))) return 1;
  return std::isnan(a) || std::isnan(b) ? kMissing : 0;
}

constexpr Binary kBinaries[] = {
    {"+", [](double a, double b) { return a + b; }, false},
    {"-", [](double a, double b) { return a - b; }, false},
    {"*", [](double a, double b) { return a * b; }, false},
    {"/", [](double a, double b) { return a / b; }, false},
    {"^", numerics::pow, false},
    {"==", [](double a, double b) { return a == b ? 1.0 : 0.0; }, true},
    {"!=", [](double a, double b) { return a != b ? 1.0 : 0.0; }, true},
    {"<", [](double a, double b) { return a < b ? 1.0 : 0.0; }, true},
    {">", [](double a, double b) { return a > b ? 1.0 : 0.0; }, true},
    {"<=", [](double a, double b) { return a <= b ? 1.0 : 0.0; }, true},
    {">=", [](double a, double b) { return a >= b ? 1.0 : 0.0; }, true},
    {"&", logicalAnd, true},
    {"|", logicalOr, true},
};

template <class Named, std::size_t n>
const Named* find(const Named (&all)[n], std::string_view name) {
  const Named* found = std::find_if(std::begin(all), std::end(all),
                                    [&](const Named& each) { return each.name == name; });
  return found == std::end(all) ? nullptr : found;
}

}  // namespace

const Function* findFunction(std::string_view name) { return find(kFunctions, name); }
const Binary* findBinary(std::string_view name) { return find(kBinaries, name); }

std::vector<std::string> functionNames() {
  std::vector<std::string> names;
  for (const Function& each : kFunctions) {
    if (each.name != "(") names.emplace_back(each.name);
  }
  return names;
}

}  // namespace survmeth::frame
