# Whether a loop can be compiled for several instruction sets and picked when the program is loaded:
# SURVMETH_CLONES_WORK. A compiler may know the attribute and the loader not what it makes of it
# (musl), so a program is run; where programs of the target do not run here, the C library has to be
# one whose loader does. Clang is left out: its clones cannot be templates' and are not measured.
set(probe [[
#if defined(__clang__) || !defined(__x86_64__) || !defined(__linux__)
#error another compiler or machine
#endif
#if defined(SURVMETH_CANNOT_RUN)
#include <features.h>
#ifndef __GLIBC__
#error another C library
#endif
#endif
static __attribute__((target_clones("default", "avx2", "avx512f"), noinline))
double sum(const double* x, int n) {
  double total = 0.0;
  for (int i = 0; i < n; ++i) total += x[i];
  return total;
}
int main(int count, char**) {
  const double x[] = {1.0, 2.0, 4.0, static_cast<double>(count)};
  return sum(x, 3) == 7.0 ? 0 : 1;
}
]])
if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
  set(CMAKE_REQUIRED_DEFINITIONS -DSURVMETH_CANNOT_RUN)
  check_cxx_source_compiles("${probe}" SURVMETH_CLONES_WORK)
  unset(CMAKE_REQUIRED_DEFINITIONS)
else()
  include(CheckCXXSourceRuns)
  check_cxx_source_runs("${probe}" SURVMETH_CLONES_WORK)
endif()
