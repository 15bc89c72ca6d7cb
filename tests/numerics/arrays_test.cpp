// The array forms give what the scalar functions give, bit for bit.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "exact.h"
#include "numerics/elementary.h"

namespace numerics_tests {
namespace {

namespace numerics = survmeth::numerics;

struct Pair {
  const char* name;
  double (*scalar)(double);
  void (*array)(std::span<const double>, std::span<double>);
};

class ArrayForm : public testing::TestWithParam<Pair> {};

// Ordinary numbers of both signs and all sizes, and every hundredth one a special value.
std::vector<double> arguments(std::size_t count) {
  static constexpr double kSpecial[] = {0.0,        -0.0,      1.0,       -1.0,       kInfinity,
                                        -kInfinity, kNan,      kSmallest, -kSmallest, kLargest,
                                        -kLargest,  0x1p-1022, -745.0,    709.5,      1e-17};
  std::mt19937_64 random(count);
  std::vector<double> x(count);
  for (std::size_t i = 0; i < count; ++i) {
    const double uniform = static_cast<double>(random() >> 11) * 0x1p-53;
    const auto power = static_cast<int>(random() % 80) - 70;
    x[i] = std::ldexp(random() % 4 == 0 ? -1.0 - uniform : 1.0 + uniform, power);
    if (i % 100 == 99) x[i] = kSpecial[random() % std::size(kSpecial)];
  }
  return x;
}

TEST_P(ArrayForm, IsTheScalarBitForBit) {
  for (const std::size_t count : {0u, 1u, 3u, 7u, 8u, 9u, 98u, 255u, 256u, 257u, 1000u, 20000u}) {
    const std::vector<double> x = arguments(count);
    std::vector<double> y(count, -7.0);
    GetParam().array(x, y);
    for (std::size_t i = 0; i < count; ++i) {
      ASSERT_TRUE(same(y[i], GetParam().scalar(x[i]))) << "at " << x[i] << " of " << count;
    }
  }
}

TEST_P(ArrayForm, MayWriteOverItsArguments) {
  const std::vector<double> x = arguments(1000);
  std::vector<double> y = x;
  GetParam().array(y, y);
  for (std::size_t i = 0; i < x.size(); ++i) ASSERT_TRUE(same(y[i], GetParam().scalar(x[i])));
}

TEST_P(ArrayForm, StopsAtTheShorterOfItsArrays) {
  const std::vector<double> x = {1.0, 2.0, 3.0};
  std::vector<double> y(5, -7.0);
  GetParam().array(x, y);
  EXPECT_NE(y[2], -7.0);
  EXPECT_EQ(y[3], -7.0);
  y.assign(5, -7.0);
  GetParam().array(x, std::span(y).first(2));
  EXPECT_NE(y[1], -7.0);
  EXPECT_EQ(y[2], -7.0);
}

INSTANTIATE_TEST_SUITE_P(Of, ArrayForm,
                         testing::Values(Pair{"exp", numerics::exp, numerics::expArray},
                                         Pair{"expm1", numerics::expm1, numerics::expm1Array},
                                         Pair{"log", numerics::log, numerics::logArray},
                                         Pair{"log1p", numerics::log1p, numerics::log1pArray}),
                         [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace
}  // namespace numerics_tests
