#include "analysis/estimateTable.h"

#include <utility>

#include "report/build.h"

namespace survmeth::analysis {

report::Table estimateTable(const char* id, std::string caption, const char* nameKey, double alpha,
                            const std::vector<NamedEstimate>& rows, Errors errors) {
  namespace key = report::key;
  using report::Kind;
  auto table = report::rowsOf(id, std::move(caption), rows);
  table.column(nameKey, "", Kind::kLabel, &NamedEstimate::name)
      .column(key::kEstimate, "estimate", Kind::kEstimate, &NamedEstimate::value);
  if (errors == Errors::kShown) {
    table.column(key::kStandardError, "std error", Kind::kEstimate, &NamedEstimate::standardError);
  }
  return table.limits(report::confidence(alpha), Kind::kEstimate, &NamedEstimate::value).table();
}

}  // namespace survmeth::analysis
