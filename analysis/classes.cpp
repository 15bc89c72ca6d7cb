#include "analysis/classes.h"

#include <utility>

#include "engine/input.h"
#include "model/coding.h"
#include "report/keys.h"
#include "text/lists.h"
#include "text/words.h"

namespace survmeth::analysis {

using text::quote;

std::string Classes::name() const { return text::joined(positives); }

std::vector<report::Fact> Classes::facts() const {
  return {{report::key::kPositive, "Positive", report::Kind::kLabel, name()},
          {report::key::kNegative, "Negative", report::Kind::kLabel, text::joined(negatives)}};
}

Classes classesOf(const frame::Column& column, const std::string& positive) {
  constexpr std::size_t kMostNamed = 12;  // negative labels in a note
  std::vector<std::string> named;
  if (!positive.empty()) named.push_back(positive);
  model::YesNo coded = model::yesNoOf(column, named, model::kPositives);
  if (coded.labels.empty() || coded.others.empty()) {
    throw engine::Refusal(engine::Role::kClass, engine::Refusal::kNone,
                          std::string(coded.labels.empty() ? "no" : "every") + " complete row " +
                              (named.empty() ? "means yes" : "holds " + quote(positive)),
                          engine::Refusal::kNone, "positive and negative rows");
  }
  Classes classes{std::move(coded.rows), std::move(coded.labels), std::move(coded.others), {}};
  if (!coded.note.empty()) classes.notes.push_back({"classCoding", coded.note, {}});
  const std::vector<std::string>& others = classes.negatives;
  if (others.size() > kMostNamed) {
    classes.notes.push_back(
        {"severalNegatives", text::grouped(others.size()) + " different labels are negative", {}});
  } else if (others.size() > 1) {
    std::string names;
    for (const std::string& label : others) names += (names.empty() ? "" : ", ") + quote(label);
    classes.notes.push_back({"severalNegatives", "several labels are negative: " + names, others});
  }
  return classes;
}

}  // namespace survmeth::analysis
