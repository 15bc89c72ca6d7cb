#include "analysis/life/rows.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "analysis/checks.h"
#include "analysis/cox/subjects.h"
#include "analysis/groups.h"
#include "analysis/option.h"
#include "analysis/weights.h"
#include "engine/risk/arrangement.h"
#include "model/coding.h"
#include "model/response.h"
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

void takeWeights(LifeRows& rows) {
  const auto weight = rows.weight.numbers;
  requireWeights(weight);
  rows.wholeWeights =
      std::all_of(weight.begin(), weight.end(), [](double w) { return w == std::trunc(w); });
  rows.zeroWeights = static_cast<std::size_t>(std::count(weight.begin(), weight.end(), 0.0));
}

// Dates as numbers of days; another number is no date.
const frame::Column& datesOf(const frame::Frame& data, const std::string& name,
                             const char* option) {
  const frame::Column& dates = *data.numbers(name);
  if (dates.isDate) return dates;
  throw BadOption(option, "the column " + text::quote(name) +
                              " holds no dates; expected dates such as 2024-03-01");
}

// Times of dates, in units from each row's own start.
std::vector<double> unitsSince(const frame::Column& start, const frame::Column& end,
                               LifeUnit unit) {
  std::vector<double> units(end.numbers.size());
  for (std::size_t i = 0; i < units.size(); ++i) {
    units[i] = (end.numbers[i] - start.numbers[i]) / daysOf(unit);
  }
  return units;
}

void takeTimes(const frame::Frame& data, const LifeRequest& request, LifeRows& rows) {
  if (!request.byDates()) {
    rows.time = *data.numbers(request.time);
    if (request.lateEntry()) rows.entry = *data.numbers(request.entry);
    requireTimes(rows.time.numbers);
    model::requireEntriesBefore(rows.entry.numbers, rows.time.numbers, rows.dated());
    return;
  }
  const frame::Column& from = datesOf(data, request.from, "from");
  const frame::Column& to = datesOf(data, request.to, "to");
  for (std::size_t i = 0; i < data.rows; ++i) {
    if (to.numbers[i] >= from.numbers[i]) continue;
    throw Refusal(Role::kTime, i, "the date is before that of " + text::quote(request.from),
                  Refusal::kNone, "the same or a later one");
  }
  rows.time = frame::numberColumn(request.time, unitsSince(from, to, request.unit));
  if (!request.lateEntry()) return;
  const frame::Column& entry = datesOf(data, request.entry, "entry");
  model::requireEntriesBefore(entry.numbers, to.numbers, {true, true});
  rows.entry = frame::numberColumn(request.entry, unitsSince(from, entry, request.unit));
}

// Rows of a subject depend on each other where it has several events, and wherever robust variances
// are asked for.
void takeSubjects(const frame::Frame& data, const LifeRequest& request, LifeRows& rows) {
  frame::Labels subjects = frame::labelsOf(*data.labels(request.id));
  engine::risk::check(rows.response(), rows.rows(), {});
  CoxSubjects checked = checkSubjects(data, rows.response(), rows.rows(), subjects, rows.dated());
  rows.gaps = std::move(checked.gaps);
  if (!rows.clustered() && (request.robust || rows.sampling() || checked.severalEvents)) {
    rows.clusters = subjects;
    rows.clustersAreSubjects = true;
  }
  if (request.lateEntry()) joinRows(rows, subjects.codes);
}

// Many rows at few times are as many frequencies: sorted, and gone through, are these. Ties one after
// the other, robust variances and permutations ask for the rows themselves.
bool mayBePooled(const LifeRequest& request, std::size_t rows) {
  constexpr std::size_t kManyRows = 16384;
  return rows >= kManyRows && !request.lateEntry() && !request.robust &&
         request.permutations.empty() && request.estimate != LifeEstimate::kFlemingHarrington;
}

// Whether they may be pooled as they stand in the data, before anything is made of them.
bool mayBePooledAtOnce(const frame::Frame& data, const LifeRequest& request) {
  return mayBePooled(request, data.rows) && !request.byDates() && request.weightColumn().empty() &&
         request.cluster.empty() && request.id.empty() &&
         data.labels(request.event)->levels.size() <= 2;
}

