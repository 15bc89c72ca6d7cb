// The report for programs: one JSON object, whose layout docs/report.md describes and
// docs/report.schema.json holds. The same report gives the same bytes on every machine.
#ifndef REPORT_JSON_H_
#define REPORT_JSON_H_

#include <span>
#include <string>

#include "report/report.h"

namespace survmeth::report {

// The layout's name; a change that readers would notice gives it another number.
inline constexpr const char* kJsonSchema = "survmeth-report/1";
inline constexpr const char* kJsonSchemaOfSeveral = "survmeth-reports/1";

struct JsonOptions {
  std::string program = "survmeth";
  std::string version = "";
  bool figures = false;  // the series of the figures too
};

// UTF-8, members in a fixed order, ended by a line end. Every number has every digit; null stands
// for what does not exist and for infinities.
// Cost O(cells), no memory beside the text's
std::string toJson(const Report& report, const JsonOptions& options);

// Several, each as it stands alone but for the indent: {"schema", "program", "version", "title",
// "reports": [...]}.
std::string toJson(std::span<const Report> reports, const std::string& title,
                   const JsonOptions& options);

}  // namespace survmeth::report

#endif  // REPORT_JSON_H_
