// What an expanded formula reads, and its text.
#include <algorithm>
#include <utility>

#include "model/formula.h"

namespace survmeth::model {

std::vector<std::string> Formula::columns() const {
  std::vector<std::string> names;
  const auto add = [&names](const Expression& expression) {
    for (std::string& name : namesIn(expression)) {
      if (std::find(names.begin(), names.end(), name) == names.end()) {
        names.push_back(std::move(name));
      }
    }
  };
  for (const auto* each : {&entry, &exit, &event}) {
    if (*each) add(**each);
  }
  for (const Variable& variable : variables) add(variable.expression);
  for (const Expression& each : strata) add(each);
  if (cluster) add(*cluster);
  for (const Expression& each : offsets) add(each);
  return names;
}

std::string textOf(const Formula& formula) {
  std::string text;
  const auto list = [](const std::vector<Expression>& expressions) {
    std::string all;
    for (const Expression& each : expressions) all += (all.empty() ? "" : ", ") + deparse(each);
    return all;
  };
  if (formula.exit && formula.event) {
    if (formula.exit->kind == Expression::Kind::kNumber) {
      text = deparse(*formula.event) + " ";  // of cases
    } else {
      std::vector<Expression> response = {*formula.exit, *formula.event};
      if (formula.entry) response.insert(response.begin(), *formula.entry);
      text = "Surv(" + list(response) + ") ";
    }
  }
  std::string right;
  const auto add = [&right](const std::string& part) {
    right += (right.empty() ? "" : " + ") + part;
  };
  for (const Term& term : formula.terms) add(term.name);
  if (right.empty()) add("1");
  if (!formula.strata.empty()) add("strata(" + list(formula.strata) + ")");
  if (formula.cluster) add("cluster(" + deparse(*formula.cluster) + ")");
  for (const Expression& each : formula.offsets) add("offset(" + deparse(each) + ")");
  return text + "~ " + right;
}

}  // namespace survmeth::model
