#include "model/coding.h"

#include <algorithm>
#include <optional>
#include <utility>

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

// The levels that rows hold, by first use, each with its first row and its label in order: what
// labelsOf makes of the whole column, without a copy of it.
struct Held {
  std::vector<std::uint32_t> levels;
  std::vector<std::size_t> firstRow;
  frame::Labels all;  // codes are of `levels`
};

Held heldBy(const frame::Column& column) {
  Held held;
  std::vector<bool> seen(column.levels.size(), false);
  for (std::size_t row = 0; row < column.codes.size() && held.levels.size() < seen.size(); ++row) {
    const std::uint32_t level = column.codes[row];
    if (level == frame::Column::kMissing || seen[level]) continue;
    seen[level] = true;
    held.levels.push_back(level);
    held.firstRow.push_back(row);
  }
  held.all =
      frame::labelsOf(frame::labelColumn(column.name, column.type, held.levels, column.levels));
  return held;
}

frame::Column ofLabels(const frame::Column& column) {
  if (column.type != frame::Type::kNumber) return column;
  frame::Labels made = frame::labelsByFirstUse(column);
  return frame::labelColumn(column.name, frame::Type::kText, std::move(made.codes),
                            std::move(made.labels));
}

bool isYes(const Held& held, std::size_t label, const Meaning& meaning) {
  const frame::Labels& all = held.all;
  const Answer answer = answerOf(all.labels[label]);
  if (answer == Answer::kNone) {
    const auto first = std::find(all.codes.begin(), all.codes.end(), label);
    throw engine::Refusal(
        meaning.role, held.firstRow[static_cast<std::size_t>(first - all.codes.begin())],
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
  const frame::Column labels = ofLabels(column);
  const Held held = heldBy(labels);
  const frame::Labels& all = held.all;
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
                           ? isYes(held, i, meaning)
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
  std::vector<std::uint8_t> levelMeans(labels.levels.size(), 0);
  for (std::size_t i = 0; i < held.levels.size(); ++i) {
    levelMeans[held.levels[i]] = means[all.codes[i]];
  }
  result.rows.resize(labels.codes.size());
  for (std::size_t i = 0; i < result.rows.size(); ++i) {
    result.rows[i] = levelMeans[labels.codes[i]];
  }
  return result;
}

}  // namespace survmeth::model
