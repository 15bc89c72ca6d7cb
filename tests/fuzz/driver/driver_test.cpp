// The fuzz targets' own driver: that it notices each promise that is broken.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "tests/fuzz/fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace survmeth::fuzz {
namespace {

// Entry points that keep or break a promise, by the first byte of an input.
enum Behaviour : std::uint8_t { kGood, kDiffers, kCodeDiffers, kWritesInput, kTouchesRefused };

int callsMade = 0;

Call good(Input& in, Arrays& a) {
  double* out = a.inOut(in.column(3, Likely::kReal));
  return [=] {
    ++callsMade;
    out[0] = std::numeric_limits<double>::quiet_NaN();
    return Outcome{};
  };
}

Call differs(Input&, Arrays& a) {
  double* out = a.out();
  return [=] {
    *out = ++callsMade % 2 == 0 ? 0.0 : -0.0;
    return Outcome{};
  };
}

Call codeDiffers(Input&, Arrays&) {
  return [] { return Outcome{++callsMade, false}; };
}

Call writesInput(Input&, Arrays& a) {
  double* in = a.in(std::vector<double>{1.0, 2.0});
  return [=] {
    in[1] = 3.0;
    return Outcome{};
  };
}

Call touchesRefused(Input&, Arrays& a) {
  int* out = a.inOut(std::vector<int>{5});
  return [=] {
    *out = 6;
    return coded(-2, {0}, {-2});
  };
}

void run(Behaviour behaviour) {
  const std::uint8_t bytes[] = {behaviour, 0, 1, 2};
  LLVMFuzzerTestOneInput(bytes, sizeof bytes);
}

TEST(FuzzDriver, CallsTwiceAndAcceptsEqualBits) {
  callsMade = 0;
  run(kGood);
  EXPECT_EQ(callsMade, 2);
}

TEST(FuzzDriver, StopsWhereTwoCallsDiffer) {
  EXPECT_DEATH(run(kDiffers), "the same bits for the same arguments");
  EXPECT_DEATH(run(kCodeDiffers), "the same code for the same arguments");
}

TEST(FuzzDriver, StopsWhereAnInputIsWritten) {
  EXPECT_DEATH(run(kWritesInput), "what is only read stays");
}

TEST(FuzzDriver, StopsWhereARefusalTouchesAnArray) {
  EXPECT_DEATH(run(kTouchesRefused), "a refusal touches no array");
}

TEST(FuzzDriver, StopsAtACodeThatIsNotListed) {
  EXPECT_EQ(coded(-3, {0, -3}, {-1}).refused, false);
  EXPECT_EQ(coded(-1, {0, -3}, {-1}).refused, true);
  EXPECT_DEATH(coded(-2, {0, -3}, {-1}), "a code of the list");
}

TEST(FuzzDriver, HoldsIterationsToTheirLimit) {
  requireWithin(5, 5);
  requireWithin(1000, 0);
  EXPECT_DEATH(requireWithin(6, 5), "iterations within their limit");
  EXPECT_DEATH(requireWithin(1001, -1), "iterations within their limit");
}

TEST(FuzzInput, ReadsZerosPastItsEnd) {
  const std::uint8_t bytes[] = {7};
  Input in(bytes, sizeof bytes);
  EXPECT_EQ(in.byte(), 7U);
  EXPECT_EQ(in.byte(), 0U);
  EXPECT_EQ(in.count(40), -3);
}

TEST(FuzzInput, MakesNumbersOfAnyBits) {
  const std::uint8_t bytes[] = {255, 0x7f, 0xf0, 0, 0, 0, 0, 0, 0, 255, 0, 0, 0, 0, 0, 0, 0, 1};
  Input in(bytes, sizeof bytes);
  EXPECT_EQ(in.number(), std::numeric_limits<double>::infinity());
  EXPECT_EQ(in.number(), std::numeric_limits<double>::denorm_min());
}

TEST(FuzzArrays, ACountBelowZeroIsAnArrayOfNoElement) {
  Arrays a(0), b(0);
  a.out(-3);
  b.out(0);
  EXPECT_TRUE(a.same(b));
  b.out(1);
  EXPECT_FALSE(a.same(b));
}

}  // namespace

const std::vector<Prepare> kEntries = {good, differs, codeDiffers, writesInput, touchesRefused};

}  // namespace survmeth::fuzz
