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
std::string mediansInWords(const LifeAnswer& answer) {
  constexpr std::size_t kMostGroups = 4;
  const std::vector<std::string>& labels = answer.labels();
  if (labels.size() > kMostGroups) return {};
  const auto words = [](double value, const char* none) {
    return std::isnan(value) ? none : report::brief(value);
  };
  std::string said;
  std::string limits = report::confidence(answer.request.alpha) + " limits ";  // said once
  for (std::size_t g = 0; g < labels.size(); ++g) {
    const engine::curves::Quantile& median = answer.summaries[g].median;
    said += g > 0 ? ", " : " Median time to it: ";
    if (!answer.request.group.empty()) said += labels[g] + " ";
    said += words(median.time, "not reached");
    if (std::isnan(median.lower) && std::isnan(median.upper)) continue;
    said += " (" + std::exchange(limits, "") + words(median.lower, "no lower limit") + " to " +
            words(median.upper, "no upper limit") + ")";
  }
  return said + ".";
}

}  // namespace

report::Report describeLife(const LifeAnswer& answer, const LifeRequest&) {
  const std::string group = text::joined(answer.request.group);
  report::Report report;
  report.title = group.empty() ? "Survival" : "Survival by " + group;
  report.summary = report::brief(answer.events) + " of " + report::brief(answer.n) +
                   " had the event." + mediansInWords(answer);
  if (answer.rows.several() && answer.comparison.exists()) {
    const LifeTest& first = answer.comparison.tests.front();
    report.summary += " " + first.name + " test of equal survival in " +
                      counted(answer.curves.size(), "group", "groups") + ": " +
                      report::pValueInWords(first.test.pValue) + ".";
  }
  report.facts = {answer.rows.eventFact(answer.request.event),
                  report::levelFact(answer.request.alpha)};
  addLifeMethods(answer, report);
  addLifeNotes(answer, report);
  addLifeTables(answer, report);
  addLifeComparison(answer, report);
  addLifeReadings(answer, report);
  addLifeMeans(answer, report);
  addLifeRates(answer, report);
  return report;
}

}  // namespace survmeth::analysis
