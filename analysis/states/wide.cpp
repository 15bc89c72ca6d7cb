// Times and statuses of illness and death, a row for each subject, as stays in states.
#include <utility>

#include "analysis/refusal.h"
#include "analysis/states/columns.h"
#include "frame/date.h"
#include "model/coding.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

using engine::Refusal;
using engine::Role;

constexpr std::uint32_t kHealthy = 0, kIll = 1, kDead = 2;
constexpr model::Meaning kIllness = {"ill", "free of it", "--illness", Role::kSecond};
constexpr model::Meaning kDeath = {"dead", "alive", "--death", Role::kEvent};
constexpr char kCodes[] = "0 and 1, 1 and 2, no and yes, false and true, or alive and dead";

// One subject.
struct Life {
  double entry, illness, end;
  bool ill, dead;
};

// Its times as the data have them.
struct LifeTexts {
  model::DatedTimes dated;
  bool illnessIsDate;
  std::string entry(const Life& life) const { return frame::cellText(life.entry, dated.entry); }
  std::string illness(const Life& life) const {
    return frame::cellText(life.illness, illnessIsDate);
  }
  std::string end(const Life& life) const { return frame::cellText(life.end, dated.exit); }
};

// What is wrong with its times; empty where nothing is.
std::string faultOf(const Life& life, const LifeTexts& texts) {
  if (!(life.end > life.entry)) {
    return " is followed to " + texts.end(life) + ", not behind its entry at " + texts.entry(life);
  }
  if (life.illness > life.end) {
    return (life.ill ? " is ill at " : " is free of the illness at ") + texts.illness(life) +
           (life.dead ? ", after the death at " : ", after the end of follow-up at ") +
           texts.end(life);
  }
  if (life.ill && life.dead && life.illness == life.end) {
    return " is ill and dead at one time, " + texts.end(life);
  }
  return {};
}

void requireOneRowEach(const frame::Frame& data, const frame::Labels& subject) {
  std::vector<std::size_t> row(subject.labels.size(), Refusal::kNone);
  FaultList faults;
  for (std::size_t i = 0; i < subject.codes.size(); ++i) {
    std::size_t& first = row[subject.codes[i]];
    if (first == Refusal::kNone) {
      first = i;
      continue;
    }
    faults.add("subject " + text::quote(subject.labels[subject.codes[i]]) + ": " +
                   placeOf(data, first) + " and " + placeOf(data, i),
               i);
  }
  if (faults.empty()) return;
  throw Refusal(Role::kSubject, faults.firstRow(), "subjects have several rows: " + faults.words(),
                Refusal::kNone, "a row for each subject beside --illness-time");
}

}  // namespace

void takeSubjects(const frame::Frame& data, const StatesRequest& request, StateColumns& columns,
                  StatesAnswer& answer) {
  const frame::Column& illness = *data.numbers(request.illnessTime);
  const frame::Column& end = *data.numbers(request.deathTime);
  const frame::Column* entries = request.entry.empty() ? nullptr : data.numbers(request.entry);
  columns.dated = {entries != nullptr && entries->isDate, end.isDate};
  const LifeTexts texts{columns.dated, illness.isDate};
  const model::YesNo ill = expecting(
      kCodes, [&] { return model::yesNoOf(*data.labels(request.illness), {}, kIllness); });
  const model::YesNo dead =
      expecting(kCodes, [&] { return model::yesNoOf(*data.labels(request.death), {}, kDeath); });
  answer.eventNote = ill.note;
  if (!dead.note.empty()) answer.eventNote += (ill.note.empty() ? "" : "; ") + dead.note;
  if (request.id.empty()) {
    for (std::uint32_t i = 0; i < data.rows; ++i) columns.subject.codes.push_back(i);
    answer.subjects = data.rows;
  } else {
    columns.subject = frame::labelsOf(*data.labels(request.id));
    requireOneRowEach(data, columns.subject);
    answer.subjects = columns.subject.labels.size();
  }
  answer.states = {"healthy", "ill", "dead"};
  answer.rows.assign(3, 0);
  const auto add = [&](std::size_t row, std::uint32_t from, double entry, double exit,
                       std::uint32_t to) {
    columns.entry.push_back(entry);
    columns.exit.push_back(exit);
    columns.from.push_back(from);
    columns.to.push_back(to);
    columns.source.push_back(static_cast<std::uint32_t>(row));
    ++answer.rows[from];
  };
  FaultList faults;
  for (std::size_t i = 0; i < data.rows; ++i) {
    const double entry = entries == nullptr ? 0 : entries->numbers[i];
    const Life life{entry, illness.numbers[i], end.numbers[i], ill.rows[i] != 0, dead.rows[i] != 0};
    const std::string fault = faultOf(life, texts);
    if (!fault.empty()) {
      faults.add(placeOf(data, i) + fault, i);
      continue;
    }
    const std::uint32_t last = life.dead ? kDead : engine::states::kNowhere;
    if (!life.ill) {
      answer.unknown += life.illness < life.end ? 1 : 0;
      add(i, kHealthy, life.entry, life.end, last);
      continue;
    }
    if (life.illness > life.entry) add(i, kHealthy, life.entry, life.illness, kIll);
    const double begin = life.illness > life.entry ? life.illness : life.entry;
    if (begin < life.end) add(i, kIll, begin, life.end, last);
  }
  if (faults.empty()) return;
  throw Refusal(Role::kTime, faults.firstRow(), "times cannot be: " + faults.words(),
                Refusal::kNone, "entries before illnesses before deaths");
}

}  // namespace survmeth::analysis
