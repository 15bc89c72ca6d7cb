// Sums of very many terms.
#include <gtest/gtest.h>

#include <array>

#include "numerics/random.h"
#include "numerics/runningSum.h"

namespace survmeth::numerics {
namespace {

TEST(RunningSum, KeepsTheErrorOfItsPartsHoweverManyThereAre) {
  RunningSum sum;
  double plain = 0.0;
  for (int i = 0; i < 1'000'000; ++i) {
    plain += 0.1;
    sum.add(0.1);
  }
  // A part stays below 6.4, where an addition errs by no more than 2^-51.
  EXPECT_NEAR(sum.value(), 100000.0, 1e6 * 0x1p-51);
  EXPECT_GT(plain - 100000.0, 1e-6);
}

TEST(RunningSums, HaveTheBitsOfAsManyRunningSums) {
  Random random(7, 0);
  std::array<RunningSum, 3> alone;
  RunningSums together(3);
  RunningSumsOf<3> known;
  for (int i = 0; i < 1000; ++i) {
    std::array<double, 3> terms = {random.uniform(), 1e9 * random.uniform() - 5e8, 0.0};
    const std::array<double, 3> added = terms;
    together.add(terms.data());
    known.add(added);
    EXPECT_EQ(known.values(), terms);
    for (std::size_t j = 0; j < 3; ++j) {
      EXPECT_EQ(terms[j], alone[j].add(added[j]));
      EXPECT_EQ(together.value(j), alone[j].value());
      EXPECT_EQ(known.value(j), alone[j].value());
    }
  }
}

}  // namespace
}  // namespace survmeth::numerics
