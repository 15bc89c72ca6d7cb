// What every fuzz target checks with.
#ifndef TESTS_FUZZ_REQUIRE_H_
#define TESTS_FUZZ_REQUIRE_H_

#include <cstdio>
#include <cstdlib>

namespace survmeth::fuzz {

// Stops the program where a promise is broken.
inline void require(bool kept, const char* promise) {
  if (kept) return;
  std::fprintf(stderr, "promise not kept: %s\n", promise);
  std::abort();
}

}  // namespace survmeth::fuzz

#endif  // TESTS_FUZZ_REQUIRE_H_
