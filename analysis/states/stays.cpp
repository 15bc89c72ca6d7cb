// A row for each stay in a state, and what messages say of rows.
#include <algorithm>
#include <utility>

#include "analysis/states/columns.h"
#include "model/response.h"
#include "text/charconv.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

using engine::Refusal;
using engine::Role;
using text::quote;

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

}  // namespace

std::string placeOf(const frame::Frame& data, std::size_t row) {
  return (data.fromFile ? "line " : "row ") + std::to_string(data.lines.line(row));
}

void FaultList::add(const std::string& words, std::size_t row) {
  if (count_ == 0) first_ = row;
  if (++count_ <= kNamed) list_ += (list_.empty() ? "" : "; ") + words;
}

std::string FaultList::words() const {
  return count_ > kNamed ? list_ + "; and " + text::grouped(count_ - kNamed) + " more" : list_;
}

void takeStays(const frame::Frame& data, const StatesRequest& request, StateColumns& columns,
               StatesAnswer& answer) {
  const frame::Labels from = frame::labelsOf(*data.labels(request.from));
  const frame::Labels to = frame::labelsOf(*data.labels(request.to));
  std::vector<std::string>& labels = answer.states;
  for (const std::string& label : from.labels) {
    if (meansNowhere(label, request)) {
      throw Refusal(Role::kFirst, Refusal::kNone,
                    "the label " + quote(label) + " of the censored stands among the states");
    }
    labels.push_back(label);
  }
  bool censoring = false;
  for (const std::string& label : to.labels) {
    const bool nowhere = meansNowhere(label, request);
    censoring = censoring || nowhere;
    if (!nowhere) labels.push_back(label);
  }
  std::sort(labels.begin(), labels.end(), before);
  labels.erase(std::unique(labels.begin(), labels.end()), labels.end());
  if (labels.size() > kMostStates) {
    throw Refusal(Role::kFirst, Refusal::kNone,
                  "there are " + text::grouped(labels.size()) + " states", Refusal::kNone,
                  "at most " + std::to_string(kMostStates));
  }
  if (!request.censor.empty() && !censoring) {
    throw Refusal(Role::kEvent, Refusal::kNone, "no row holds " + quote(request.censor),
                  Refusal::kNone, "a label of the censored in --censor");
  }
  const auto codes = [&](const frame::Labels& of) {
    std::vector<std::uint32_t> codeOf;
    for (const std::string& label : of.labels) {
      const auto at = std::lower_bound(labels.begin(), labels.end(), label, before);
      const bool state = at != labels.end() && *at == label;
      codeOf.push_back(state ? static_cast<std::uint32_t>(at - labels.begin())
                             : engine::states::kNowhere);
    }
    std::vector<std::uint32_t> result;
    result.reserve(of.codes.size());
    for (const std::uint32_t code : of.codes) result.push_back(codeOf[code]);
    return result;
  };
  columns.from = codes(from);
  columns.to = codes(to);
  answer.rows.assign(labels.size(), 0);
  for (const std::uint32_t code : columns.from) ++answer.rows[code];
  const frame::Column& entry = *data.numbers(request.entry);
  const frame::Column& exit = *data.numbers(request.exit);
  columns.dated = {entry.isDate, exit.isDate};
  model::requireEntriesBefore(entry.numbers, exit.numbers, columns.dated);
  columns.entry.assign(entry.numbers.begin(), entry.numbers.end());
  columns.exit.assign(exit.numbers.begin(), exit.numbers.end());
  columns.subject = frame::labelsOf(*data.labels(request.id));
  answer.subjects = columns.subject.labels.size();
  for (std::uint32_t i = 0; i < data.rows; ++i) columns.source.push_back(i);
}

}  // namespace survmeth::analysis
