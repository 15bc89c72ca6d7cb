// Writes every array of every call, bit for bit, for comparison with another build's: a line for
// each array, its family and the call's name first, then the elements in hexadecimal.
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>
#include <string>

#include "tests/bits/results.h"
#include "tests/wordsize/calls.h"

namespace {

using survmeth::test::Arrays;
using survmeth::test::Call;

constexpr unsigned kSeeds = 12;

void writeNumbers(std::span<const double> numbers) {
  for (const double& value : numbers) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    std::printf(" %" PRIx64, bits);
  }
  std::printf("\n");
}

void write(const char* family, const Call& call, unsigned seed) {
  Arrays arrays;
  call.prepare(arrays, seed)();
  int place = 0;
  const auto head = [&](char kind) {
    std::printf("%s|%s|%u|%c%d|", family, call.name.c_str(), seed, kind, place++);
  };
  arrays.visit(
      [&](const std::vector<double>& array) {
        head('d');
        writeNumbers(array);
      },
      [&](const std::vector<int>& array) {
        head('i');
        for (const int value : array) std::printf(" %d", value);
        std::printf("\n");
      });
}

// Takes the results of a family.
survmeth::test::TakeNumbers writing(const char* family) {
  return [family](const std::string& name, std::span<const double> numbers) {
    std::printf("%s|%s|0|d0|", family, name.c_str());
    writeNumbers(numbers);
  };
}

}  // namespace

int main() {
  for (const Call& call : survmeth::test::calls()) {
    for (unsigned seed = 1; seed <= kSeeds; ++seed) write("entry points", call, seed);
  }
  for (const Call& call : survmeth::test::publicDataCalls()) write("public data", call, 0);
  for (const Call& call : survmeth::test::distributionCalls()) write("libDist", call, 0);
  survmeth::test::elementaryResults(writing("elementary"));
  survmeth::test::coxResults(writing("cox"));
  survmeth::test::curveResults(writing("curves"));
  survmeth::test::competingResults(writing("competing"));
  survmeth::test::procedureResults(writing("procedures"));
  survmeth::test::facadeResults(writing("facade"));
  // A comparison of half a table must not pass.
  std::printf("end\n");
  return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : 1;
}
