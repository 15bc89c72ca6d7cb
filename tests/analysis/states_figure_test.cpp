// The figure of states: a panel for each group, to the end of its follow-up.
#include <gtest/gtest.h>

#include "analysis/states/states.h"

namespace survmeth {
namespace {

using Numbers = std::vector<double>;

// Two states; the share of the second is `share` from time 2 on.
engine::states::Estimates estimatesOf(double share, double followed) {
  engine::states::Estimates found;
  found.time = {2};
  found.initial = {1, 0};
  found.states.resize(2);
  for (std::size_t j = 0; j < 2; ++j) {
    found.states[j].atRisk = {10};
    found.states[j].probability = {j == 0 ? 1 - share : share};
    found.states[j].variance = {0};
  }
  found.followed = followed;
  return found;
}

TEST(StatesFigure, GroupsHavePanelsOfOneAxisEachToTheEndOfItsFollowUp) {
  analysis::StatesAnswer answer;
  answer.states = {"well", "dead"};
  answer.group.labels = {"a", "b"};
  answer.found = {estimatesOf(0.5, 5), estimatesOf(0.25, 2)};
  analysis::StatesRequest request;
  request.exit = "end";
  request.group = {"arm"};
  const auto figure = analysis::stateFigure(answer, request);
  ASSERT_TRUE(figure.has_value());
  ASSERT_EQ(figure->panels.size(), 2u);
  for (const report::Panel& panel : figure->panels) EXPECT_EQ(panel.x.most, 5);
  EXPECT_EQ(figure->panels[0].title, "arm a");
  EXPECT_EQ(figure->panels[0].series[1].x, (Numbers{0, 2, 5}));
  EXPECT_EQ(figure->panels[0].series[1].y, (Numbers{0, 0.5, 0.5}));
  EXPECT_EQ(figure->panels[1].series[1].x, (Numbers{0, 2}));
}

TEST(StatesFigure, WithoutATransitionThereIsNone) {
  analysis::StatesAnswer answer;
  answer.states = {"well"};
  answer.group.labels = {"all"};
  answer.found.resize(1);
  answer.found[0].initial = {1};
  answer.found[0].followed = 4;
  EXPECT_FALSE(analysis::stateFigure(answer, {}).has_value());
}

}  // namespace
}  // namespace survmeth
