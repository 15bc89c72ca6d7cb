#include "model/response.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "frame/date.h"
#include "frame/labels.h"
#include "model/coding.h"
#include "text/words.h"

namespace survmeth::model {
namespace {

using engine::Refusal;
using engine::Role;

// An expression as a column: the column of that name, or its values.
frame::Column columnOf(const Expression& expression, const frame::Frame& data,
                       const std::string& text) {
  if (expression.kind == Expression::Kind::kName) {
    if (const frame::Column* found = data.find(expression.text)) return *found;
  }
  const frame::Values values = frame::evaluate(expression, data, text);
  if (!values.isLogical) {
    return frame::numberColumn(deparse(expression), {values.numbers.begin(), values.numbers.end()});
  }
  std::vector<std::uint32_t> codes;
  for (const double value : values.numbers) {
    codes.push_back(std::isnan(value) ? frame::Column::kMissing : value == 0 ? 0 : 1);
  }
  return frame::labelColumn(deparse(expression), frame::Type::kFactor, std::move(codes),
                            {"FALSE", "TRUE"});
}

void requirePresent(const frame::Column& column, Role role) {
  for (std::size_t i = 0; i < column.rows(); ++i) {
    if (column.isMissing(i)) throw Refusal(role, i, text::quote(column.name) + " is missing");
  }
}

void requireFinite(std::span<const double> numbers, Role role, const std::string& name) {
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (std::isfinite(numbers[i])) continue;
    throw Refusal(role, i,
                  text::quote(name) + (std::isnan(numbers[i]) ? " is missing" : " is infinite"));
  }
}

void takeTimes(ModelData& made, const Formula& formula, const frame::Frame& data) {
  made.exit = frame::evaluate(*formula.exit, data, formula.text);
  requireFinite(made.exit.numbers, Role::kTime, deparse(*formula.exit));
  if (!formula.entry) return;
  made.entry = frame::evaluate(*formula.entry, data, formula.text);
  requireFinite(made.entry.numbers, Role::kEntry, deparse(*formula.entry));
  requireEntriesBefore(made.entry.numbers, made.exit.numbers, made.dated());
}

void takeEvents(ModelData& made, const Formula& formula, const frame::Frame& data,
                const std::vector<std::string>& eventValues) {
  const frame::Column column = columnOf(*formula.event, data, formula.text);
  requirePresent(column, Role::kEvent);
  const bool isColumn = formula.event->kind == Expression::Kind::kName;
  if (!isColumn && column.type == frame::Type::kFactor) {
    if (!eventValues.empty()) {
      throw Refusal(Role::kEvent, Refusal::kNone,
                    text::quote(column.name) + " says by itself what an event is", Refusal::kNone,
                    "a column, or no values of events");
    }
    made.event.assign(column.codes.begin(), column.codes.end());
    return;
  }
  YesNo answers = yesNoOf(column, eventValues, kEvents);
  made.event.assign(answers.rows.begin(), answers.rows.end());
  made.note = std::move(answers.note);
}

void takeRows(ModelData& made, const Formula& formula, const frame::Frame& data) {
  frame::Labels strata;
  for (std::size_t j = 0; j < formula.strata.size(); ++j) {
    const frame::Column column = columnOf(formula.strata[j], data, formula.text);
    requirePresent(column, Role::kStrata);
    frame::cross(strata, frame::labelsOf(column), formula.strataNames[j]);
  }
  made.stratum = std::move(strata.codes);
  made.strataNames = std::move(strata.labels);
  if (formula.cluster) {
    const frame::Column column = columnOf(*formula.cluster, data, formula.text);
    requirePresent(column, Role::kCluster);
    frame::Labels labels = frame::labelsOf(column);
    made.cluster = std::move(labels.codes);
    made.clusterNames = std::move(labels.labels);
  }
  for (const Expression& expression : formula.offsets) {
    const frame::Values values = frame::evaluate(expression, data, formula.text);
    requireFinite(values.numbers, Role::kOffset, deparse(expression));
    made.offset.resize(data.rows, 0.0);
    for (std::size_t i = 0; i < data.rows; ++i) made.offset[i] += values.numbers[i];
  }
}

}  // namespace

std::vector<std::uint32_t> completeRows(const Formula& formula, const frame::Frame& data) {
  std::vector<std::uint32_t> rows = Coding::completeRows(formula, data);
  const auto require = [&](const Expression& expression) {
    const frame::Column column = columnOf(expression, data, formula.text);
    std::erase_if(rows, [&](std::uint32_t row) { return column.isMissing(row); });
  };
  for (const auto* each : {&formula.entry, &formula.exit, &formula.event, &formula.cluster}) {
    if (*each) require(**each);
  }
  for (const Expression& each : formula.strata) require(each);
  return rows;
}

engine::Response ModelData::response() const {
  engine::Response made;
  made.entry = entry.numbers;
  made.exit = exit.numbers;
  made.event = event;
  return made;
}

engine::Rows ModelData::rows() const {
  engine::Rows made;
  made.offset = offset;
  made.stratum = stratum;
  made.strata = std::max<std::size_t>(strataNames.size(), 1);
  made.cluster = cluster;
  made.clusters = clusterNames.size();
  return made;
}

ModelData modelData(const Coding& coding, const frame::Frame& data,
                    const std::vector<std::string>& eventValues) {
  const Formula& formula = coding.formula();
  ModelData made;
  if (formula.exit) takeTimes(made, formula, data);
  if (formula.event) takeEvents(made, formula, data, eventValues);
  takeRows(made, formula, data);
  made.design = coding.design(data);
  return made;
}

void requireEntriesBefore(std::span<const double> entry, std::span<const double> exit,
                          DatedTimes dated) {
  for (std::size_t i = 0; i < entry.size(); ++i) {
    if (entry[i] < exit[i]) continue;
    throw Refusal(Role::kEntry, i,
                  "the entry " + frame::cellText(entry[i], dated.entry) +
                      " is not before the exit " + frame::cellText(exit[i], dated.exit));
  }
}

}  // namespace survmeth::model
