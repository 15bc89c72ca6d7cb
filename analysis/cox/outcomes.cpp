// What a fit says of its columns, as refusals and notes.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "analysis/cox/run.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;
using engine::Outcome;
using engine::Refusal;
using engine::Role;
using text::quote;

std::string listed(const std::vector<std::string>& names, std::size_t from = 0) {
  std::string list;
  for (std::size_t i = from; i < names.size(); ++i) {
    if (i > from) list += i + 1 < names.size() ? ", " : " and ";
    list += quote(names[i]);
  }
  return list;
}

std::string withinStrata(const CoxAnswer& answer) {
  return answer.strata.size() > 1 ? " within the strata" : "";
}
std::string withinRiskSets(const CoxAnswer& answer, bool cases) {
  if (cases) return " within every set";
  return std::string(" within every risk set") +
         (answer.strata.size() > 1 ? " of any stratum" : "");
}

void noteTermsWithoutColumns(CoxAnswer& answer) {
  for (std::size_t term = 0; term < answer.terms.size(); ++term) {
    const bool has = std::any_of(answer.columns.begin(), answer.columns.end(),
                                 [term](const CoxColumn& column) { return column.term == term; });
    if (has) continue;
    answer.notes.push_back(
        {"constant",
         "the covariate " + quote(answer.terms[term]) + " has one level and no coefficient",
         {answer.terms[term]}});
  }
}

// Whether the determinant's penalty has a definition for the request.
bool offersFirth(const CoxRequest& request, const CoxAnswer& answer) {
  return !request.cases && answer.fit.robustCovariance.size() == 0 &&
         (request.ties == cox::Ties::kEfron || request.ties == cox::Ties::kBreslow);
}

std::string separation(const CoxAnswer& answer, const Outcome& outcome, bool cases, bool offered) {
  constexpr std::size_t kShown = 5;
  const bool one = outcome.names.size() == 1;
  std::string text = std::string(one ? "the coefficient of " : "the coefficients of ") +
                     listed(outcome.names) + (one ? " is" : " are") + " infinite: " +
                     (cases ? "in every set the cases" : "at every event time the rows that fail") +
                     " have the largest value of " + (one ? "it" : "a combination of them") +
                     (cases ? "" : " among those at risk") + ", or the smallest";
  if (offered) text += "; --firth gives a finite estimate";
  if (outcome.strata.empty() || cases) return text;
  std::vector<std::string> names;
  for (const std::uint32_t code : outcome.strata) {
    if (names.size() < kShown) names.push_back(answer.strata[code]);
  }
  text += "; rows differ in stratum " + listed(names);
  if (outcome.strata.size() > kShown) {
    text += " and in " + text::grouped(outcome.strata.size() - kShown) + " more";
  }
  return text;
}

}  // namespace

void requireCoxAnswer(const CoxRequest& request, const CoxInput& input, const CoxAnswer& answer) {
  const auto none = [](const std::string& what, const std::string& expected) {
    return Refusal(Role::kRequest, Refusal::kNone, what, Refusal::kNone, expected);
  };
  bool anyLeft = false;
  for (const cox::Column column : answer.fit.column) {
    anyLeft = anyLeft || column != cox::Column::kAliased;
  }
  for (const Outcome& outcome : answer.fit.outcomes) {
    if (outcome.code == "noEvents") {
      throw Refusal(Role::kEvent, Refusal::kNone, "every row with an event has weight 0",
                    Refusal::kNone, "at least one with a weight above 0");
    }
    if (outcome.code == "notConverged") {
      throw none("the fit does not converge: " + outcome.text, "");
    }
    const bool dependent = outcome.code == "collinear" && outcome.names.size() > 1;
    if (dependent && request.aliased == CoxAliased::kRefuse) {
      throw none("the covariate " + quote(outcome.names[0]) + " follows exactly from " +
                     listed(outcome.names, 1) + withinStrata(answer),
                 "a model without one of them, or --aliased drop");
    }
  }
  if (anyLeft || answer.leftOut > 0) return;
  const std::vector<std::string>& names = input.model.design.design.names;
  throw none(names.empty()
                 ? "no covariate has more than one level"
                 : "no covariate varies: " + listed(names) + (names.size() == 1 ? " is" : " are") +
                       " constant" + withinRiskSets(answer, request.cases),
             request.cases ? "one at least that varies within a set"
                           : "one at least that varies among the rows at risk");
}

void noteCoxOutcomes(const CoxRequest& request, const CoxInput& input, CoxAnswer& answer) {
  if (!input.model.note.empty()) {
    answer.notes.insert(answer.notes.begin(), {"eventCoding", input.model.note, {}});
  }
  bool separated = false;
  for (const Outcome& outcome : answer.fit.outcomes) {
    separated = separated || outcome.code == "separated";
    report::Note note{outcome.code, outcome.text, outcome.names};
    if (outcome.code == "separated")
      note.text = separation(answer, outcome, request.cases, offersFirth(request, answer));
    if (outcome.code == "collinear") {
      const std::string name = "the covariate " + quote(outcome.names[0]);
      if (outcome.names.size() > 1) {
        note.text = name + " follows exactly from " + listed(outcome.names, 1) +
                    withinStrata(answer) + " and has no coefficient";
      } else if (!separated) {
        note.code = "constant";
        note.text = name + " is constant" + withinRiskSets(answer, request.cases) +
                    " and has no coefficient";
      }
    }
    answer.notes.push_back(std::move(note));
  }
  noteTermsWithoutColumns(answer);
  std::size_t parameters = answer.leftOut;
  for (const cox::Column column : answer.fit.column) {
    parameters += column != cox::Column::kAliased ? 1 : 0;
  }
  if (parameters > answer.fit.events) {
    answer.notes.push_back({"moreCovariatesThanEvents",
                            "there are more covariates than events (" + text::grouped(parameters) +
                                " and " + text::grouped(answer.fit.events) +
                                "): the estimates are unreliable",
                            {}});
  }
}

}  // namespace survmeth::analysis