// The columns of the data belong to the caller, who may change them before the last part of the
// report is described.
void ownCells(LifeRows& rows) {
  for (frame::Column* column : {&rows.time, &rows.entry, &rows.weight}) {
    const auto cells = column->numbers;
    if (cells.empty()) continue;
    *column = frame::numberColumn(column->name, {cells.begin(), cells.end()});
  }
}

// Rows of data, of which these are so many each.
void countAgain(frame::Labels& labels, const std::vector<double>& count) {
  std::fill(labels.counts.begin(), labels.counts.end(), 0);
  for (std::size_t i = 0; i < count.size(); ++i) {
    labels.counts[labels.codes.empty() ? 0 : labels.codes[i]] += static_cast<std::size_t>(count[i]);
  }
}

// Of rows that stand for so many each, or for one.
LifeRows read(const frame::Frame& data, const LifeRequest& request, const Cells* cells) {
  LifeRows rows;
  model::YesNo events =
      model::yesNoOf(*data.labels(request.event), request.eventValues, model::kEvents);
  rows.event.assign(events.rows.begin(), events.rows.end());
  rows.eventLabels = std::move(events.labels);
  rows.eventNote = std::move(events.note);
  takeTimes(data, request, rows);
  if (cells != nullptr) {
    rows.time = frame::numberColumn(request.time, cells->time);
    rows.weight = frame::numberColumn({}, cells->weight);
  }
  rows.weightsAre = request.weightsAre;
  if (!request.weightColumn().empty()) {
    rows.weight = *data.numbers(request.weightColumn());
    takeWeights(rows);
  }
  if (request.group.empty()) {
    rows.groups = {{"all"}, {}, {data.rows}};
  } else {
    rows.groups = request.group.size() == 1
                      ? frame::allLabelsOf(*data.labels(request.group.front()))
                      : frame::crossedLabels(data, request.group);
  }
  if (cells != nullptr) countAgain(rows.groups, cells->weight);
  if (!request.group.empty()) requireFilled(rows.groups, rows.weight.numbers);
  if (!request.weightColumn().empty()) requireWeighty(rows);
  if (!request.strata.empty()) rows.strata = groupsOf(data, request.strata);
  if (!request.cluster.empty()) rows.clusters = frame::labelsOf(*data.labels(request.cluster));
  if (!request.id.empty()) takeSubjects(data, request, rows);
  return rows;
}

}  // namespace

LifeRows lifeRowsOf(const frame::Frame& data, const LifeRequest& request) {
  const bool atOnce = mayBePooledAtOnce(data, request);
  if (atOnce) {
    if (const std::optional<PooledRows> pooled = pooledRows(data, request)) {
      try {
        return read(pooled->data, request, &pooled->cells);
      } catch (const Refusal& refused) {
        throw refused.of(pooled->cells.firstRow);
      }
    }
  }
  LifeRows rows = read(data, request, nullptr);
  const bool plain = !rows.sampling() && !rows.clustered() && rows.wholeWeights;
  if (atOnce || !plain || !mayBePooled(request, rows.event.size()) || !poolRows(rows)) {
    ownCells(rows);
  }
  return rows;
}

engine::Rows LifeRows::rows() const {
  engine::Rows rows;
  rows.weight = weight.numbers;
  rows.weightKind = weightsAre;
  rows.cluster = clusters.codes;
  rows.clusters = clusters.labels.size();
  return rows;
}

engine::Rows LifeRows::testRows() const {
  engine::Rows rows;
  rows.weight = weight.numbers;
  rows.weightKind = weightsAre;
  if (stratified()) {
    rows.stratum = strata.codes;
    rows.strata = strata.labels.size();
  }
  return rows;
}

report::Fact LifeRows::eventFact(const std::string& column) const {
  report::Fact fact{
      report::key::kEventLabels, "Event where " + column + " is", report::Kind::kLabel, {}};
  if (!eventLabels.empty()) fact.value = text::joined(eventLabels);
  return fact;
}

void LifeRows::noteWeights(std::vector<report::Note>& notes) const {
  if (!sampling() && !wholeWeights) {
    notes.push_back(
        {"fractionalWeights", "weights are not all whole numbers; they are taken as frequencies"});
  }
  noteZeroWeights(zeroWeights, notes);
}

}  // namespace survmeth::analysis
