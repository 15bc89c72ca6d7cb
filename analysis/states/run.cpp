#include <algorithm>
#include <utility>

#include "analysis/groups.h"
#include "analysis/states/columns.h"
#include "frame/date.h"
#include "text/charconv.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace states = engine::states;
using engine::Refusal;
using engine::Role;
using text::quote;
using Kind = states::Fault::Kind;

constexpr std::size_t kMostGroups = 100;

// Rows of one group, or all.
struct Part {
  std::vector<double> entry, exit, weight;
  std::vector<std::uint32_t> from, to, subject, cluster;
  states::Histories histories;
};

states::Histories historiesOf(const StatesRequest& request, const StateColumns& columns,
                              const StatesAnswer& answer, std::span<const std::uint32_t> rows,
                              Part& part) {
  const bool stays = !request.wide();
  for (const std::uint32_t i : rows) {
    const std::uint32_t row = columns.source[i];
    part.entry.push_back(columns.entry[i]);
    part.exit.push_back(columns.exit[i]);
    part.from.push_back(columns.from[i]);
    part.to.push_back(columns.to[i]);
    part.subject.push_back(columns.subject.codes[row]);
    if (!columns.weight.empty()) part.weight.push_back(columns.weight[row]);
    if (!columns.cluster.codes.empty()) part.cluster.push_back(columns.cluster.codes[row]);
  }
  states::Histories histories;
  histories.entry = part.entry;
  histories.exit = part.exit;
  histories.from = part.from;
  histories.to = part.to;
  histories.subject = part.subject;
  histories.states = answer.states.size();
  histories.subjects = stays ? columns.subject.labels.size() : answer.subjects;
  histories.weight = part.weight;
  histories.weightKind = request.weightsAre;
  histories.cluster = part.cluster;
  histories.clusters = columns.cluster.labels.size();
  return histories;
}

std::string wordsOf(const frame::Frame& data, const StateColumns& columns,
                    const StatesAnswer& answer, const states::Fault& fault) {
  const std::string a = placeOf(data, fault.first), b = placeOf(data, fault.second);
  const std::string subject =
      "subject " + quote(columns.subject.labels[columns.subject.codes[fault.second]]) + ": ";
  const std::string ends = frame::cellText(columns.exit[fault.first], columns.dated.exit);
  const std::string begins = frame::cellText(columns.entry[fault.second], columns.dated.entry);
  if (fault.kind == Kind::kOverlap) {
    return subject + b + " begins at " + begins + " before " + a + " ends at " + ends;
  }
  if (fault.kind == Kind::kGap) {
    return subject + a + " ends at " + ends + ", " + b + " begins at " + begins;
  }
  const std::uint32_t next = columns.to[fault.first];
  const std::string& is = answer.states[columns.from[fault.second]];
  return subject + b + " is in " + quote(is) + ", " + a +
         (next == states::kNowhere ? " stays in " + quote(answer.states[columns.from[fault.first]])
                                   : " leads to " + quote(answer.states[next]));
}

// Of a row for each stay: rows of the columns are those of the data.
void checkStays(const frame::Frame& data, const states::Histories& histories,
                const StateColumns& columns, StatesAnswer& answer) {
  FaultList wrong, gaps;
  for (const states::Fault& fault : states::check(histories)) {
    FaultList& list = fault.kind == Kind::kGap ? gaps : wrong;
    list.add(wordsOf(data, columns, answer, fault), fault.second);
  }
  if (!wrong.empty()) {
    throw Refusal(Role::kSubject, wrong.firstRow(),
                  "histories contradict themselves: " + wrong.words(), Refusal::kNone,
                  "rows of a subject that follow each other");
  }
  answer.gaps = gaps.words();
}

void requireOneGroupEach(const frame::Frame& data, const StateColumns& columns,
                         const StatesAnswer& answer) {
  std::vector<std::size_t> row(columns.subject.labels.size(), Refusal::kNone);
  FaultList faults;
  for (std::size_t i = 0; i < columns.subject.codes.size() && !row.empty(); ++i) {
    std::size_t& first = row[columns.subject.codes[i]];
    if (first == Refusal::kNone) first = i;
    const auto of = [&](std::size_t at) { return answer.group.labels[answer.group.codes[at]]; };
    if (answer.group.codes[first] == answer.group.codes[i]) continue;
    faults.add("subject " + quote(columns.subject.labels[columns.subject.codes[i]]) + ": " +
                   placeOf(data, first) + " in " + quote(of(first)) + ", " + placeOf(data, i) +
                   " in " + quote(of(i)),
               i);
  }
  if (faults.empty()) return;
  throw Refusal(Role::kGroup, faults.firstRow(), "subjects change their group: " + faults.words(),
                Refusal::kNone, "one group for each subject");
}

