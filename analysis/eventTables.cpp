#include "analysis/eventTables.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "report/build.h"

namespace survmeth::analysis {

namespace key = report::key;
using report::Kind;

report::Table statusTable(const model::EventTypes& event, const std::string& heading) {
  std::vector<std::string> censored(event.status.labels.size(), "no");
  if (event.censored) censored[*event.censored] = "yes";
  return report::tableOf(
      "statuses", "Rows by status",
      {report::labelColumn(key::kStatus, heading, event.status.labels),
       report::labelColumn(key::kCensorCode, "censored", std::move(censored)),
       report::numberColumn(key::kRows, "rows", Kind::kCount, event.status.counts)});
}

report::Table groupStatusTable(const frame::Labels& groups, const model::EventTypes& event,
                               const std::string& group, const std::string& status) {
  const std::size_t statuses = event.status.labels.size();
  std::vector<std::vector<std::size_t>> counts(statuses,
                                               std::vector<std::size_t>(groups.labels.size()));
  for (std::size_t i = 0; i < groups.codes.size(); ++i) {
    ++counts[event.status.codes[i]][groups.codes[i]];
  }
  report::Table table =
      report::tableOf("groups", "Rows by group and status",
                      {report::labelColumn(key::kGroup, group, groups.labels),
                       report::numberColumn(key::kN, "n", Kind::kCount, groups.counts)});
  for (std::size_t s = 0; s < statuses; ++s) {
    const std::string& label = event.status.labels[s];
    table.columns.push_back(
        report::numberColumn(std::string(key::kStatus) + " " + label,
                             status + " " + label + (event.censored == s ? " (censored)" : ""),
                             Kind::kCount, counts[s]));
  }
  return table;
}

report::Fact censorFact(const model::EventTypes& event) {
  report::Fact fact{key::kCensorCode, "Code of the censored", Kind::kLabel, {}};
  if (event.censored) fact.value = event.status.labels[*event.censored];
  return fact;
}

}  // namespace survmeth::analysis
