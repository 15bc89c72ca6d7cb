// Scales, ticks and clipping, against values worked by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "pictures/clip.h"
#include "pictures/scale.h"
#include "pictures/ticks.h"

namespace survmeth::pictures {
namespace {

std::vector<std::string> textsOf(const Ticks& ticks) {
  std::vector<std::string> texts;
  for (const Tick& tick : ticks.marks) texts.push_back(tick.text);
  return texts;
}
using Texts = std::vector<std::string>;

Ticks linear(double least, double most, std::size_t wanted = 6, bool percent = false) {
  return ticksOf(Scale(report::Scale::kLinear, least, most), wanted, percent);
}

TEST(Ticks, StandAtRoundNumbers) {
  EXPECT_EQ(textsOf(linear(0, 1)), (Texts{"0.0", "0.2", "0.4", "0.6", "0.8", "1.0"}));
  EXPECT_EQ(textsOf(linear(-7, 12)), (Texts{"−5", "0", "5", "10"}));
  EXPECT_EQ(textsOf(linear(0, 1, 3, true)), (Texts{"0%", "50%", "100%"}));
  EXPECT_EQ(linear(0, 1).remark, "");
}

TEST(Ticks, OfLargeAndSmallNumbersAreMultiplesOfAPowerOfAThousand) {
  const Ticks large = linear(0, 5e9);
  EXPECT_EQ(textsOf(large), (Texts{"0", "1", "2", "3", "4", "5"}));
  EXPECT_EQ(large.remark, "×10⁹");
  const Ticks small = linear(0, 4e-5, 5);
  EXPECT_EQ(textsOf(small), (Texts{"0", "10", "20", "30", "40"}));
  EXPECT_EQ(small.remark, "×10⁻⁶");
  EXPECT_EQ(linear(1e-300, 3e-300).remark, "×10⁻³⁰⁰");
}

TEST(Ticks, FarFromZeroAreLessAConstant) {
  const Ticks ticks = linear(1e9, 1e9 + 1e-3, 7);
  EXPECT_EQ(ticks.remark, "less 1000000000, ×10⁻³");
  EXPECT_EQ(textsOf(ticks), (Texts{"0.0", "0.2", "0.4", "0.6", "0.8", "1.0"}));
  EXPECT_EQ(textsOf(linear(2000, 2005)), (Texts{"2000", "2001", "2002", "2003", "2004", "2005"}));
  const Ticks negative = linear(-20000050, -20000010, 5);
  EXPECT_EQ(negative.remark, "plus 20001000");
  EXPECT_EQ(textsOf(negative), (Texts{"950", "960", "970", "980", "990"}));
}

TEST(Ticks, OfALogAxisAreOneTwoFiveOrPowersOfTen) {
  const auto log = [](double least, double most, std::size_t wanted) {
    return textsOf(ticksOf(Scale(report::Scale::kLog, least, most), wanted, false));
  };
  EXPECT_EQ(log(0.1, 10, 8), (Texts{"0.1", "0.2", "0.5", "1", "2", "5", "10"}));
  EXPECT_EQ(log(0.1, 10, 5), (Texts{"0.1", "0.3", "1", "3", "10"}));
  EXPECT_EQ(log(1, 1e6, 7), (Texts{"1", "10", "100", "1000", "10000", "100000", "1000000"}));
  EXPECT_EQ(log(1e-9, 1e9, 8), (Texts{"10⁻⁹", "10⁻⁶", "10⁻³", "10⁰", "10³", "10⁶", "10⁹"}));
  EXPECT_EQ(log(0.98, 1.02, 5), (Texts{"0.98", "0.99", "1.00", "1.01", "1.02"}));
}

TEST(Ticks, ThatAreWantedKeepTheirValuesAndDiffer) {
  const Scale scale(report::Scale::kLinear, 0, 10);
  EXPECT_EQ(textsOf(ticksAt(scale, {5, 0, 12, 2.5}, false)), (Texts{"0", "2.5", "5"}));
  EXPECT_EQ(textsOf(ticksAt(scale, {1, 1 + 1e-9}, false)), (Texts{"1", "1.000000001"}));
}

TEST(Ticks, ThatAreWantedOfLargeAndSmallNumbersAreMultiples) {
  const Ticks large = ticksAt({report::Scale::kLinear, 0, 4e10}, {0, 5e9, 1.5e10}, false);
  EXPECT_EQ(textsOf(large), (Texts{"0", "5", "15"}));
  EXPECT_EQ(large.remark, "×10⁹");
  const Ticks small = ticksAt({report::Scale::kLinear, 0, 1e-6}, {0, 5e-8, 2.5e-7}, false);
  EXPECT_EQ(textsOf(small), (Texts{"0", "50", "250"}));
  EXPECT_EQ(small.remark, "×10⁻⁹");
  // Those that differ by less than a multiple shows stay as they are.
  const Ticks near = ticksAt({report::Scale::kLinear, 0, 2e9}, {1e9 + 1, 1e9 + 2}, false);
  EXPECT_EQ(textsOf(near), (Texts{"1000000001", "1000000002"}));
  EXPECT_EQ(near.remark, "");
}

TEST(Scales, PlaceValuesByTheirTransformations) {
  // 1.959963984540054 is the 0.975 quantile of the normal distribution (any
  // table); a picture needs four digits.
  const Scale probit(report::Scale::kProbit, 0.025, 0.975);
  EXPECT_NEAR(probit.place(0.5), 0.5, 1e-12);
  EXPECT_NEAR(probit.place(0.841344746068543), (1.959963984540054 + 1) / 3.919927969080108, 1e-12);
  // log(-log(1 - p)) is 0 at 1 - 1/e, and 1 and -1 where -log(1 - p) is e and
  // 1/e.
  const Scale cloglog(report::Scale::kCloglog, 1 - std::exp(-std::exp(-1.0)),
                      1 - std::exp(-std::exp(1.0)));
  EXPECT_NEAR(cloglog.place(1 - std::exp(-1.0)), 0.5, 1e-12);
  EXPECT_NEAR(Scale(report::Scale::kLog, 0.1, 1000).place(1), 0.25, 1e-12);
  EXPECT_EQ(Scale(report::Scale::kLinear, -1.7e308, 1.7e308).place(0), 0.5);
}

TEST(Scales, ValuesThatAreNotOnThemHaveNoPlace) {
  EXPECT_TRUE(std::isnan(Scale(report::Scale::kLog, 1, 2).place(-1)));
  EXPECT_EQ(Scale(report::Scale::kLog, 1, 2).place(0), -INFINITY);
  EXPECT_TRUE(std::isnan(Scale(report::Scale::kProbit, 0.1, 0.9).place(1.5)));
  EXPECT_EQ(Scale(report::Scale::kCloglog, 0.1, 0.9).place(1), INFINITY);
  EXPECT_FALSE(knows(report::Scale::kLog, 0));
  EXPECT_TRUE(knows(report::Scale::kLinear, 0));
}

TEST(Limits, AWantedOneStaysWhereAllValuesLieOnIt) {
  report::Axis axis;
  axis.least = 0;
  EXPECT_EQ(limitsOf(axis, {0, 0}, 0.1).least, 0);
  EXPECT_GT(limitsOf(axis, {0, 0}, 0.1).most, 0);
  axis.least.reset();
  axis.most = 5;
  EXPECT_EQ(limitsOf(axis, {5, 5}, 0.1).most, 5);
  EXPECT_LT(limitsOf(axis, {5, 5}, 0.1).least, 5);
}

TEST(Limits, HoldTheValuesAndAMargin) {
  report::Axis axis;
  const Limits both = limitsOf(axis, {10, 20, NAN, INFINITY}, 0.1);
  EXPECT_DOUBLE_EQ(both.least, 9);
  EXPECT_DOUBLE_EQ(both.most, 21);
  EXPECT_EQ(limitsOf(axis, {0, 20}, 0.1).least, 0);
  axis.least = 5;
  axis.most = 6;
  EXPECT_EQ(limitsOf(axis, {10, 20}, 0.1).least, 5);
  EXPECT_EQ(limitsOf(axis, {10, 20}, 0.1).most, 6);
  axis.most.reset();
  const Limits above = limitsOf(axis, {1, 2}, 0.1);  // the wanted limit lies above every value
  EXPECT_EQ(above.least, 5);
  EXPECT_GT(above.most, 5);
}

TEST(Clip, ALineIsCutAtBothEdgesItCrosses) {
  const Box frame{0, 0, 10, 10};
  const std::vector<Path> parts = clippedLine({{-10, -5}, {20, 10}}, frame);
  ASSERT_EQ(parts.size(), 1u);
  EXPECT_NEAR(parts[0][0].x, 0, 1e-5);
  EXPECT_NEAR(parts[0][0].y, 0, 1e-5);
  EXPECT_NEAR(parts[0][1].x, 10, 1e-5);
  EXPECT_NEAR(parts[0][1].y, 5, 1e-5);
  EXPECT_EQ(clippedLine({{-1, 5}, {5, 11}}, frame).size(), 1u);
  EXPECT_EQ(clippedLine({{-6, 5}, {5, 16}}, frame).size(), 0u);
}

TEST(Clip, ALineThatLeavesAndComesBackIsTwoParts) {
  const Box frame{0, 0, 10, 10};
  EXPECT_EQ(clippedLine({{1, 5}, {5, 15}, {9, 5}}, frame).size(), 2u);
  EXPECT_EQ(clippedLine({{1, 5}, {5, NAN}, {6, 6}, {9, 5}}, frame).size(), 1u);
}

TEST(Clip, AnAreaKeepsWhatIsInside) {
  const Box frame{0, 0, 10, 10};
  const auto areaOf = [](const Path& path) {
    double twice = 0;
    for (std::size_t i = 0; i < path.size(); ++i) {
      const Point &a = path[i], &b = path[(i + 1) % path.size()];
      twice += a.x * b.y - b.x * a.y;
    }
    return std::abs(twice) / 2;
  };
  EXPECT_NEAR(areaOf(clippedArea({{-5, -5}, {5, -5}, {5, 5}, {-5, 5}}, frame)), 25, 1e-9);
  EXPECT_NEAR(areaOf(clippedArea({{0, 0}, {20, 0}, {0, 20}}, frame)), 100, 1e-9);
  EXPECT_TRUE(clippedArea({{20, 20}, {30, 20}, {30, 30}}, frame).empty());
}

}  // namespace
}  // namespace survmeth::pictures
