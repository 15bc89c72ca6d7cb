#include <algorithm>
#include <map>
#include <utility>

#include "analysis/states/states.h"
#include "frame/labels.h"
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

constexpr std::size_t kNamed = 5;        // faults that a message names
constexpr std::size_t kMostStates = 50;  // covariances grow with their square

// Labels of the states: as numbers where both are, else by their bytes.
bool before(const std::string& a, const std::string& b) {
  double x = 0, y = 0;
  const auto isNumber = [](const std::string& label, double& number) {
    const char* end = label.data() + label.size();
    return text::from_chars(label.data(), end, number).ptr == end;
  };
  const bool first = isNumber(a, x), second = isNumber(b, y);
  if (first != second) return first;
  return first && x != y ? x < y : a < b;
}

bool meansNowhere(const std::string& label, const StatesRequest& request) {
  if (!request.censor.empty()) return frame::sameLabel(label, request.censor);
  const std::string low = text::lowered(label);
  return low == "censored" || low == "cens" || low == "none";
}

// Columns as the engine takes them.
struct Input {
  frame::Column entry, exit, weight;
  frame::Labels from, to, subject;
  std::vector<std::uint32_t> fromCode, toCode;
  states::Histories histories;
};

void takeStates(const StatesRequest& request, Input& input, StatesAnswer& answer) {
  std::vector<std::string>& labels = answer.states;
  for (const std::string& label : input.from.labels) {
    if (meansNowhere(label, request)) {
      throw Refusal(Role::kGroup, Refusal::kNone,
                    "the label " + quote(label) + " of the censored stands among the states");
    }
    labels.push_back(label);
  }
  for (const std::string& label : input.to.labels) {
    const bool nowhere = meansNowhere(label, request);
    answer.censoring = answer.censoring || nowhere;
    if (!nowhere) labels.push_back(label);
  }
  std::sort(labels.begin(), labels.end(), before);
  labels.erase(std::unique(labels.begin(), labels.end()), labels.end());
  if (labels.size() > kMostStates) {
    throw Refusal(Role::kGroup, Refusal::kNone,
                  "there are " + text::grouped(labels.size()) + " states", Refusal::kNone,
                  "at most " + std::to_string(kMostStates));
  }
  if (!request.censor.empty() && !answer.censoring) {
    throw Refusal(Role::kEvent, Refusal::kNone, "no row holds " + quote(request.censor),
                  Refusal::kNone, "a label of the censored in --censor");
  }
  const auto codes = [&](const frame::Labels& of) {
    std::vector<std::uint32_t> codeOf;
    for (const std::string& label : of.labels) {
      const auto at = std::lower_bound(labels.begin(), labels.end(), label, before);
      const bool state = at != labels.end() && *at == label;
      codeOf.push_back(state ? static_cast<std::uint32_t>(at - labels.begin()) : states::kNowhere);
    }
    std::vector<std::uint32_t> result;
    for (const std::uint32_t code : of.codes) result.push_back(codeOf[code]);
    return result;
  };
  input.fromCode = codes(input.from);
  input.toCode = codes(input.to);
  answer.rows.assign(labels.size(), 0);
  for (const std::uint32_t code : input.fromCode) ++answer.rows[code];
}

// The faults of some kinds in words; empty where there are none.
class Faults {
 public:
  Faults(const frame::Frame& data, const Input& input, const StatesAnswer& answer,
         const std::vector<states::Fault>& faults)
      : data_(data), input_(input), answer_(answer), faults_(faults) {}

  std::string named(bool gaps) const {
    std::string list;
    std::size_t count = 0;
    for (const states::Fault& fault : faults_) {
      if ((fault.kind == Kind::kGap) != gaps || ++count > kNamed) continue;
      list += (list.empty() ? "" : "; ") + words(fault);
    }
    if (count > kNamed) list += "; and " + text::grouped(count - kNamed) + " more";
    return list;
  }
  std::size_t firstRow() const {
    for (const states::Fault& fault : faults_) {
      if (fault.kind != Kind::kGap) return fault.second;
    }
    return Refusal::kNone;
  }

