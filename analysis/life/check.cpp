// Options of survmeth life that do not go together.
#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "analysis/life/request.h"
#include "analysis/option.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

// The first of the options that is given, and needs another.
void requireBeside(std::initializer_list<std::pair<const char*, bool>> given, bool other,
                   const char* name) {
  for (const auto& [option, stands] : given) {
    if (stands && !other) {
      throw BadOption(option, std::string("stands without --") + name + "; expected both or none");
    }
  }
}

// Times as a formula, as a column, or as two columns of dates.
void checkTimes(const LifeRequest& request) {
  const std::pair<const char*, bool> parts[] = {
      {"time", !request.time.empty()},    {"event", !request.event.empty()},
      {"entry", !request.entry.empty()},  {"from", !request.from.empty()},
      {"to", !request.to.empty()},        {"group", !request.group.empty()},
      {"strata", !request.strata.empty()}};
  if (!request.formula.empty()) {
    for (const auto& [name, given] : parts) {
      if (given) {
        throw BadOption(name, "stands beside --formula, which says it; expected one of the two");
      }
    }
    return;
  }
  requireAlone(request.byDates() && !request.time.empty(), "time", "from");
  requireBeside({{"from", request.byDates()}}, !request.to.empty(), "to");
  requireBeside({{"to", !request.to.empty()}}, request.byDates(), "from");
  if (request.time.empty() && !request.byDates()) {
    throw BadOption("time", "is missing; expected COL");
  }
  if (request.event.empty()) throw BadOption("event", "is missing; expected COL");
}

void checkTables(const LifeRequest& request) {
  requireAlone(request.width && !request.bounds.empty(), "width", "bounds");
  const std::string intervals = request.width ? "--width" : "--bounds";
  if (request.table == LifeTable::kKaplanMeier && request.estimate != LifeEstimate::kKaplanMeier) {
    throw BadOption("table", "km is not the table of this --estimate; expected curves");
  }
  if ((request.table == LifeTable::kKaplanMeier || request.table == LifeTable::kCurves) &&
      request.intervals()) {
    throw BadOption("table", std::string(request.table == LifeTable::kCurves ? "curves" : "km") +
                                 " has no intervals; expected actuarial with " + intervals);
  }
  if (request.table == LifeTable::kActuarial && !request.intervals()) {
    throw BadOption("table", "actuarial needs intervals; expected --width or --bounds");
  }
  if (!request.intervals()) return;
  const std::pair<const char*, bool> excluded[] = {{"entry", request.lateEntry()},
                                                   {"cluster", !request.cluster.empty()},
                                                   {"robust", request.robust},
                                                   {"weights-are", request.sampling()}};
  for (const auto& [name, given] : excluded) {
    if (!given) continue;
    throw BadOption(name, "has no place in the actuarial table; expected it without " + intervals);
  }
}

void checkBand(const LifeRequest& request) {
  requireBeside(
      {{"band-from", request.bandFrom.has_value()}, {"band-to", request.bandTo.has_value()}},
      request.band.has_value(), "band");
  if (request.bandFrom && request.bandTo && !(*request.bandFrom < *request.bandTo)) {
    throw BadOption("band-to", "is not after --band-from; expected a later time");
  }
  if (request.band && (request.robust || !request.cluster.empty() || request.sampling())) {
    throw BadOption("band",
                    "rests on model-based variances; expected neither --robust nor --cluster nor "
                    "sampling weights");
  }
}

void checkWeights(const LifeRequest& request) {
  requireAlone(!request.weight.empty() && !request.weights.empty(), "weight", "weights");
  if (request.weightsAre == engine::WeightKind::kSampling && request.weightColumn().empty()) {
    throw BadOption("weights-are", "sampling stands without --weights; expected both or none");
  }
}

void checkComparisons(const LifeRequest& request) {
  const std::vector<engine::curves::Weighting> asked = request.weightings();
  for (std::size_t i = 0; i < asked.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (asked[i].kind == asked[j].kind && asked[i].p == asked[j].p && asked[i].q == asked[j].q &&
          request.tests.size() == asked.size()) {
        throw BadOption("tests", text::quote(request.tests[i]) +
                                     " stands there twice; expected each test once");
      }
    }
  }
  request.combinationWeightings();
  request.permutationsAsked();
  requireBeside({{"seed", request.seed.has_value()}}, !request.permutations.empty(),
                "permutations");
  requireBeside({{"difference", request.difference.has_value()}}, !request.at.empty(), "at");
}

}  // namespace

void checkLife(const LifeRequest& request) {
  checkTimes(request);
  checkWeights(request);
  checkTables(request);
  checkBand(request);
  checkComparisons(request);
  for (const std::string& row : request.riskRows) {
    const std::vector<std::string>& rows = lifeRiskRows();
    if (std::find(rows.begin(), rows.end(), row) != rows.end()) continue;
    throw BadOption("risk-rows", text::quote(row) + " is no row of the table; expected some of " +
                                     text::nearestFirst(row, rows));
  }
}

}  // namespace survmeth::analysis
