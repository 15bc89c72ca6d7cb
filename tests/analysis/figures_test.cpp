// What the figures of analyses say, before any renderer.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "analysis/declare.h"

namespace {

using namespace survmeth;  // NOLINT(google-build-using-namespace)

using Settings = std::vector<std::pair<std::string, report::Setting>>;

frame::Frame dataOf(std::vector<frame::Column> columns) {
  frame::Frame data;
  data.source = "memory";
  data.rows = data.rowsRead = columns[0].rows();
  data.columns = std::move(columns);
  return data;
}

// The figure `id` of an analysis.
report::Figure figureOf(const std::string& name, const frame::Frame& data, const Settings& settings,
                        const std::string& id) {
  const analysis::Declaration& declaration = *analysis::findDeclaration(name);
  const std::shared_ptr<void> request = declaration.request();
  for (const auto& [option, value] : settings) declaration.find(option)->set(request.get(), value);
  numerics::Progress progress;
  const report::Report report =
      analysis::analyse(declaration, data, request.get(), progress).report;
  for (const report::Figure& figure : report.figures) {
    if (figure.id == id) return figure;
  }
  return {};
}

TEST(ForestFigure, NarrowLimitsHaveTheDecimalsThatTellThemApart) {
  // The covariate in hundredths of its unit: ratios near 1.
  const frame::Frame data =
      dataOf({frame::numberColumn("t", {1, 2, 2, 3, 4, 4, 5, 6}),
              frame::numberColumn("e", {1, 1, 1, 0, 1, 1, 1, 0}),
              frame::numberColumn("x", {500, 1500, 1000, 2000, 250, 3000, 2500, 1000})});
  const report::Figure figure =
      figureOf("cox", data, {{"formula", std::string("Surv(t, e) ~ x")}}, "hazardRatios");
  ASSERT_EQ(figure.panels.size(), 1u);
  const report::Series& points = figure.panels[0].series.front();
  ASSERT_EQ(points.labels.size(), 1u);
  double ratio = 0, lower = 0, upper = 0;
  ASSERT_EQ(std::sscanf(points.labels[0].c_str(), "%lf (%lf to %lf)", &ratio, &lower, &upper), 3);
  // Two digits of the width stand in each number.
  const double close = (points.right[0] - points.left[0]) / 20;
  EXPECT_NEAR(ratio, points.x[0], close);
  EXPECT_NEAR(lower, points.left[0], close);
  EXPECT_NEAR(upper, points.right[0], close);
  EXPECT_LT(lower, ratio);
  EXPECT_LT(ratio, upper);
}

TEST(ForestFigure, AnInfiniteRatioSaysSo) {
  // Whoever has x = 1 fails before all others.
  const frame::Frame data = dataOf({frame::numberColumn("t", {1, 2, 3, 4, 5, 6}),
                                    frame::numberColumn("e", {1, 1, 1, 0, 0, 0}),
                                    frame::numberColumn("x", {1, 1, 1, 0, 0, 0})});
  const report::Figure figure =
      figureOf("cox", data, {{"formula", std::string("Surv(t, e) ~ x")}}, "hazardRatios");
  ASSERT_EQ(figure.panels.size(), 1u);
  const report::Series& points = figure.panels[0].series.front();
  ASSERT_EQ(points.labels, std::vector<std::string>{"infinite"});
  EXPECT_TRUE(std::isinf(points.x[0]));
}

TEST(DemingFigure, UnitsAreEquallyLongUnlessTheyLieFarApart) {
  const Settings methods = {{"first", std::string("x")}, {"second", std::string("y")}};
  const auto equal = [&](double unit) {
    const frame::Frame data =
        dataOf({frame::numberColumn("x", {1, 2, 3, 4}),
                frame::numberColumn("y", {unit, 2 * unit, 3.1 * unit, 4 * unit})});
    return figureOf("deming", data, methods, "deming").panels.at(0).equalUnits;
  };
  EXPECT_TRUE(equal(1));
  EXPECT_TRUE(equal(10));
  EXPECT_FALSE(equal(1000));
  EXPECT_FALSE(equal(1e-3));
}

}  // namespace