std::vector<double> initialOf(const StatesRequest& request, const StatesAnswer& answer) {
  if (request.initial.empty()) return {};
  const auto placeIn = [&](const std::string& label) {
    const auto at =
        std::find_if(answer.states.begin(), answer.states.end(),
                     [&](const std::string& state) { return frame::sameLabel(state, label); });
    return static_cast<std::size_t>(at - answer.states.begin());
  };
  std::vector<double> initial(answer.states.size(), 0);
  if (const std::size_t only = placeIn(request.initial); only < initial.size()) {
    initial[only] = 1;
    return initial;
  }
  const auto refuse = [](const std::string& text) {
    throw Refusal(Role::kFirst, Refusal::kNone, text, Refusal::kNone,
                  "a state in --initial, or states with probabilities, \"a=0.7,b=0.3\"");
  };
  std::string rest = request.initial;
  while (!rest.empty()) {
    const std::size_t comma = rest.find(',');
    const std::string each = rest.substr(0, comma);
    rest = comma == std::string::npos ? "" : rest.substr(comma + 1);
    const std::size_t sign = each.rfind('=');
    const std::string label = each.substr(0, sign);
    const std::size_t state = placeIn(label);
    if (state == initial.size()) refuse("there is no state " + quote(label));
    double share = -1;
    if (sign != std::string::npos) {
      const char* end = each.data() + each.size();
      if (text::from_chars(each.data() + sign + 1, end, share).ptr != end) share = -1;
    }
    if (!(share >= 0 && share <= 1)) refuse(quote(each) + " gives no probability of the state");
    initial[state] += share;
  }
  double sum = 0;
  for (const double share : initial) sum += share;
  if (!(sum > 1 - 1e-9 && sum < 1 + 1e-9)) {  // as the engine has it
    refuse("the probabilities at the start sum to " + text::brief(sum));
  }
  return initial;
}

}  // namespace

StatesAnswer fitStates(const frame::Frame& data, const StatesRequest& request,
                       numerics::Progress& progress) {
  StatesAnswer answer;
  StateColumns columns;
  request.wide() ? takeSubjects(data, request, columns, answer)
                 : takeStays(data, request, columns, answer);
  if (!request.weights.empty()) {
    const auto weight = data.numbers(request.weights)->numbers;
    columns.weight.assign(weight.begin(), weight.end());
  }
  if (!request.cluster.empty()) {
    columns.cluster = frame::labelsOf(*data.labels(request.cluster));
  }
  std::vector<std::vector<std::uint32_t>> rows(1);
  if (request.group.empty()) {
    answer.group = {{"all"}, {}, {data.rows}};
  } else {
    answer.group = groupsOf(data, request.group);
    requireSeveral(answer.group, kMostGroups);
    requireFilled(answer.group, columns.weight);
    rows.resize(answer.group.labels.size());
  }
  for (std::uint32_t i = 0; i < columns.source.size(); ++i) {
    const std::size_t group = answer.several() ? answer.group.codes[columns.source[i]] : 0;
    rows[group].push_back(i);
  }
  if (!request.wide()) {
    std::vector<std::uint32_t> all(columns.source);
    Part part;
    checkStays(data, historiesOf(request, columns, answer, all, part), columns, answer);
    if (answer.several()) requireOneGroupEach(data, columns, answer);
  }
  states::Options options;
  options.start = request.start;
  options.initial = initialOf(request, answer);
  options.robust = request.variance == StateErrors::kRobust;
  if (request.tau) options.horizon = *request.tau;
  for (std::size_t g = 0; g < rows.size(); ++g) {
    progress.at(static_cast<double>(g) / static_cast<double>(rows.size()));
    Part part;
    const states::Histories histories = historiesOf(request, columns, answer, rows[g], part);
    try {
      answer.found.push_back(states::estimate(histories, options));
    } catch (const Refusal& refused) {
      if (!answer.several() || refused.role() != Role::kRequest) throw;
      throw Refusal(Role::kGroup, Refusal::kNone,
                    "in the group " + quote(answer.group.labels[g]) + " " + refused.what());
    }
  }
  answer.at = request.at;
  // The last transition that all groups are followed to.
  for (const states::Estimates& found : answer.found) {
    if (!request.at.empty() || found.time.empty()) continue;
    if (answer.at.empty()) {
      answer.at = {found.time.back()};
    } else {
      answer.at[0] = std::min(answer.at[0], found.time.back());
    }
  }
  return answer;
}

}  // namespace survmeth::analysis
