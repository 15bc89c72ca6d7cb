#include "analysis/life/describe.h"

#include <cmath>
#include <cstddef>
#include <string>
#include <utility>

#include "analysis/limits.h"
#include "report/build.h"
#include "report/keys.h"
#include "report/numbers.h"
#include "text/lists.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

using text::counted;
using text::quote;

// " Median time to it: A 23 (95% limits 13 to no upper limit), B 8 (4 to 11)."; nothing where there
// are more groups than a sentence holds.
std::string mediansInWords(const LifeAnswer& answer, const LifeRequest& request) {
  constexpr std::size_t kMostGroups = 4;
  const std::vector<std::string>& labels = answer.rows.groups.labels;
  if (labels.size() > kMostGroups) return {};
  const auto words = [](double value, const char* none) {
    return std::isnan(value) ? none : report::brief(value);
  };
  std::string said;
  std::string limits = report::confidence(request.alpha) + " limits ";  // said once
  for (std::size_t g = 0; g < labels.size(); ++g) {
    const engine::curves::Quantile& median = answer.medians[g];
    said += g > 0 ? ", " : " Median time to it: ";
    if (!request.group.empty()) said += labels[g] + " ";
    said += words(median.time, "not reached");
    if (std::isnan(median.lower) && std::isnan(median.upper)) continue;
    said += " (" + std::exchange(limits, "") + words(median.lower, "no lower limit") + " to " +
            words(median.upper, "no upper limit") + ")";
  }
  return said + ".";
}

}  // namespace

std::vector<report::Method> lifeMethods(const LifeAnswer& answer, const LifeRequest& request) {
  std::vector<report::Method> methods = {
      {"curve: product-limit (Kaplan-Meier); standard error: Greenwood",
       "Kaplan & Meier, JASA 53 (1958) 457-481"},
      {"limits: " + report::confidence(request.alpha) + " " + limitsName(request.limits) +
           " from the Greenwood sum",
       ""},
      {"median: where the curve crosses 1/2, the middle where it runs at 1/2; limits: where the "
       "curve's limits do",
       "Brookmeyer & Crowley, Biometrics 38 (1982) 29-41"}};
  if (answer.rows.several()) {
    methods.push_back(
        {"tests: weighted log-rank family with hypergeometric variance; weight 1 (log-rank), "
         "number at risk (Gehan-Breslow), its square root (Tarone-Ware)",
         "Tarone & Ware, Biometrika 64 (1977) 156-160"});
  }
  if (!answer.intervals.empty()) {
    methods.push_back(
        {"actuarial table: intervals [from, to), the censored at risk for half of theirs; "
         "standard errors: Greenwood, Gehan",
         "Cutler & Ederer, J Chron Dis 8 (1958) 699-712; Gehan, J Chron Dis 21 (1969) 629-644"});
  }
  if (!request.weight.empty()) methods.push_back({"weights: frequencies of the rows", ""});
  return methods;
}

std::vector<report::Note> lifeNotes(const LifeAnswer& answer) {
  std::vector<report::Note> notes;
  const auto add = [&notes](const char* code, std::string text) {
    notes.push_back({code, std::move(text)});
  };
  if (!answer.rows.eventNote.empty()) add("eventCoding", answer.rows.eventNote);
  if (!(answer.events > 0)) {
    add("noEvents", "no row is an event: the curves stay at 1 and there is no median");
  }
  if (!(answer.censored > 0)) add("noneCensored", "every row is an event, none is censored");
  answer.rows.noteWeights(notes);
  if (!answer.rows.several()) return notes;
  if (!answer.comparison.exists()) {
    add("noTest", "no comparison test exists: " + answer.comparison.reason);
    return notes;
  }
  for (std::size_t g = 0; g < answer.curves.size(); ++g) {
    const std::string& label = answer.rows.groups.labels[g];
    if (answer.comparison.included[g]) continue;
    add("groupNotIncluded",
        "the group " + quote(label) +
            " has no part in the tests: nobody in it is at risk at an event time");
    notes.back().names = {label};
  }
  return notes;
}

report::Report describeLife(const LifeAnswer& answer, const LifeRequest& request) {
  const std::string group = text::joined(request.group);
  report::Report report;
  report.title = group.empty() ? "Survival" : "Survival by " + group;
  report.summary = report::brief(answer.events) + " of " + report::brief(answer.n) +
                   " had the event." + mediansInWords(answer, request);
  if (answer.rows.several() && answer.comparison.exists()) {
    const LifeTest& first = answer.comparison.tests.front();
    report.summary += " " + first.name + " test of equal survival in " +
                      counted(answer.curves.size(), "group", "groups") + ": " +
                      report::pValueInWords(first.test.pValue) + ".";
  }
  report.facts = {answer.rows.eventFact(request.event), report::levelFact(request.alpha)};
  addLifeTables(answer, request, report);
  report.methods = lifeMethods(answer, request);
  report.notes = lifeNotes(answer);
  addLifeReadings(answer, request, report);
  return report;
}

}  // namespace survmeth::analysis
