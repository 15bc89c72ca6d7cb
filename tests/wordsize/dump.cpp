// Writes every array of every call, bit for bit, for comparison with another build's: a line for
// each array, the call's name first, then the elements in hexadecimal.
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "tests/wordsize/calls.h"

namespace {

using survmeth::test::Arrays;
using survmeth::test::Call;

constexpr unsigned kSeeds = 12;

void write(const Call& call, unsigned seed) {
  Arrays arrays;
  call.prepare(arrays, seed)();
  int place = 0;
  const auto head = [&](char kind) {
    std::printf("%s|%u|%c%d|", call.name.c_str(), seed, kind, place++);
  };
  arrays.visit(
      [&](const std::vector<double>& array) {
        head('d');
        for (const double& value : array) {
          std::uint64_t bits = 0;
          std::memcpy(&bits, &value, sizeof bits);
          std::printf(" %" PRIx64, bits);
        }
        std::printf("\n");
      },
      [&](const std::vector<int>& array) {
        head('i');
        for (const int value : array) std::printf(" %d", value);
        std::printf("\n");
      });
}

}  // namespace

int main() {
  for (const Call& call : survmeth::test::calls()) {
    for (unsigned seed = 1; seed <= kSeeds; ++seed) write(call, seed);
  }
  for (const Call& call : survmeth::test::publicDataCalls()) write(call, 0);
  for (const Call& call : survmeth::test::distributionCalls()) write(call, 0);
  // A comparison of half a table must not pass.
  std::printf("end\n");
  return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : 1;
}
