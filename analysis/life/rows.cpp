#include "analysis/life/rows.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "analysis/checks.h"
#include "analysis/groups.h"
#include "model/coding.h"
#include "report/keys.h"
#include "text/lists.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

using engine::Refusal;
using engine::Role;

// A weight below the last place of the sum of all says nothing beside the others: more likely a
// mistake of units than a group.
void requireWeighty(const LifeRows& rows) {
  constexpr double kLastPlace = 0x1p-52;
  std::vector<double> totals(rows.groups.labels.size(), 0.0);
  double all = 0;
  for (std::size_t i = 0; i < rows.weight.numbers.size(); ++i) {
    totals[rows.groups.codes.empty() ? 0 : rows.groups.codes[i]] += rows.weight.numbers[i];
    all += rows.weight.numbers[i];
  }
  if (!(all > 0)) {
    throw Refusal(Role::kWeight, Refusal::kNone, "every weight is 0", Refusal::kNone,
                  "at least one above 0");
  }
  for (std::size_t g = 0; g < totals.size(); ++g) {
    if (totals[g] > all * kLastPlace) continue;
    throw Refusal(Role::kGroup, Refusal::kNone,
                  "the weights of the group " + text::quote(rows.groups.labels[g]) +
                      " vanish beside the largest weights");
  }
}

}  // namespace

LifeRows lifeRowsOf(const frame::Frame& data, const LifeRequest& request) {
  LifeRows rows;
  model::YesNo events =
      model::yesNoOf(*data.labels(request.event), request.eventValues, model::kEvents);
  rows.event.assign(events.rows.begin(), events.rows.end());
  rows.eventLabels = std::move(events.labels);
  rows.eventNote = std::move(events.note);
  rows.time = *data.numbers(request.time);
  requireTimes(rows.time.numbers);
  if (!request.weight.empty()) {
    rows.weight = *data.numbers(request.weight);
    requireWeights(rows.weight.numbers);
  }
  if (request.group.empty()) {
    rows.groups = {{"all"}, {}, {data.rows}};
  } else {
    rows.groups = request.group.size() == 1
                      ? frame::allLabelsOf(*data.labels(request.group.front()))
                      : frame::crossedLabels(data, request.group);
    requireFilled(rows.groups, rows.weight.numbers);
  }
  if (!request.weight.empty()) requireWeighty(rows);
  return rows;
}

engine::Rows LifeRows::rows() const {
  engine::Rows rows;
  rows.weight = weight.numbers;
  return rows;
}

bool LifeRows::wholeWeights() const {
  return std::all_of(weight.numbers.begin(), weight.numbers.end(),
                     [](double each) { return each == std::trunc(each); });
}

report::Fact LifeRows::eventFact(const std::string& column) const {
  report::Fact fact{
      report::key::kEventLabels, "Event where " + column + " is", report::Kind::kLabel, {}};
  if (!eventLabels.empty()) fact.value = text::joined(eventLabels);
  return fact;
}

void LifeRows::noteWeights(std::vector<report::Note>& notes) const {
  const auto zeros = std::count(weight.numbers.begin(), weight.numbers.end(), 0.0);
  if (!wholeWeights()) {
    notes.push_back(
        {"fractionalWeights", "weights are not all whole numbers; they are taken as frequencies"});
  }
  if (zeros > 0) {
    notes.push_back(
        {"zeroWeights", text::counted(static_cast<std::size_t>(zeros), "row has", "rows have") +
                            " weight 0 and no effect"});
  }
}

}  // namespace survmeth::analysis
