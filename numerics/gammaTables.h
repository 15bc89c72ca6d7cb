// Coefficients of lgamma. Written by make_tables.py; do not edit.
// clang-format off
#ifndef NUMERICS_GAMMA_TABLES_H_
#define NUMERICS_GAMMA_TABLES_H_

#include "numerics/doubleDouble.h"

namespace survmeth::numerics {

// 1 - Euler's constant
inline constexpr DoubleDouble kOneMinusEuler = {0x1.b0ee6072093cep-2, 0x1.6cb90701fbfabp-58};

// log(2 pi) / 2
inline constexpr DoubleDouble kHalfLog2Pi = {0x1.d67f1c864beb5p-1, -0x1.65b5a1b7ff5dfp-55};

// pi
inline constexpr DoubleDouble kPi = {0x1.921fb54442d18p+1, 0x1.1a62633145c07p-53};

// (-1)^k (zeta(k) - 1) / k, k = 2..21: log(Gamma(2 + e)) = (1 - Euler) e + these e^k
inline constexpr DoubleDouble kLogGamma[20] = {
    {0x1.4a34cc4a60fa6p-2, 0x1.1873d8912200cp-56},
    {-0x1.13e001a557607p-4, 0x1.fb68be2f8821fp-58},
    {0x1.51322ac7d8483p-6, 0x1.afc89088cb729p-60},
    {-0x1.e404fc218f5f2p-8, 0x1.e4a627cf1eb34p-62},
    {0x1.7add6eadb6c30p-9, -0x1.5b7828c7fd7f4p-64},
    {-0x1.38ac5c2bf8e08p-10, 0x1.8a4c1cfd9cec8p-65},
    {0x1.0b36af86396e9p-11, -0x1.0698d6c892967p-65},
    {-0x1.d3fd4c76d2fc8p-13, 0x1.c7c55cfccbb83p-68},
    {0x1.a127b0f17d65ap-14, 0x1.9d309aa700268p-69},
    {-0x1.78de5bd7c81efp-15, 0x1.a20541cde47a6p-72},
    {0x1.580dcee66eb02p-16, 0x1.260574b258f72p-71},
    {-0x1.3cbc963ce2243p-17, 0x1.ea56e6c7d5329p-71},
    {0x1.2597a39f34aacp-18, -0x1.bf911462a7d81p-72},
    {-0x1.11b2eb7679541p-19, -0x1.c76b0e65ac63ap-75},
    {0x1.0064cdeb22f0fp-20, 0x1.d0156affdbc11p-75},
    {-0x1.e2600d93cfd2fp-22, 0x1.130ac39e5c106p-76},
    {0x1.c76bbb3f07a4dp-23, 0x1.d9a2b77769b52p-77},
    {-0x1.af5a6cbbf8a97p-24, -0x1.95f227e96d83ep-78},
    {0x1.99b93c2070b0fp-25, 0x1.0327164736428p-79},
    {-0x1.862c734df3eacp-26, -0x1.b32802bec0da0p-80},
};

// the same for k = 22..47
inline constexpr double kLogGammaRest[26] = {
    0x1.7469daccfadcdp-27,
    -0x1.6434a8447aeadp-28,
    0x1.555a877ffd2c3p-29,
    -0x1.47b1679258d0ep-30,
    0x1.3b15d2b2fc10cp-31,
    -0x1.2f69a9fabe3e0p-32,
    0x1.24932a337434cp-33,
    -0x1.1a7c26ec2523cp-34,
    0x1.11116e693ed98p-35,
    -0x1.08424cbc543d8p-36,
    0x1.000026e3f644fp-37,
    -0x1.f07c514fc9f0ap-39,
    0x1.e1e2026aafcd8p-40,
    -0x1.d41d56e5ee2e2p-41,
    0x1.c71c7f6f10e37p-42,
    -0x1.bacf9a27bc89bp-43,
    0x1.af28718a10d6ep-44,
    -0x1.a41a45603e5b6p-45,
    0x1.99999c0716ee9p-46,
    -0x1.8f9c1a8df9d78p-47,
    0x1.8618628d28905p-48,
    -0x1.7d05f4c31c560p-49,
    0x1.745d17b56ba4ap-50,
    -0x1.6c16c1b4d6456p-51,
    0x1.642c85c023d9dp-52,
    -0x1.5c9882d825e9dp-53,
};

// B(2 k) / (2 k (2 k - 1)), k = 1..9: Stirling's series
inline constexpr double kStirlingSeries[9] = {
    0x1.5555555555555p-4,
    -0x1.6c16c16c16c17p-9,
    0x1.a01a01a01a01ap-11,
    -0x1.3813813813814p-11,
    0x1.b951e2b18ff23p-11,
    -0x1.f6ab0d9993c7dp-10,
    0x1.a41a41a41a41ap-8,
    -0x1.e4286cb0f5398p-6,
    0x1.6fe96381e0680p-3,
};

// (-1)^k / (2 k + 1)!, k = 0..14: the sine
inline constexpr DoubleDouble kSine[15] = {
    {0x1.0000000000000p+0, 0x0.0p+0},
    {-0x1.5555555555555p-3, -0x1.5555555555555p-57},
    {0x1.1111111111111p-7, 0x1.1111111111111p-63},
    {-0x1.a01a01a01a01ap-13, -0x1.a01a01a01a01ap-73},
    {0x1.71de3a556c734p-19, -0x1.c154f8ddc6c00p-73},
    {-0x1.ae64567f544e4p-26, 0x1.c062e06d1f209p-80},
    {0x1.6124613a86d09p-33, 0x1.f28e0cc748ebep-87},
    {-0x1.ae7f3e733b81fp-41, -0x1.1d8656b0ee8cbp-97},
    {0x1.952c77030ad4ap-49, 0x1.ac981465ddc6cp-103},
    {-0x1.2f49b46814157p-57, -0x1.2650f61dbdcb4p-112},
    {0x1.71b8ef6dcf572p-66, -0x1.d043ae40c4647p-120},
    {-0x1.761b41316381ap-75, 0x1.3423c7d91404fp-130},
    {0x1.3f3ccdd165fa9p-84, -0x1.58ddadf344487p-139},
    {-0x1.d1ab1c2dccea3p-94, -0x1.054d0c78aea14p-149},
    {0x1.259f98b4358adp-103, 0x1.eaf8c39dd9bc5p-157},
};

}  // namespace survmeth::numerics

#endif  // NUMERICS_GAMMA_TABLES_H_
