#include "analysis/eventTables.h"

#include <utility>
#include <vector>

#include "report/build.h"
#include "report/keys.h"

namespace survmeth::analysis {

report::Table statusTable(const model::EventTypes& event, const std::string& heading) {
  namespace key = report::key;
  std::vector<std::string> censored(event.status.labels.size(), "no");
  if (event.censored) censored[*event.censored] = "yes";
  return report::tableOf(
      "statuses", "Rows by status",
      {report::labelColumn(key::kStatus, heading, event.status.labels),
       report::labelColumn(key::kCensorCode, "censored", std::move(censored)),
       report::numberColumn(key::kRows, "rows", report::Kind::kCount, event.status.counts)});
}

}  // namespace survmeth::analysis