 private:
  std::string place(std::size_t row) const {
    return (data_.fromFile ? "line " : "row ") + std::to_string(data_.lines.line(row));
  }
  std::string words(const states::Fault& fault) const {
    const std::string a = place(fault.first), b = place(fault.second);
    const std::string subject =
        "subject " + quote(input_.subject.labels[input_.subject.codes[fault.second]]) + ": ";
    const std::string ends = text::exact(input_.exit.numbers[fault.first]);
    const std::string begins = text::exact(input_.entry.numbers[fault.second]);
    if (fault.kind == Kind::kOverlap) {
      return subject + b + " begins at " + begins + " before " + a + " ends at " + ends;
    }
    if (fault.kind == Kind::kGap) {
      return subject + a + " ends at " + ends + ", " + b + " begins at " + begins;
    }
    const std::uint32_t next = input_.toCode[fault.first];
    const std::string& is = answer_.states[input_.fromCode[fault.second]];
    return subject + b + " is in " + quote(is) + ", " + a +
           (next == states::kNowhere
                ? " stays in " + quote(answer_.states[input_.fromCode[fault.first]])
                : " leads to " + quote(answer_.states[next]));
  }

  const frame::Frame& data_;
  const Input& input_;
  const StatesAnswer& answer_;
  const std::vector<states::Fault>& faults_;
};

void checkHistories(const frame::Frame& data, const Input& input, StatesAnswer& answer) {
  const std::vector<states::Fault> found = states::check(input.histories);
  const Faults faults(data, input, answer, found);
  const std::string wrong = faults.named(false);
  if (!wrong.empty()) {
    throw Refusal(Role::kSubject, faults.firstRow(), "histories contradict themselves: " + wrong,
                  Refusal::kNone, "rows of a subject that follow each other");
  }
  answer.gaps = faults.named(true);
}

std::vector<double> initialOf(const StatesRequest& request, const StatesAnswer& answer) {
  if (request.initial.empty()) return {};
  std::vector<double> initial;
  bool found = false;
  for (const std::string& state : answer.states) {
    initial.push_back(frame::sameLabel(state, request.initial) ? 1 : 0);
    found = found || initial.back() == 1;
  }
  if (!found) {
    throw Refusal(Role::kGroup, Refusal::kNone, "there is no state " + quote(request.initial),
                  Refusal::kNone, "one of the states in --initial");
  }
  return initial;
}

}  // namespace

StatesAnswer fitStates(const frame::Frame& data, const StatesRequest& request,
                       numerics::Progress&) {
  StatesAnswer answer;
  Input input;
  input.entry = *data.numbers(request.entry);
  input.exit = *data.numbers(request.exit);
  input.from = frame::labelsOf(*data.labels(request.from));
  input.to = frame::labelsOf(*data.labels(request.to));
  input.subject = frame::labelsOf(*data.labels(request.id));
  takeStates(request, input, answer);
  states::Histories& histories = input.histories;
  histories = {input.entry.numbers,
               input.exit.numbers,
               input.fromCode,
               input.toCode,
               input.subject.codes,
               answer.states.size(),
               input.subject.labels.size(),
               std::span<const double>{}};
  if (!request.weights.empty()) {
    input.weight = *data.numbers(request.weights);
    histories.weight = input.weight.numbers;
  }
  answer.subjects = input.subject.labels.size();
  checkHistories(data, input, answer);
  states::Options options;
  options.start = request.start;
  options.initial = initialOf(request, answer);
  if (request.tau) options.horizon = *request.tau;
  answer.found = states::estimate(histories, options);
  answer.at = request.at;
  if (answer.at.empty() && !answer.found.time.empty()) answer.at = {answer.found.time.back()};
  return answer;
}

}  // namespace survmeth::analysis
