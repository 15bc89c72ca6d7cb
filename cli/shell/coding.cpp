#include "cli/shell/coding.h"

#include <algorithm>
#include <optional>

#include "cli/shell/lists.h"
#include "cli/shell/numbers.h"
#include "text/words.h"

namespace cli {
namespace {

bool oneOf(const std::string& text, std::initializer_list<const char*> words) {
  return std::find(words.begin(), words.end(), text) != words.end();
}

bool isOneAndTwo(const std::vector<std::string>& labels) {
  bool two = false;
  for (const std::string& label : labels) {
    const std::optional<double> number = parseNumber(label);
    if (!number || (*number != 1 && *number != 2)) return false;
    two = two || *number == 2;
  }
  return two;
}

bool isYes(const Table& table, const Column& column, std::size_t label, const Meaning& meaning) {
  const Answer answer = answerOf(column.labels[label]);
  if (answer == Answer::kNone) {
    throw problemAt({table.source, column.labelLine[label], column.name},
                    quote(column.labels[label]) + " is neither yes nor no",
                    "0 and 1, 1 and 2, no and yes, false and true, alive and dead, or what is " +
                        std::string(meaning.yes) + " in " + meaning.option);
  }
  return answer == Answer::kYes;
}

}  // namespace

Answer answerOf(const std::string& label) {
  const std::string text = survmeth::text::lowered(label);
  if (oneOf(text, {"f", "false", "n", "no", "alive", "censored"})) return Answer::kNo;
  if (oneOf(text, {"t", "true", "y", "yes", "dead", "died", "death", "event"})) return Answer::kYes;
  const std::optional<double> number = parseNumber(text);
  if (number && *number == 0) return Answer::kNo;
  if (number && *number == 1) return Answer::kYes;
  return Answer::kNone;
}

bool sameValue(const std::string& label, const std::string& value) {
  if (label == value) return true;
  const std::optional<double> a = parseNumber(label), b = parseNumber(value);
  return a && b && *a == *b;
}

YesNo yesNoOf(const Table& table, const Column& column, const std::vector<std::string>& yes,
              const Meaning& meaning) {
  YesNo result;
  const bool oneAndTwo = yes.empty() && isOneAndTwo(column.labels);
  for (std::size_t i = 0; i < column.labels.size(); ++i) {
    const std::string& label = column.labels[i];
    if (oneAndTwo) {
      result.labels.push_back(sameValue(label, "2"));
    } else if (yes.empty()) {
      result.labels.push_back(isYes(table, column, i, meaning));
    } else {
      result.labels.push_back(std::any_of(
          yes.begin(), yes.end(), [&](const std::string& each) { return sameValue(label, each); }));
    }
  }
  for (const std::string& each : yes) {
    if (std::any_of(column.labels.begin(), column.labels.end(),
                    [&](const std::string& label) { return sameValue(label, each); })) {
      continue;
    }
    throw problemAt({table.source, 0, column.name}, "no row holds " + quote(each),
                    "one of " + nearestFirst(each, column.labels));
  }
  if (oneAndTwo) {
    result.note =
        "in " + quote(column.name) + " 2 is taken for " + meaning.yes + ", 1 for " + meaning.no;
  }
  result.rows.reserve(column.codes.size());
  for (const std::uint32_t code : column.codes) result.rows.push_back(result.labels[code] ? 1 : 0);
  return result;
}

std::vector<std::string> eventValues(const std::string& list) {
  return list.empty() ? std::vector<std::string>() : listItems("--event-value", list, "values");
}

}  // namespace cli
