// survmeth run: the analyses of a plan, one report.
#ifndef CLI_RUN_H_
#define CLI_RUN_H_

#include <string>
#include <vector>

#include "analysis/plan.h"
#include "cli/shell/session.h"

namespace cli {

// Adds the arguments of the command to `app`.
Run addRun(CLI::App& app);

// The whole of a text file, "-" for standard input. Throws Problem.
std::string contentsOf(const std::string& file);

// A path of a plan: as it is where absolute, else beside the file `plan`.
std::string besidePlan(const std::string& plan, const std::string& path);

// The report of each analysis of the plan that came from file `plan`, in their order. Throws a
// Problem that says which analysis it was.
std::vector<survmeth::report::Report> performPlan(const survmeth::analysis::Plan& plan,
                                                  const std::string& file);

}  // namespace cli

#endif  // CLI_RUN_H_
