// Coefficients of exp and log in double-double. Written by make_tables.py; do not edit.
// clang-format off
#ifndef NUMERICS_DOUBLE_DOUBLE_TABLES_H_
#define NUMERICS_DOUBLE_DOUBLE_TABLES_H_

#include "numerics/doubleDouble.h"

namespace survmeth::numerics {

// ln 2
inline constexpr DoubleDouble kLn2 = {0x1.62e42fefa39efp-1, 0x1.abc9e3b39803fp-56};

// 1 / k!, k = 0..9
inline constexpr DoubleDouble kInverseFactorial[10] = {
    {0x1.0000000000000p+0, 0x0.0p+0},
    {0x1.0000000000000p+0, 0x0.0p+0},
    {0x1.0000000000000p-1, 0x0.0p+0},
    {0x1.5555555555555p-3, 0x1.5555555555555p-57},
    {0x1.5555555555555p-5, 0x1.5555555555555p-59},
    {0x1.1111111111111p-7, 0x1.1111111111111p-63},
    {0x1.6c16c16c16c17p-10, -0x1.f49f49f49f49fp-65},
    {0x1.a01a01a01a01ap-13, 0x1.a01a01a01a01ap-73},
    {0x1.a01a01a01a01ap-16, 0x1.a01a01a01a01ap-76},
    {0x1.71de3a556c734p-19, -0x1.c154f8ddc6c00p-73},
};

// 1 / (k + 10)!, k = 0..5
inline constexpr double kInverseFactorialRest[6] = {
    0x1.27e4fb7789f5cp-22,
    0x1.ae64567f544e4p-26,
    0x1.1eed8eff8d898p-29,
    0x1.6124613a86d09p-33,
    0x1.93974a8c07c9dp-37,
    0x1.ae7f3e733b81fp-41,
};

// 1 / (k + 3)!, k = 0..12
inline constexpr double kExpTail[13] = {
    0x1.5555555555555p-3,
    0x1.5555555555555p-5,
    0x1.1111111111111p-7,
    0x1.6c16c16c16c17p-10,
    0x1.a01a01a01a01ap-13,
    0x1.a01a01a01a01ap-16,
    0x1.71de3a556c734p-19,
    0x1.27e4fb7789f5cp-22,
    0x1.ae64567f544e4p-26,
    0x1.1eed8eff8d898p-29,
    0x1.6124613a86d09p-33,
    0x1.93974a8c07c9dp-37,
    0x1.ae7f3e733b81fp-41,
};

// 1 / (2 k + 3), k = 0..9: atanh(s) = s + s^3 (1/3 + s^2/5 + ...)
inline constexpr DoubleDouble kAtanh[10] = {
    {0x1.5555555555555p-2, 0x1.5555555555555p-56},
    {0x1.999999999999ap-3, -0x1.999999999999ap-57},
    {0x1.2492492492492p-3, 0x1.2492492492492p-57},
    {0x1.c71c71c71c71cp-4, 0x1.c71c71c71c71cp-58},
    {0x1.745d1745d1746p-4, -0x1.745d1745d1746p-59},
    {0x1.3b13b13b13b14p-4, -0x1.3b13b13b13b14p-58},
    {0x1.1111111111111p-4, 0x1.1111111111111p-60},
    {0x1.e1e1e1e1e1e1ep-5, 0x1.e1e1e1e1e1e1ep-61},
    {0x1.af286bca1af28p-5, 0x1.af286bca1af28p-59},
    {0x1.8618618618618p-5, 0x1.8618618618618p-59},
};

// 1 / (2 k + 23), k = 0..9
inline constexpr double kAtanhRest[10] = {
    0x1.642c8590b2164p-5,
    0x1.47ae147ae147bp-5,
    0x1.2f684bda12f68p-5,
    0x1.1a7b9611a7b96p-5,
    0x1.0842108421084p-5,
    0x1.f07c1f07c1f08p-6,
    0x1.d41d41d41d41dp-6,
    0x1.bacf914c1bad0p-6,
    0x1.a41a41a41a41ap-6,
    0x1.8f9c18f9c18fap-6,
};

}  // namespace survmeth::numerics

#endif  // NUMERICS_DOUBLE_DOUBLE_TABLES_H_
