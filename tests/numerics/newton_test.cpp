// Newton's method ends at the maximum, or says why not.
#include "numerics/newton.h"

#include <gtest/gtest.h>

#include <cmath>
#include <span>
#include <vector>

#include "numerics/elementary.h"

namespace survmeth::numerics {
namespace {

// -log cosh of a x, whose full step from far away overshoots.
NewtonFunction minusLogCosh(double a) {
  return [a](std::span<const double> at, NewtonPoint& point) {
    const double t = std::tanh(a * at[0]);
    point.value = -std::log(std::cosh(a * at[0]));
    point.gradient = {-a * t};
    point.information = SquareMatrix(1, a * a * (1 - t * t));
    return true;
  };
}

TEST(Newton, HalvesStepsThatOvershoot) {
  const NewtonResult result = maximise(minusLogCosh(2.0), {1.0}, {});
  EXPECT_EQ(result.stop, NewtonStop::kConverged);
  EXPECT_NEAR(result.at[0], 0.0, 1e-10);
  EXPECT_LE(result.decrement, 1e-10);
}

TEST(Newton, AQuadraticTakesOneStep) {
  const auto function = [](std::span<const double> at, NewtonPoint& point) {
    point.value = -(at[0] - 3) * (at[0] - 3) / 2 - 2 * (at[1] + 1) * (at[1] + 1);
    point.gradient = {3 - at[0], -4 * (at[1] + 1)};
    point.information = SquareMatrix(2);
    point.information(0, 0) = 1;
    point.information(1, 1) = 4;
    return true;
  };
  const NewtonResult result = maximise(function, {0.0, 0.0}, {});
  EXPECT_EQ(result.stop, NewtonStop::kConverged);
  EXPECT_EQ(result.iterations, 1);
  EXPECT_EQ(result.at, (std::vector<double>{3.0, -1.0}));
}

TEST(Newton, TheLimitIsReported) {
  NewtonOptions options;
  options.iterationLimit = 2;
  const NewtonResult result = maximise(minusLogCosh(1.0), {1.0}, options);
  EXPECT_EQ(result.stop, NewtonStop::kIterationLimit);
  EXPECT_EQ(result.iterations, 2);
}

TEST(Newton, LostRankIsReported) {
  const auto function = [](std::span<const double> at, NewtonPoint& point) {
    point.value = at[0];
    point.gradient = {1.0};
    point.information = SquareMatrix(1, 0.0);
    return true;
  };
  EXPECT_EQ(maximise(function, {0.0}, {}).stop, NewtonStop::kRankLost);
}

TEST(Newton, NoValueAtTheStartIsReported) {
  const auto function = [](std::span<const double>, NewtonPoint&) { return false; };
  EXPECT_EQ(maximise(function, {0.0}, {}).stop, NewtonStop::kNoValue);
}

TEST(Newton, AStepToWhereThereIsNoValueIsHalved) {
  // log x - x from a start whose full step is negative.
  const auto function = [](std::span<const double> at, NewtonPoint& point) {
    if (!(at[0] > 0)) return false;
    point.value = std::log(at[0]) - at[0];
    point.gradient = {1 / at[0] - 1};
    point.information = SquareMatrix(1, 1 / (at[0] * at[0]));
    return true;
  };
  const NewtonResult result = maximise(function, {5.0}, {});
  EXPECT_EQ(result.stop, NewtonStop::kConverged);
  EXPECT_NEAR(result.at[0], 1.0, 1e-10);
}

TEST(Newton, AnAscentThatLeadsNowhereIsReported) {
  // The gradient points against the value.
  const auto function = [](std::span<const double> at, NewtonPoint& point) {
    point.value = -at[0];
    point.gradient = {1.0};
    point.information = SquareMatrix(1, 1.0);
    return true;
  };
  EXPECT_EQ(maximise(function, {0.0}, {}).stop, NewtonStop::kNoAscent);
}

TEST(Newton, TheWatcherStopsIt) {
  const auto watch = [](const NewtonResult& now) { return now.iterations == 1; };
  const NewtonResult result = maximise(minusLogCosh(1.0), {1.0}, {}, watch);
  EXPECT_EQ(result.stop, NewtonStop::kWatched);
  EXPECT_EQ(result.iterations, 1);
}

}  // namespace
}  // namespace survmeth::numerics
