#include "model/eventTypes.h"

#include "engine/input.h"
#include "model/coding.h"
#include "text/words.h"

namespace survmeth::model {
namespace {

using engine::Refusal;
using engine::Role;
using frame::Labels;
using text::counted;
using text::nearestFirst;
using text::quote;

[[noreturn]] void refuse(const std::string& what, const std::string& expected) {
  throw Refusal(Role::kEvent, Refusal::kNone, what, Refusal::kNone, expected);
}

std::string listed(const Labels& status) {
  std::string text;
  for (std::size_t i = 0; i < status.labels.size() && i < 12; ++i) {
    text += (i > 0 ? ", " : "") + quote(status.labels[i]) + " (" +
            counted(status.counts[i], "row", "rows") + ")";
  }
  return status.labels.size() > 12
             ? text + " and " + std::to_string(status.labels.size() - 12) + " more"
             : text;
}

std::optional<std::size_t> find(const Labels& status, const std::string& wanted) {
  for (std::size_t i = 0; i < status.labels.size(); ++i) {
    if (frame::sameLabel(status.labels[i], wanted)) return i;
  }
  return std::nullopt;
}

// Which code is censoring.
std::optional<std::size_t> censoring(const std::string& censor, const Labels& status) {
  if (!censor.empty()) {
    const std::optional<std::size_t> found = find(status, censor);
    if (found || censor == "none") return found;
    refuse("no row holds " + quote(censor), "one of " + nearestFirst(censor, status.labels) +
                                                " in --censor, or none where no row is censored");
  }
  std::optional<std::size_t> found;
  bool one = true;
  for (std::size_t i = 0; i < status.labels.size(); ++i) {
    if (answerOf(status.labels[i]) != Answer::kNo) continue;
    one = !found;
    found = i;
  }
  if (found && one) return found;
  refuse(std::string(found ? "more than one code" : "no code") +
             " says that a row is censored (0, censored, alive, no or false); the codes are " +
             listed(status),
         "the code of the censored in --censor, or --censor none");
}

// The one type that is asked for.
std::size_t wanted(const std::string& event, const EventTypes& made) {
  std::vector<std::string> names;
  for (const std::size_t type : made.types) names.push_back(made.status.labels[type]);
  const std::string expected = names.empty()
                                   ? "a type of event; every row is censored"
                                   : "one of " + nearestFirst(event, names) + " in --event";
  const std::optional<std::size_t> found = find(made.status, event);
  if (!found) refuse("no row holds " + quote(event), expected);
  if (found == made.censored) refuse(quote(event) + " is the code of the censored", expected);
  return *found;
}

}  // namespace

EventTypes eventTypesOf(const frame::Column& status, const std::string& censor,
                        const std::string& event) {
  EventTypes made;
  made.status = frame::labelsOf(status);
  made.censored = censoring(censor, made.status);
  for (std::size_t i = 0; i < made.status.labels.size(); ++i) {
    if (made.censored != i) made.types.push_back(i);
  }
  if (!event.empty()) made.types = {wanted(event, made)};
  made.events.reserve(made.status.codes.size());
  for (const std::uint32_t code : made.status.codes) {
    made.events.push_back(made.censored == code ? 0 : code + 1);
  }
  return made;
}

}  // namespace survmeth::model
