#include "analysis/cox/subjects.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <tuple>

#include "frame/date.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

constexpr std::size_t kNamed = 5;  // subjects with gaps in a message

class Subjects {
 public:
  Subjects(const frame::Frame& data, const engine::Response& response, const engine::Rows& rows,
           const frame::Labels& subjects, model::DatedTimes dated)
      : data_(data), response_(response), rows_(rows), subjects_(subjects), dated_(dated) {}

  CoxSubjects check() const {
    std::vector<std::uint32_t> order(response_.rows());
    std::iota(order.begin(), order.end(), 0u);
    const auto sorted = [&](auto keyOf) {
      std::sort(order.begin(), order.end(),
                [&](std::uint32_t a, std::uint32_t b) { return keyOf(a) < keyOf(b); });
    };
    sorted([&](std::uint32_t i) {
      return std::tuple(subjects_.codes[i], stratum(i), entry(i), response_.exit[i], i);
    });
    for (std::size_t k = 1; k < order.size(); ++k) {
      const std::uint32_t a = order[k - 1], b = order[k];
      const bool sameRisk = subjects_.codes[a] == subjects_.codes[b] && stratum(a) == stratum(b);
      if (sameRisk && entry(b) < response_.exit[a]) refuse(a, b);
    }
    sorted([&](std::uint32_t i) {
      return std::tuple(subjects_.codes[i], entry(i), response_.exit[i], i);
    });
    return follow(order);
  }

 private:
  double entry(std::uint32_t i) const {
    return response_.entry.empty() ? -std::numeric_limits<double>::infinity() : response_.entry[i];
  }
  std::string entryText(std::uint32_t i) const { return frame::cellText(entry(i), dated_.entry); }
  std::string exitText(std::uint32_t i) const {
    return frame::cellText(response_.exit[i], dated_.exit);
  }
  std::uint32_t stratum(std::uint32_t i) const {
    return rows_.stratum.empty() ? 0 : rows_.stratum[i];
  }
  std::string name(std::uint32_t i) const {
    return text::quote(subjects_.labels[subjects_.codes[i]]);
  }
  std::string place(std::uint32_t i) const {
    return (data_.fromFile ? "line " : "row ") + std::to_string(data_.lines.line(i));
  }
  std::string interval(std::uint32_t i) const {
    return (response_.entry.empty() ? "up to " : "(" + entryText(i) + ", ") + exitText(i) +
           (response_.entry.empty() ? "" : "]");
  }

  [[noreturn]] void refuse(std::uint32_t a, std::uint32_t b) const {
    throw engine::Refusal(engine::Role::kSubject, b,
                          "the subject " + name(b) + " is at risk twice at one time" +
                              (rows_.stratum.empty() ? "" : " in one stratum") + ": " +
                              interval(b) + " here and " + interval(a) + " in " + place(a),
                          engine::Refusal::kNone,
                          response_.entry.empty() ? "one row of each subject, or entry times"
                                                  : "rows of a subject that do not overlap");
  }

  // By subject and entry: several events, and times between a row's entry and all exits before.
  CoxSubjects follow(const std::vector<std::uint32_t>& order) const {
    CoxSubjects result;
    std::size_t withGaps = 0, events = 0;
    std::string named;
    std::uint32_t last = 0;  // the row of the latest exit so far
    bool counted = false;    // the subject among those with gaps
    for (std::size_t k = 0; k < order.size(); ++k) {
      const std::uint32_t i = order[k];
      if (k == 0 || subjects_.codes[i] != subjects_.codes[last]) {
        events = 0;
        counted = false;
        last = i;
      }
      events += response_.event[i] != 0 ? 1 : 0;
      result.severalEvents = result.severalEvents || events > 1;
      if (entry(i) > response_.exit[last] && !counted) {
        counted = true;
        if (++withGaps <= kNamed) {
          named += (named.empty() ? "" : ", ") + name(i) + " (" + place(last) + " ends at " +
                   exitText(last) + ", " + place(i) + " begins at " + entryText(i) + ")";
        }
      }
      if (response_.exit[i] >= response_.exit[last]) last = i;
    }
    if (withGaps == 0) return result;
    if (withGaps > kNamed) named += " and " + text::grouped(withGaps - kNamed) + " more";
    result.gaps = report::Note{
        "subjectGaps",
        (withGaps == 1 ? "one subject has" : text::grouped(withGaps) + " subjects have") +
            " times between rows at which nobody observes " + (withGaps == 1 ? "it" : "them") +
            ": " + named,
        {}};
    return result;
  }

  const frame::Frame& data_;
  const engine::Response& response_;
  const engine::Rows& rows_;
  const frame::Labels& subjects_;
  model::DatedTimes dated_;
};

}  // namespace

CoxSubjects checkSubjects(const frame::Frame& data, const engine::Response& response,
                          const engine::Rows& rows, const frame::Labels& subjects,
                          model::DatedTimes dated) {
  return Subjects(data, response, rows, subjects, dated).check();
}

}  // namespace survmeth::analysis
