#include "analysis/censoredRows.h"

#include <cmath>
#include <utility>

#include "analysis/groups.h"
#include "model/coding.h"
#include "report/keys.h"
#include "text/lists.h"
#include "text/words.h"

namespace survmeth::analysis {

using engine::Refusal;
using engine::Role;

CensoredRows censoredRowsOf(const frame::Frame& data, const CensoredColumns& columns) {
  CensoredRows rows;
  model::YesNo events =
      model::yesNoOf(*data.labels(columns.event), columns.eventValues, model::kEvents);
  rows.event = std::move(events.rows);
  rows.eventLabels = std::move(events.labels);
  rows.eventNote = std::move(events.note);
  rows.time = *data.numbers(columns.time);
  if (!columns.weight.empty()) rows.weight = *data.numbers(columns.weight);
  if (columns.group.empty()) {
    rows.groups = {{"all"}, {}, {data.rows}};
  } else {
    rows.groups = columns.group.size() == 1
                      ? frame::allLabelsOf(*data.labels(columns.group.front()))
                      : frame::crossedLabels(data, columns.group);
    requireFilled(rows.groups, rows.weight.numbers);
  }
  return rows;
}

SurvivalData CensoredRows::data() const {
  return {time.numbers, event, weight.numbers, groups.codes, groups.labels.size()};
}

report::Fact CensoredRows::eventFact(const std::string& column) const {
  report::Fact fact{
      report::key::kEventLabels, "Event where " + column + " is", report::Kind::kLabel, {}};
  if (!eventLabels.empty()) fact.value = text::joined(eventLabels);
  return fact;
}

void CensoredRows::noteWeights(std::vector<report::Note>& notes) const {
  bool whole = true;
  std::size_t zeros = 0;
  for (const double each : weight.numbers) {
    whole = whole && each == std::trunc(each);
    zeros += each == 0 ? 1 : 0;
  }
  if (!whole) {
    notes.push_back(
        {"fractionalWeights", "weights are not all whole numbers; they are taken as frequencies"});
  }
  if (zeros > 0) {
    notes.push_back(
        {"zeroWeights", text::counted(zeros, "row has", "rows have") + " weight 0 and no effect"});
  }
}

Refusal CensoredRows::worded(const Refusal& refused) const {
  if (refused.role() != Role::kGroup) return refused;
  if (groups.labels.size() == 1) {
    return {Role::kWeight, Refusal::kNone, "every weight is 0", Refusal::kNone,
            "at least one above 0"};
  }
  if (refused.column() == Refusal::kNone) return refused;
  return {Role::kGroup, Refusal::kNone,
          "the weights of the group " + text::quote(groups.labels[refused.column()]) +
              " vanish beside the largest weights"};
}

}  // namespace survmeth::analysis
