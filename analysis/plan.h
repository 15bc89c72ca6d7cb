// Plans: analyses of files written down as JSON, so that they can be repeated. What an analysis
// takes comes from its declaration. docs/plans.md has the form, docs/plan.schema.json its schema.
//
//     {"analyses": [{"analysis": "life", "data": "lung.csv",
//                    "options": {"time": "time", "event": "status", "group": "sex"}}]}
#ifndef ANALYSIS_PLAN_H_
#define ANALYSIS_PLAN_H_

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/declaration.h"
#include "analysis/jsonTree.h"
#include "analysis/reading.h"

namespace survmeth::analysis {

inline constexpr const char* kPlanSchema = "survmeth-plan/1";

struct Planned {
  const Declaration* declaration = nullptr;
  std::shared_ptr<void> request;  // checked
  Reading reading;
  std::string name;  // as the plan has it, else "2-cox": unique, of letters, digits, '-' and '_'
  std::string data;  // the file, as the plan has it

  std::string title() const { return "analysis " + name; }
};

struct Plan {
  std::string title;              // of all its reports; may be empty
  std::vector<Planned> analyses;  // at least one
};

// Throws JsonError: what is no plan, an unknown member, analysis or option with the nearest names,
// a value of another type or out of range, options that do not go together or that lack.
Plan planOf(const JsonNode& root);
inline Plan readPlan(std::string_view text) { return planOf(parseJson(text)); }

// Sets the option that a member names, of the analysis or of how files are read; false where there is
// none. `what` is what it is, for messages. Throws JsonError, BadOption.
bool setOption(const Declaration& declaration, void* request, Reading& reading,
               const JsonMember& member, const std::string& what);

// The value of an option as JSON has it: true or false, a number, a text, a list of numbers or of
// texts. `what` is what it is, for messages. Throws JsonError for anything else.
Setting settingOf(const JsonNode& value, const std::string& what);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_PLAN_H_
