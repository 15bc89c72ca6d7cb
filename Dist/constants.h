// Numerical constants. Written by make_constants.py; do not edit.
// clang-format off
#ifndef DIST_CONSTANTS_H_
#define DIST_CONSTANTS_H_

#include "Dist/doubleDouble.h"

namespace dist {

// clang-format off

// 1 / sqrt(2 pi)
inline constexpr DoubleDouble kInvSqrt2Pi = {0x1.9884533d43651p-2, -0x1.cbc0d30ebfd15p-56};

// sqrt(2 pi)
inline constexpr DoubleDouble kSqrt2Pi = {0x1.40d931ff62706p+1, -0x1.a6a0d6f814637p-53};

// pi^2 / 8
inline constexpr DoubleDouble kPiSquaredOver8 = {0x1.3bd3cc9be45dep+0, 0x1.692b71366cc04p-54};

// Euler's constant
inline constexpr DoubleDouble kEuler = {0x1.2788cfc6fb619p-1, -0x1.6cb90701fbfabp-58};

// zeta(2) / 2
inline constexpr DoubleDouble kHalfZeta2 = {0x1.a51a6625307d3p-1, 0x1.1873d8912200cp-56};

// B(2 k) / (2 k (2 k - 1)), k = 1, 2: Stirling's series
inline constexpr DoubleDouble kStirling[2] = {
    {0x1.5555555555555p-4, 0x1.5555555555555p-58},
    {-0x1.6c16c16c16c17p-9, 0x1.f49f49f49f49fp-64},
};

// the same for k = 3..11
inline constexpr double kStirlingRest[9] = {
    0x1.a01a01a01a01ap-11,
    -0x1.3813813813814p-11,
    0x1.b951e2b18ff23p-11,
    -0x1.f6ab0d9993c7dp-10,
    0x1.a41a41a41a41ap-8,
    -0x1.e4286cb0f5398p-6,
    0x1.6fe96381e0680p-3,
    -0x1.6476701181f3ap+0,
    0x1.ace44322ce006p+3,
};

// (-1)^k / (2^k k! (2 k + 1) sqrt(2 pi)), k = 1..16: central normal law
inline constexpr double kNormalCentre[16] = {
    -0x1.1058377e2cee0p-4,
    0x1.46d04297691dap-7,
    -0x1.37403f6ba1100p-10,
    0x1.e42b0d5216fc8p-14,
    -0x1.3ce8fac15e2c4p-17,
    0x1.658a2177b2739p-21,
    -0x1.62226a4aabe03p-25,
    0x1.3878b823c4d4ep-29,
    -0x1.f107e1883d947p-34,
    0x1.67c1700ad73d2p-38,
    -0x1.ddc738b863ab4p-43,
    0x1.25098c9a0d57fp-47,
    -0x1.4df215a78901cp-52,
    0x1.6354d1ae7b14dp-57,
    -0x1.62913220111d0p-62,
    0x1.4d14084cab3a5p-67,
};

// Mills' ratio on [0.6, 5] to three digits, numerator
inline constexpr double kMillsBaseTop[2] = {
    0x1.3980000000000p+0,
    0x1.1040000000000p-1,
};

// the same, denominator
inline constexpr double kMillsBaseBottom[3] = {
    0x1.0000000000000p+0,
    0x1.23c0000000000p+0,
    0x1.1360000000000p-1,
};

// what Mills' ratio has beyond that, numerator
inline constexpr double kMillsTop[10] = {
    0x1.d64c7fb5ae81ep-6,
    -0x1.5ca17b55db998p-5,
    0x1.be3f0699ec609p-11,
    0x1.a4913bde1281ep-8,
    0x1.94551c08947f2p-10,
    -0x1.a43a0b4569de6p-13,
    -0x1.13839779315b2p-13,
    -0x1.3552137cb7b56p-17,
    0x1.94286a2c3b956p-19,
    0x1.b81c082923a06p-21,
};

// the same, denominator
inline constexpr double kMillsBottom[11] = {
    0x1.0000000000000p+0,
    0x1.a12fd9621e5f1p+1,
    0x1.4068af74fb1d2p+2,
    0x1.2b099d34f257dp+2,
    0x1.75eee7f326ac3p+1,
    0x1.487f006173bc8p+0,
    0x1.9dc7f83fcc9c2p-2,
    0x1.74d5251f9727bp-4,
    0x1.d27d3a7d65a83p-7,
    0x1.75488831253b4p-10,
    0x1.2efcf892b90e9p-14,
};

// (x times Mills' ratio - 1) x^2 as a function of 1 / x^2, x >= 5, numerator
inline constexpr double kMillsFarTop[7] = {
    -0x1.0000000000000p+0,
    -0x1.00a47d7a66633p+6,
    -0x1.656ddd2859a4cp+10,
    -0x1.a4b8a02676065p+13,
    -0x1.922bd113c6e07p+15,
    -0x1.da4340509499cp+15,
    -0x1.046c0ab6be89ap+12,
};

// the same, denominator
inline constexpr double kMillsFarBottom[7] = {
    0x1.0000000000000p+0,
    0x1.0ca47d7a66628p+6,
    0x1.940cb4af4d199p+10,
    0x1.10050e99e3adfp+14,
    0x1.4e4197052b23ap+16,
    0x1.51b43bc697101p+17,
    0x1.925aaa9c16702p+16,
};

// Gauss-Legendre nodes, 28 points, the positive ones
inline constexpr double kLegendreNode[14] = {
    0x1.c335a497a4809p-5,
    0x1.5109b3258335dp-3,
    0x1.169752c4c22bbp-2,
    0x1.814813d2b129cp-2,
    0x1.e74b92a4c42d9p-2,
    0x1.23b266d495548p-1,
    0x1.5034927b8f20ap-1,
    0x1.78a1fd2f4d007p-1,
    0x1.9c7d0698c9abfp-1,
    0x1.bb5643c49dae1p-1,
    0x1.d4cdda1efbc1bp-1,
    0x1.e894ac24695b7p-1,
    0x1.f66d5e557556dp-1,
    0x1.fe2db606d9717p-1,
};

// their weights
inline constexpr double kLegendreWeight[14] = {
    0x1.c2c0a81eda19dp-4,
    0x1.bd47f277562fdp-4,
    0x1.b26787e30dbfbp-4,
    0x1.a2413503ecaa0p-4,
    0x1.8d0729614b3e3p-4,
    0x1.72fb5b81c1868p-4,
    0x1.546ebc0db6001p-4,
    0x1.31c03a8e85de3p-4,
    0x1.0b5b9f1c0a7a2p-4,
    0x1.c3707aee4a4e2p-5,
    0x1.6aaf12dc69637p-5,
    0x1.0d874b8a226e9p-5,
    0x1.5a3a811ece501p-6,
    0x1.2afc07ab1c5c9p-7,
};

// clang-format on

}  // namespace dist

#endif  // DIST_CONSTANTS_H_
