// Gray's test: what survmeth gray says, and its part of survmeth incidence.
#include <string>
#include <utility>

#include "analysis/eventTables.h"
#include "analysis/incidence/describe.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/lists.h"
#include "text/words.h"

namespace survmeth::analysis {

namespace key = report::key;
using report::Kind;
using text::quote;

report::Table grayTable(const IncidenceAnswer& answer) {
  const auto test = [](const IncidenceOfType& type) { return *type.test; };
  report::Table table = report::rowsOf("tests", "Equal cumulative incidence?", answer.types)
                            .column(key::kEvent, "event", Kind::kLabel, &IncidenceOfType::label)
                            .test(test)
                            .table();
  if (answer.types.empty()) table.remarks = {"No test exists: no row is an event."};
  for (const IncidenceOfType& type : answer.types) {
    if (type.test->reason.empty()) continue;
    table.remarks.push_back("No test of event " + quote(type.label) +
                            " exists: " + type.test->reason + ".");
  }
  return table;
}

void noteGray(const IncidenceAnswer& answer, report::Report& report) {
  const auto add = [&report](const char* code, const std::string& text,
                             std::vector<std::string> names) {
    report.notes.push_back({code, text, std::move(names)});
  };
  for (const IncidenceOfType& type : answer.types) {
    if (!type.test->reason.empty()) {
      add("noTest", "no test of event " + quote(type.label) + " exists: " + type.test->reason,
          {type.label});
      continue;
    }
    for (std::size_t g = 0; g < answer.group.labels.size(); ++g) {
      const std::string& group = answer.group.labels[g];
      if (type.test->included[g]) continue;
      add("groupNotIncluded",
          "the group " + quote(group) + " has no part in the test of event " + quote(type.label) +
              ": nobody in it is at risk at such an event",
          {type.label, group});
    }
  }
}

report::Method grayMethod(const IncidenceRequest& request) {
  return {"test: Gray's K-sample test of equal cumulative incidence, " +
              (request.rho == 0 ? std::string("all times weighed alike")
                                : "weight (1 - pooled incidence)^" + report::brief(request.rho)) +
              "; other types compete" +
              (request.strata.empty() ? "" : "; scores summed over strata of " + request.strata),
          "Gray, Annals of Statistics 16 (1988) 1141-1154"};
}

report::Report describeGray(const IncidenceAnswer& answer, const IncidenceRequest& request) {
  const std::string group = text::joined(request.group);
  report::Report report;
  report.title = "Gray's test by " + group;
  report.summary = "Is the cumulative incidence of each type of event the same in " +
                   text::counted(answer.group.labels.size(), "group", "groups") + " of " + group +
                   "?";
  for (const IncidenceOfType& type : answer.types) {
    if (!type.test->reason.empty()) continue;
    report.summary += " " + type.label + ": " + report::pValueInWords(type.test->pValue) + ".";
  }
  report.facts = {censorFact(answer.event)};
  report.tables = {groupStatusTable(answer.group, answer.event, group, request.status),
                   statusTable(answer.event, request.status), grayTable(answer)};
  report.methods = {grayMethod(request)};
  if (!answer.event.censored) report.notes.push_back({"noneCensored", "no row is censored"});
  if (answer.types.empty()) {
    report.notes.push_back({"noEvents", "no row is an event: there is nothing to test"});
  } else if (!answer.event.competing()) {
    report.notes.push_back(
        {"oneEventType", "there is only one type of event: nothing competes with it"});
  }
  noteGray(answer, report);
  return report;
}

}  // namespace survmeth::analysis
