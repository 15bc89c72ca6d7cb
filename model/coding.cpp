#include "model/coding.h"

#include <algorithm>
#include <optional>

#include "frame/labels.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::model {
namespace {

using text::nearestFirst;
using text::parseNumber;
using text::quote;

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

bool isYes(const frame::Labels& all, std::size_t label, const Meaning& meaning) {
  const Answer answer = answerOf(all.labels[label]);
  if (answer == Answer::kNone) {
    const auto first = std::find(all.codes.begin(), all.codes.end(), label);
    throw engine::Refusal(
        meaning.role, static_cast<std::size_t>(first - all.codes.begin()),
        quote(all.labels[label]) + " is neither yes nor no", engine::Refusal::kNone,
        "0 and 1, 1 and 2, no and yes, false and true, alive and dead, or what is " +
            std::string(meaning.yes) + " in " + meaning.option);
  }
  return answer == Answer::kYes;
}

}  // namespace

Answer answerOf(const std::string& label) {
  const std::string text = text::lowered(label);
  if (oneOf(text, {"f", "false", "n", "no", "alive", "censored"})) return Answer::kNo;
  if (oneOf(text, {"t", "true", "y", "yes", "dead", "died", "death", "event"})) return Answer::kYes;
  const std::optional<double> number = parseNumber(text);
  if (number && *number == 0) return Answer::kNo;
  if (number && *number == 1) return Answer::kYes;
  return Answer::kNone;
}

YesNo yesNoOf(const frame::Column& column, const std::vector<std::string>& yes,
              const Meaning& meaning) {
  const frame::Labels all = frame::labelsOf(column);
  for (const std::string& each : yes) {
    if (std::none_of(all.labels.begin(), all.labels.end(),
                     [&](const std::string& label) { return frame::sameLabel(label, each); })) {
      throw engine::Refusal(meaning.role, engine::Refusal::kNone, "no row holds " + quote(each),
                            engine::Refusal::kNone, "one of " + nearestFirst(each, all.labels));
    }
  }
  YesNo result;
  const bool oneAndTwo = yes.empty() && isOneAndTwo(all.labels);
  std::vector<std::uint8_t> means;
  for (std::size_t i = 0; i < all.labels.size(); ++i) {
    const std::string& label = all.labels[i];
    const bool isOne = oneAndTwo ? frame::sameLabel(label, "2")
                       : yes.empty()
                           ? isYes(all, i, meaning)
                           : std::any_of(yes.begin(), yes.end(), [&](const std::string& each) {
                               return frame::sameLabel(label, each);
                             });
    means.push_back(isOne ? 1 : 0);
    (isOne ? result.labels : result.others).push_back(label);
  }
  if (oneAndTwo) {
    result.note =
        "in " + quote(column.name) + " 2 is taken for " + meaning.yes + ", 1 for " + meaning.no;
  }
  result.rows.resize(all.codes.size());
  for (std::size_t i = 0; i < result.rows.size(); ++i) result.rows[i] = means[all.codes[i]];
  return result;
}

}  // namespace survmeth::model
