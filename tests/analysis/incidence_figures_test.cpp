// Figures of incidences: what panels share.
#include <gtest/gtest.h>

#include "analysis/incidence/describe.h"

namespace survmeth {
namespace {

// One group of ten with two types of event, one of them rare.
analysis::IncidenceAnswer answerOf(double rare, double frequent) {
  analysis::IncidenceAnswer answer;
  answer.group = {{"all"}, {}, {10}};
  engine::incidence::Curve curve;
  curve.rows = 10;
  curve.n = 10;
  curve.time = {1, 2};
  curve.atRisk = {10, 5};
  curve.censoredAt = {0, 0};
  curve.survival = {1 - rare - frequent, 1 - rare - frequent};
  for (const double level : {rare, frequent}) {
    engine::incidence::CauseCurve cause;
    cause.eventsAt = {1, 0};
    cause.incidence = cause.hazard = {level, level};
    cause.variance = cause.hazardVariance = {0, 0};
    curve.causes.push_back(cause);
  }
  answer.curves = {curve};
  for (std::size_t c = 0; c < 2; ++c) {
    analysis::IncidenceOfType type;
    type.label = c == 0 ? "rare" : "frequent";
    type.cause = c;
    answer.types.push_back(type);
  }
  return answer;
}

std::vector<double> heights(const analysis::IncidenceAnswer& answer) {
  analysis::IncidenceRequest request;
  request.time = "time";
  request.status = "status";
  const auto figure = analysis::incidenceFigure(answer, request);
  std::vector<double> result;
  for (const report::Panel& panel : figure->panels) result.push_back(panel.y.most.value_or(-1));
  return result;
}

TEST(IncidenceFigure, PanelsShareARoundHeightAboveEverything) {
  EXPECT_EQ(heights(answerOf(0.02, 0.42)), (std::vector<double>{9.0 / 20, 9.0 / 20}));
  EXPECT_EQ(heights(answerOf(0.02, 0.62)), (std::vector<double>{0.7, 0.7}));
  EXPECT_EQ(heights(answerOf(0.013, 0.024)), (std::vector<double>{0.03, 0.03}));
  EXPECT_EQ(heights(answerOf(0.02, 0.98)), (std::vector<double>{1, 1}));
}

TEST(IncidenceFigure, OnePanelChoosesItsHeightAlone) {
  analysis::IncidenceAnswer answer = answerOf(0.02, 0.42);
  answer.types.pop_back();
  EXPECT_EQ(heights(answer), std::vector<double>{-1});
}

TEST(StackedFigure, EachGroupHasItsPanelAndItsOwnNumbersAtRisk) {
  analysis::IncidenceAnswer answer = answerOf(0.02, 0.42);
  analysis::IncidenceRequest request;
  request.time = "time";
  request.status = "status";
  answer.causes = {0, 1};
  answer.event.status.labels = {"rare", "frequent"};
  EXPECT_FALSE(analysis::stackedFigure(answer, request)->riskTable->eachPanel);
  answer.group = {{"a", "b"}, {}, {10, 4}};
  answer.curves.push_back(answer.curves[0]);
  answer.curves[1].atRisk = {4, 3};
  request.group = {"arm"};
  const report::Figure figure = *analysis::stackedFigure(answer, request);
  ASSERT_EQ(figure.panels.size(), 2u);
  EXPECT_EQ(figure.panels[1].title, "arm b");
  EXPECT_TRUE(figure.riskTable->eachPanel);
  EXPECT_EQ(figure.riskTable->rows, (std::vector<std::string>{"arm a", "arm b"}));
  ASSERT_EQ(figure.riskTable->breaks, figure.panels[1].x.ticks);
  EXPECT_EQ(figure.riskTable->counts[0].front(), 10);
  EXPECT_EQ(figure.riskTable->counts[1].front(), 4);
  EXPECT_EQ(figure.riskTable->counts[1].back(), 3);
}

}  // namespace
}  // namespace survmeth
