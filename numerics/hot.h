// SURVMETH_HOT marks a loop that is compiled once for each instruction set; the loader picks the
// widest that the machine has. Contraction is off and sums keep their order, so every version
// gives the same bits. Whether compiler and loader can do that, cmake/Multiversion.cmake finds out.
#ifndef NUMERICS_HOT_H_
#define NUMERICS_HOT_H_

#if defined(SURVMETH_MULTIVERSION)
#define SURVMETH_HOT __attribute__((target_clones("default", "avx2", "avx512f")))
#else
#define SURVMETH_HOT
#endif

#endif  // NUMERICS_HOT_H_
