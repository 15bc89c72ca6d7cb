// Probabilities of states as a figure.
#include <cmath>
#include <string>
#include <utility>

#include "analysis/states/states.h"
#include "report/build.h"
#include "text/lists.h"

namespace survmeth::analysis {
namespace {

using engine::states::Estimates;

// Times at which the picture has a corner.
std::vector<std::size_t> corners(const Estimates& found) {
  constexpr double kStep = 1.0 / 2000;  // of the axis: closer steps are one in print
  std::vector<std::size_t> at;
  for (std::size_t i = 0; i < found.time.size(); ++i) {
    bool differs = at.empty() || i + 1 == found.time.size();
    for (const auto& state : found.states) {
      differs = differs || std::fabs(state.probability[i] - state.probability[at.back()]) > kStep;
    }
    if (differs) at.push_back(i);
  }
  return at;
}

}  // namespace

std::optional<report::Figure> stateFigure(const StatesAnswer& answer,
                                          const StatesRequest& request) {
  double last = request.start;
  bool any = false;
  for (const Estimates& found : answer.found) {
    last = std::fmax(last, found.followed);
    any = any || !found.time.empty();
  }
  if (!any) return {};
  report::Figure figure;
  figure.id = "states";
  figure.title = "Probabilities of the states";
  if (answer.several()) figure.title += " by " + text::joined(request.group);
  figure.caption = "Aalen-Johansen estimates, one above the other.";
  for (std::size_t g = 0; g < answer.found.size(); ++g) {
    const Estimates& found = answer.found[g];
    report::Panel panel =
        report::panelOf(request.wide() ? request.deathTime : request.exit, "Probability");
    panel.x.least = request.start;
    panel.x.most = last;
    panel.y.least = 0;
    panel.y.most = 1;
    panel.y.percent = true;
    if (answer.several()) {
      panel.title = text::joined(request.group) + " " + answer.group.labels[g];
    }
    const std::vector<std::size_t> at = corners(found);
    for (std::size_t j = 0; j < answer.states.size(); ++j) {
      report::Series& area = panel.series.emplace_back();
      area.name = answer.states[j];
      area.kind = report::SeriesKind::kArea;
      area.stepped = true;
      area.x = {request.start};
      area.y = {found.initial[j]};
      for (const std::size_t i : at) {
        area.x.push_back(found.time[i]);
        area.y.push_back(found.states[j].probability[i]);
      }
      // Level to the end of follow-up.
      if (found.followed > area.x.back()) {
        const double y = area.y.back();
        area.x.push_back(found.followed);
        area.y.push_back(y);
      }
    }
    figure.panels.push_back(std::move(panel));
  }
  return figure;
}

}  // namespace survmeth::analysis
