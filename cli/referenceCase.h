// A case of the self-test: a plan, and what another program or a published table says of its
// results. docs/selftest.md has the form.
#ifndef CLI_REFERENCE_CASE_H_
#define CLI_REFERENCE_CASE_H_

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/plan.h"

namespace cli {

// One number or text of a report: a fact, or the cell of a table where the row's columns hold what
// is said.
struct Quantity {
  std::string analysis;  // its name in the plan
  std::string fact;
  std::string table, column;
  std::vector<std::pair<std::string, survmeth::report::Setting>> row;
  // A number, a text, or nothing: the quantity does not exist.
  std::variant<std::monostate, double, std::string> expected;
  // Numbers may differ by so much of the expected one; where that is 0, by so much.
  double tolerance = 0;
  std::string source;

  std::string name() const;  // "tests.chiSquare (test: Log-rank)"
};

struct ReferenceCase {
  std::string name;  // of the file, without .json
  std::string file;
  std::string title, software;
  survmeth::analysis::Plan plan;
  std::vector<Quantity> quantities;
};

// Throws Problem with file, line and column.
ReferenceCase readReferenceCase(const std::string& file);

struct Comparison {
  std::string expected, obtained, difference;  // "-" where there is none
  bool agrees = false;
};

// Of the quantity in the reports of the case's plan; one that is not there does not agree.
Comparison compare(const ReferenceCase& reference, const Quantity& quantity,
                   const std::vector<survmeth::report::Report>& reports);
// Where the plan could not be carried out.
Comparison notObtained(const Quantity& quantity);

}  // namespace cli

#endif  // CLI_REFERENCE_CASE_H_
