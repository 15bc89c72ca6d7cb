// Times and statuses of illness and death, a row for each subject, as stays in states.
#include <utility>

#include "analysis/refusal.h"
#include "analysis/states/columns.h"
#include "model/coding.h"
#include "text/numbers.h"
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

// What is wrong with its times; empty where nothing is.
std::string faultOf(const Life& life) {
  if (!(life.end > life.entry)) {
    return " is followed to " + text::exact(life.end) + ", not behind its entry at " +
           text::exact(life.entry);
  }
  if (life.illness > life.end) {
    return (life.ill ? " is ill at " : " is free of the illness at ") + text::exact(life.illness) +
           (life.dead ? ", after the death at " : ", after the end of follow-up at ") +
           text::exact(life.end);
  }
  if (life.ill && life.dead && life.illness == life.end) {
    return " is ill and dead at one time, " + text::exact(life.end);
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
  const auto illness = data.numbers(request.illnessTime)->numbers;
  const auto end = data.numbers(request.deathTime)->numbers;
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
    const double entry = request.entry.empty() ? 0 : data.numbers(request.entry)->numbers[i];
    const Life life{entry, illness[i], end[i], ill.rows[i] != 0, dead.rows[i] != 0};
    const std::string fault = faultOf(life);
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
