// The request, its units and tests, and the formula that says its columns.
#include "analysis/life/request.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "analysis/option.h"
#include "frame/expression.h"
#include "model/formula.h"
#include "text/charconv.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;
using curves::Weighting;
using frame::Cells;
using frame::Expression;
using Kind = curves::Weighting::Kind;

const std::vector<std::pair<std::string, Kind>>& testWords() {
  static const std::vector<std::pair<std::string, Kind>> kWords = {
      {"logrank", Kind::kLogRank},
      {"gehan-breslow", Kind::kGehanBreslow},
      {"tarone-ware", Kind::kTaroneWare},
      {"peto-peto", Kind::kPetoPeto},
      {"modified-peto-peto", Kind::kModifiedPetoPeto}};
  return kWords;
}

// "fh:1:0.5" after its colon at `begin`.
std::optional<double> powerAt(const std::string& word, std::size_t begin, std::size_t end) {
  double power = 0;
  const auto read = text::from_chars(word.data() + begin, word.data() + end, power);
  if (read.ec != std::errc() || read.ptr != word.data() + end || !(power >= 0)) return {};
  return power;
}

Weighting weightingOf(const std::string& word, const char* option, const char* byItself) {
  for (const auto& [name, kind] : testWords()) {
    if (word == name) return {kind};
  }
  const std::size_t colon = word.find(':', 3);
  if (word.starts_with("fh:") && colon != std::string::npos) {
    const auto p = powerAt(word, 3, colon), q = powerAt(word, colon + 1, word.size());
    if (p && q) return {Kind::kFlemingHarrington, *p, *q};
  }
  throw BadOption(option, text::quote(word) +
                              " is no test; expected some of logrank, gehan-breslow, tarone-ware, "
                              "peto-peto, modified-peto-peto, fh:P:Q, or " +
                              byItself + " by itself");
}

// A column's name; expressions are not evaluated.
std::string columnOf(const Expression& expression) {
  if (expression.kind == Expression::Kind::kName) return expression.text;
  throw BadOption("formula", text::quote(frame::deparse(expression)) +
                                 " is no column; expected columns alone, as in Surv(time, status) "
                                 "~ group + strata(site)");
}

void takeFormula(LifeRequest& request) {
  const model::Formula formula = model::parseFormula(request.formula);
  if (!formula.exit || !formula.event) {
    throw BadOption("formula",
                    "there is no response before ~; expected Surv(time, status) ~ group");
  }
  if (!formula.offsets.empty()) {
    throw BadOption("formula", "curves take no offset; expected groups and strata alone");
  }
  request.time = columnOf(*formula.exit);
  request.event = columnOf(*formula.event);
  if (formula.entry) request.entry = columnOf(*formula.entry);
  for (const model::Variable& variable : formula.variables) {
    const bool factor = variable.kind == model::VariableKind::kFactor;
    request.group.push_back(
        columnOf(factor ? variable.expression.arguments.front() : variable.expression));
  }
  for (const Expression& each : formula.strata) request.strata.push_back(columnOf(each));
  if (formula.cluster) {
    if (!request.cluster.empty()) {
      throw BadOption("cluster", "stands beside cluster() in --formula; expected one of the two");
    }
    request.cluster = columnOf(*formula.cluster);
  }
}

}  // namespace

curves::Options LifeRequest::curves() const {
  curves::Options options;
  if (estimate != LifeEstimate::kKaplanMeier) options.survival = curves::Survival::kExponential;
  if (estimate == LifeEstimate::kFlemingHarrington) {
    options.ties = curves::HazardTies::kFlemingHarrington;
  }
  options.scale = limits;
  options.lowerLimit = lowerLimit;
  options.level = 1 - alpha;
  options.robust = robust;
  return options;
}

std::vector<Weighting> LifeRequest::weightings() const {
  if (tests.empty()) return {{Kind::kLogRank}, {Kind::kGehanBreslow}, {Kind::kTaroneWare}};
  std::vector<Weighting> made;
  if (tests.size() == 1 && tests.front() == "all") {
    for (const auto& [word, kind] : testWords()) made.push_back({kind});
    made.push_back({Kind::kFlemingHarrington, 0, 1});
    return made;
  }
  for (const std::string& word : tests) made.push_back(weightingOf(word, "tests", "all"));
  return made;
}

std::vector<Weighting> LifeRequest::combinationWeightings() const {
  if (combination.size() == 1 && combination.front() == "usual") {
    const auto usual = curves::usualCombination();
    return {usual.begin(), usual.end()};
  }
  constexpr std::size_t kMost = 4;
  if (combination.size() > kMost) {
    throw BadOption("combination", "has " + text::counted(combination.size(), "test", "tests") +
                                       "; expected usual, or up to 4 as --tests names them");
  }
  std::vector<Weighting> made;
  for (const std::string& word : combination)
    made.push_back(weightingOf(word, "combination", "usual"));
  return made;
}

curves::Permutations LifeRequest::permutationsAsked() const {
  curves::Permutations asked;
  asked.level = 1 - alpha;
  if (seed) asked.seed = static_cast<std::uint64_t>(*seed);
  if (permutations.empty()) return asked;
  asked.exact = permutations == "exact";
  if (asked.exact) return asked;
  constexpr std::uint64_t kMost = 1'000'000'000;
  const char* end = permutations.data() + permutations.size();
  const auto read = std::from_chars(permutations.data(), end, asked.count);
  if (read.ec != std::errc() || read.ptr != end || asked.count == 0 || asked.count > kMost) {
    throw BadOption("permutations", text::quote(permutations) +
                                        " is no number of permutations; expected a whole number "
                                        "from 1 to 1,000,000,000, or exact");
  }
  return asked;
}

LifeRequest withColumns(const LifeRequest& request) {
  LifeRequest made = request;
  if (!request.formula.empty()) takeFormula(made);
  if (request.byDates()) made.time = nameOf(request.unit);
  return made;
}

void wantLifeColumns(const LifeRequest& request, const std::vector<std::string>&,
                     std::vector<frame::Wanted>& wanted) {
  if (request.formula.empty()) return;
  const LifeRequest named = withColumns(request);
  const auto want = [&wanted](const std::string& name, Cells cells) -> frame::Wanted& {
    frame::Wanted& made = wanted.emplace_back();
    made.name = name;
    made.cells = cells;
    return made;
  };
  want(named.time, Cells::kNumbers).least = 0;
  want(named.event, Cells::kText).named = request.eventValues;
  if (!named.entry.empty()) want(named.entry, Cells::kNumbers);
  for (const std::string& each : named.group) want(each, Cells::kText);
  for (const std::string& each : named.strata) want(each, Cells::kText);
  if (request.cluster.empty() && !named.cluster.empty()) want(named.cluster, Cells::kText);
}

double daysOf(LifeUnit unit) {
  switch (unit) {
    case LifeUnit::kDays:
      return 1;
    case LifeUnit::kWeeks:
      return 7;
    case LifeUnit::kMonths:
      return 365.25 / 12;
    case LifeUnit::kYears:
      break;
  }
  return 365.25;
}

const char* nameOf(LifeUnit unit) {
  switch (unit) {
    case LifeUnit::kDays:
      return "days";
    case LifeUnit::kWeeks:
      return "weeks";
    case LifeUnit::kMonths:
      return "months";
    case LifeUnit::kYears:
      break;
  }
  return "years";
}

const std::vector<std::string>& lifeRiskRows() {
  static const std::vector<std::string> kRows = {"at-risk", "events", "cumulative-events",
                                                 "censored"};
  return kRows;
}

}  // namespace survmeth::analysis
