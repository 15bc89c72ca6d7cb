// Rows of a frame as survmeth life reads them.
#ifndef ANALYSIS_LIFE_ROWS_H_
#define ANALYSIS_LIFE_ROWS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "analysis/life/cells.h"
#include "analysis/life/request.h"
#include "engine/curves/sample.h"
#include "engine/input.h"
#include "frame/frame.h"
#include "frame/labels.h"
#include "model/response.h"
#include "report/report.h"

namespace survmeth::analysis {

// One for each row of the data, or, where subjects have several, for each stretch of time in which
// a subject is at risk in one group and one stratum.
struct LifeRows {
  frame::Column time, entry, weight;     // the last two empty where there are none
  std::vector<std::uint32_t> event;      // 0 or 1
  std::vector<std::string> eventLabels;  // that are events
  std::string eventNote;                 // what was taken for an event, where that is not plain
  frame::Labels groups;                  // "all" where there is no column; counts are rows of data
  frame::Labels strata, clusters;        // no codes where there are none
  engine::WeightKind weightsAre = engine::WeightKind::kFrequencies;
  bool clustersAreSubjects = false;
  std::optional<report::Note> gaps;   // of subjects
  std::vector<std::uint32_t> source;  // rows of the data, where these are others

  engine::Response response() const { return {entry.numbers, time.numbers, event, 1}; }
  model::DatedTimes dated() const { return {entry.isDate, time.isDate}; }
  engine::Rows rows() const;      // with weights and clusters
  engine::Rows testRows() const;  // with weights and strata
  engine::curves::Groups groupCodes() const { return {groups.codes, groups.labels.size()}; }
  bool several() const { return groups.labels.size() > 1; }
  bool stratified() const { return !strata.codes.empty(); }
  bool clustered() const { return !clusters.codes.empty(); }
  bool sampling() const { return weightsAre == engine::WeightKind::kSampling; }

  bool wholeWeights = true;     // every weight a whole number; so are no weights
  std::size_t zeroWeights = 0;  // rows of weight 0

  // "1, yes"; does not exist where no row is an event.
  report::Fact eventFact(const std::string& column) const;
  // Frequencies that are not whole, and weights of 0.
  void noteWeights(std::vector<report::Note>& notes) const;
};

// Throws engine::Refusal of events that mean neither, of dates that are none or in the wrong order,
// of a group that is empty or that only the weights empty, of weights whose sum is not finite, of
// subjects at risk twice at one time. Cost O(n log n) with subjects, else O(n).
//
// In   request  withColumns
LifeRows lifeRowsOf(const frame::Frame& data, const LifeRequest& request);

// Joins rows of one subject that follow one another without an event and differ in nothing else:
// where follow-up was split says nothing.
void joinRows(LifeRows& rows, const std::vector<std::uint32_t>& subject);

// The first row of each cell of rows that differ in nothing, and how many are in each.
struct PooledRows {
  frame::Frame data;
  Cells cells;
};

// Of the data of a request without weights and entries, whose times are given; nothing where the
// cells are more than a quarter of the rows.
//
// Cost O(n), memory for the rows that stay
std::optional<PooledRows> pooledRows(const frame::Frame& data, const LifeRequest& request);

// Makes one row with the sum of their weights of rows that differ in nothing else. Weights are
// frequencies, whole ones, and nobody enters late. False, and nothing changes, where there would be
// more than a quarter of the rows.
//
// Cost O(n), memory for the rows that stay
bool poolRows(LifeRows& rows);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_ROWS_H_
