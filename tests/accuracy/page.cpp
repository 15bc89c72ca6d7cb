#include "page.h"

#include <sstream>

namespace accuracy_tests {
namespace {

// A row for each function: name, arguments, what the record says, and what is promised.
std::string rows(const Library& library, bool promise) {
  const auto record = readRecord(library);
  std::ostringstream out;
  for (const Function& function : library.functions) {
    const auto line = record.find(function.name);
    if (line == record.end()) continue;
    out << "| `" << function.name << "` | " << function.range << " |";
    for (const std::string& cell : line->second) out << ' ' << cell << " |";
    if (promise) out << ' ' << library.allowed(function.name) << " |";
    out << '\n';
  }
  return out.str();
}

}  // namespace

std::string page(const Library& dist, const Library& elementary) {
  std::ostringstream out;
  out << "# Accuracy\n\n"
         "Written by the accuracy test from `tests/reference/dist/recorded.csv` and\n"
         "`tests/reference/elementary/recorded.csv`; do not edit.\n\n"
         "Errors are in units of the last place (ulp) of the exact value, against tables of 60\n"
         "digits (the `README.md` beside each record). All functions use +, -, *, / and square\n"
         "root only, so these figures are the same on every machine, 32 bit and 64 bit. The test\n"
         "refuses anything above them.\n\n"
         "## Distribution functions\n\n"
         "A function multiplies a relative error of its arguments by its condition number k, so\n"
         "the last column divides by 1 + k; the test refuses more than 4 there.\n\n"
         "| Function | Arguments tried | Rows | Largest error, ulp | Largest error / (1 + k) |\n"
         "|---|---|---:|---:|---:|\n"
      << rows(dist, false)
      << "\nk is the condition number with respect to the first argument; of a quantile the\n"
         "smallest of those with respect to p, 1 - p and, for the symmetric laws, p - 1/2; of the\n"
         "Wald, Wilson and log intervals and the correlation the sum over all arguments.\n\n"
         "## Elementary functions\n\n"
         "Of `numerics/elementary.h`. The tables hold the arguments hardest to round of 100,000,\n"
         "published worst cases for correct rounding and the ends of the ranges; the dense\n"
         "arguments, 100,000 in each of several regions, are held against the same functions in\n"
         "double-double arithmetic, which are other methods. A correctly rounded function shows\n"
         "0.5.\n\n"
         "| Function | Arguments tried | Rows | Largest error, ulp | The same, dense | Promised |\n"
         "|---|---|---:|---:|---:|---:|\n"
      << rows(elementary, true)
      << "\nBetween negative whole numbers `lgamma` has zeros; next to them 2^-96 is promised.\n";
  return out.str();
}

}  // namespace accuracy_tests
