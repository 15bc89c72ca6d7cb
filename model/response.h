// What a regression takes, from a formula and a frame: response, rows and design, with the storage
// behind them.
//
//     const Formula formula = parseFormula(text);
//     const frame::Frame data = frame::selectRows(all, completeRows(formula, all));
//     const ModelData model = modelData(Coding::learn(formula, data), data);
//     fit(model.response(), model.rows(), model.design.design);
#ifndef MODEL_RESPONSE_H_
#define MODEL_RESPONSE_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "engine/input.h"
#include "frame/evaluate.h"
#include "frame/frame.h"
#include "model/design.h"

namespace survmeth::model {

// The rows in which every part of the formula has a value: times, event, strata and cluster, and
// what Coding::completeRows looks at. Ascending.
// Throws frame::ExpressionError as frame::evaluate
std::vector<std::uint32_t> completeRows(const Formula& formula, const frame::Frame& data);

// Which times of the data are dates: messages give those as dates.
struct DatedTimes {
  bool entry = false, exit = false;
};

// Columns that stand by themselves in the formula are borrowed from the frame, which must outlive
// this.
struct ModelData {
  frame::Values entry, exit;
  std::vector<std::uint32_t> event;    // 0 and 1
  std::vector<double> offset;          // the sum of all offset(); empty without one
  std::vector<std::uint32_t> stratum;  // empty without strata()
  std::vector<std::string> strataNames;
  std::vector<std::uint32_t> cluster;  // empty without cluster()
  std::vector<std::string> clusterNames;
  std::string note;  // what was taken for an event, where that is not plain
  DesignColumns design;

  engine::Response response() const;  // without rows where the formula has no left side
  engine::Rows rows() const;          // without weights: a formula says none
  DatedTimes dated() const { return {entry.isDate, exit.isDate}; }
};

// In   data          complete rows
//      eventValues   labels of the event column that are events; empty: what model/coding.h takes
//                    for one. An event that is a condition (status == 2) says it by itself.
//      A formula may have times without an event: new data to predict for.
// Out  strata cross the labels of all columns of strata() that occur together, in the order of the
//      labels, the last column's fastest, and are named "site=A, sex=f"
// Throws engine::Refusal with the row: a time, entry or offset that is missing or infinite, an entry
// that is not before its exit, a cell of the other columns that is missing; of the event's role
// besides what yesNoOf() refuses, and eventValues beside a condition
// Cost O(rows x columns + rows log rows)
ModelData modelData(const Coding& coding, const frame::Frame& data,
                    const std::vector<std::string>& eventValues = {});

// Throws engine::Refusal of the entry's role for the first row whose entry is not before its exit.
void requireEntriesBefore(std::span<const double> entry, std::span<const double> exit,
                          DatedTimes dated);

}  // namespace survmeth::model

#endif  // MODEL_RESPONSE_H_
