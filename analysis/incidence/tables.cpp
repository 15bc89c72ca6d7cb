// Tables of curves, readings, times lost and what groups differ by.
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "analysis/incidence/describe.h"
#include "report/build.h"
#include "text/lists.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace incidence = engine::incidence;
namespace key = report::key;
using engine::curves::Contrast;
using report::Kind;

// Rows that each belong to a type of event and a group.
template <class Item>
class TypeTable {
 public:
  TypeTable(std::string id, std::string caption)
      : id_(std::move(id)), caption_(std::move(caption)) {}

  void add(const std::string& event, const std::string& group, const Item& item) {
    events_.push_back(event);
    groups_.push_back(group);
    items_.push_back(item);
  }
  bool empty() const { return items_.empty(); }
  TypeTable& begin(const std::string& status, const std::string& group) {
    table_ = report::tableOf(std::move(id_), std::move(caption_),
                             {report::labelColumn(key::kEvent, status, std::move(events_))});
    if (!group.empty()) {
      table_.columns.push_back(report::labelColumn(key::kGroup, group, std::move(groups_)));
    }
    return *this;
  }
  TypeTable& labels(const char* key, std::string heading, std::vector<std::string> labels) {
    table_.columns.push_back(report::labelColumn(key, std::move(heading), std::move(labels)));
    return *this;
  }
  TypeTable& column(const char* key, std::string heading, Kind kind, double Item::*member) {
    table_.columns.push_back(report::columnOf(key, std::move(heading), kind, items_, member));
    return *this;
  }
  TypeTable& limits(double alpha, Kind kind) {
    const std::string level = report::confidence(alpha) + " ";
    return column(key::kLower, level + "lower", kind, &Item::lower)
        .column(key::kUpper, level + "upper", kind, &Item::upper);
  }
  report::Table made() { return std::move(table_); }

 private:
  std::string id_, caption_;
  std::vector<std::string> events_, groups_;
  std::vector<Item> items_;
  report::Table table_;
};

struct Timed : Contrast {
  double time = 0;
};

struct Reading : incidence::Reading {
  double kaplanMeier = engine::curves::kAbsent;
};

struct Pair : engine::curves::PairTest {};

report::Table readingTable(const IncidenceAnswer& answer, const IncidenceRequest& request) {
  TypeTable<Reading> table("incidenceAt", "Cumulative incidence at " + request.time);
  for (const IncidenceOfType& type : answer.types) {
    for (std::size_t g = 0; g < type.at.size(); ++g) {
      const incidence::Curve& curve = answer.curves[g];
      const std::vector<double> complement =
          request.kaplanMeier ? incidence::kaplanMeierComplement(curve, type.cause)
                              : std::vector<double>();
      for (const incidence::Reading& each : type.at[g]) {
        Reading reading{each};
        if (request.kaplanMeier && each.incidence == each.incidence) {
          const std::size_t after = incidence::timesUntil(curve, each.time);
          reading.kaplanMeier = after == 0 ? 0.0 : complement[after - 1];
        }
        table.add(type.label, answer.group.labels[g], reading);
      }
    }
  }
  table.begin(request.status, text::joined(request.group))
      .column(key::kTime, request.time, Kind::kTime, &Reading::time)
      .column(key::kCumulativeIncidence, "incidence", Kind::kProbability, &Reading::incidence)
      .column(key::kStandardError, "std error", Kind::kProbability, &Reading::standardError)
      .limits(request.alpha, Kind::kProbability);
  if (request.kaplanMeier) {
    table.column(key::kKaplanMeierComplement, "1 - Kaplan-Meier", Kind::kProbability,
                 &Reading::kaplanMeier);
  }
  report::Table made = table.made();
  if (request.kaplanMeier && answer.event.competing()) {
    made.remarks.push_back("1 - Kaplan-Meier overstates the probability of the event.");
  }
  return made;
}

template <class Item>
TypeTable<Item>& withContrast(TypeTable<Item>& table, double alpha, Kind kind) {
  return table.column(key::kEstimate, "estimate", kind, &Item::estimate)
      .column(key::kStandardError, "std error", kind, &Item::standardError)
      .limits(alpha, kind)
      .column(key::kZ, "z", Kind::kStatistic, &Item::z)
      .column(key::kPValue, "p-value", Kind::kPValue, &Item::pValue);
}

report::Table differenceTable(const IncidenceAnswer& answer, const IncidenceRequest& request) {
  TypeTable<Timed> table("differences",
                         "Differences of incidence against " + answer.group.labels.front());
  for (const IncidenceOfType& type : answer.types) {
    for (std::size_t g = 0; g < type.differences.size(); ++g) {
      for (std::size_t i = 0; i < answer.at.size(); ++i) {
        table.add(type.label, answer.group.labels[g + 1],
                  Timed{{type.differences[g][i]}, answer.at[i]});
      }
    }
  }
  table.begin(request.status, text::joined(request.group))
      .column(key::kTime, request.time, Kind::kTime, &Timed::time);
  return withContrast(table, request.alpha, Kind::kEstimate).made();
}

report::Table lostTable(const IncidenceAnswer& answer, const IncidenceRequest& request) {
  TypeTable<incidence::TimeLost> table("timeLost",
                                       "Mean time lost up to " + text::brief(*request.tau));
  for (const IncidenceOfType& type : answer.types) {
    for (std::size_t g = 0; g < type.lost.size(); ++g) {
      table.add(type.label, answer.group.labels[g], type.lost[g]);
    }
  }
  return table.begin(request.status, text::joined(request.group))
      .column(key::kTimeLost, "time lost", Kind::kEstimate, &incidence::TimeLost::lost)
      .column(key::kStandardError, "std error", Kind::kEstimate,
              &incidence::TimeLost::standardError)
      .limits(request.alpha, Kind::kEstimate)
      .made();
}

report::Table lostContrastTable(const IncidenceAnswer& answer, const IncidenceRequest& request) {
  TypeTable<Contrast> table("timeLostContrasts",
                            "Time lost against " + answer.group.labels.front());
  std::vector<std::string> statistics;
  for (const IncidenceOfType& type : answer.types) {
    for (std::size_t g = 0; g < type.lostContrasts.size(); ++g) {
      table.add(type.label, answer.group.labels[g + 1], type.lostContrasts[g].difference);
      table.add(type.label, answer.group.labels[g + 1], type.lostContrasts[g].ratio);
      statistics.insert(statistics.end(), {"difference", "ratio"});
    }
  }
  table.begin(request.status, text::joined(request.group))
      .labels(key::kStatistic, "", std::move(statistics));
  report::Table made = withContrast(table, request.alpha, Kind::kEstimate).made();
  made.remarks.push_back("The standard error of a ratio is that of its logarithm.");
  return made;
}

report::Table pairTable(const IncidenceAnswer& answer, const IncidenceRequest& request) {
  std::vector<std::string> first, second, event;
  std::vector<Pair> pairs;
  for (const IncidenceOfType& type : answer.types) {
    for (const engine::curves::PairTest& pair : type.pairs) {
      event.push_back(type.label);
      first.push_back(answer.group.labels[pair.first]);
      second.push_back(answer.group.labels[pair.second]);
      pairs.push_back({pair});
    }
  }
  report::Table table = report::tableOf(
      "pairs", "Equal cumulative incidence in two groups?",
      {report::labelColumn(key::kEvent, request.status, std::move(event)),
       report::labelColumn(key::kFirst, "first", std::move(first)),
       report::labelColumn(key::kSecond, "second", std::move(second)),
       report::columnOf(key::kChiSquare, "chi-square", Kind::kStatistic, pairs, &Pair::chiSquare),
       report::columnOf(key::kPValue, "p-value", Kind::kPValue, pairs, &Pair::pValue)});
  if (request.pairs != Pairs::kUnadjusted) {
    table.columns.push_back(
        report::columnOf(key::kAdjustedPValue, "adjusted", Kind::kPValue, pairs, &Pair::adjusted));
  }
  return table;
}

const char* adjustmentName(Pairs pairs) {
  switch (pairs) {
    case Pairs::kHolm:
      return ", adjusted by Holm's method";
    case Pairs::kBonferroni:
      return ", adjusted by Bonferroni's method";
    case Pairs::kBenjaminiHochberg:
      return ", adjusted by Benjamini and Hochberg's method";
    default:
      return "";
  }
}

}  // namespace

void describeIncidenceReadings(const IncidenceAnswer& answer, const IncidenceRequest& request,
                               report::Report& report) {
  const bool tested = answer.several() && !answer.types.empty() && answer.types[0].test;
  if (tested && request.pairs != Pairs::kNone) {
    report.tables.push_back(pairTable(answer, request));
    report.methods.push_back({std::string("pairs: the test of the rows of two groups") +
                                  adjustmentName(request.pairs) + ", for each type of event",
                              ""});
  }
  report.tables.push_back(readingTable(answer, request));
  if (answer.several()) {
    report.tables.push_back(differenceTable(answer, request));
    report.methods.push_back({"differences: of independent groups, normal as they are", ""});
  }
  if (!request.tau) return;
  report.tables.push_back(lostTable(answer, request));
  report.methods.push_back(
      {"time lost: area under the incidence from 0; ratios on the "
       "logarithmic scale",
       "Andersen, Statistics in Medicine 32 (2013) 5278-5285"});
  if (answer.several()) report.tables.push_back(lostContrastTable(answer, request));
  for (std::size_t g = 0; !answer.types.empty() && g < answer.curves.size(); ++g) {
    if (!answer.types[0].lost[g].extended) continue;
    report.notes.push_back(
        {"beyondFollowUp",
         (answer.several() ? "follow-up of the group " + text::quote(answer.group.labels[g])
                           : std::string("follow-up")) +
             " ends before tau; the time lost takes the incidences as constant from there",
         {answer.group.labels[g]}});
  }
}

report::Table incidenceTable(const IncidenceAnswer& answer, const IncidenceRequest& request) {
  struct Row {
    double time, atRisk, events, censored, incidence, standardError, lower, upper, hazard,
        hazardError;
  };
  const double z = engine::curves::normalQuantile(1 - request.alpha);
  TypeTable<Row> table("incidence", "Cumulative incidence");
  for (const IncidenceOfType& type : answer.types) {
    for (std::size_t g = 0; g < answer.curves.size(); ++g) {
      const incidence::Curve& curve = answer.curves[g];
      const incidence::CauseCurve& of = curve.causes[type.cause];
      for (std::size_t i = 0; i < curve.time.size(); ++i) {
        const double error = of.standardError(i);
        const auto limits = incidence::limits(of.incidence[i], error, z, request.scale);
        table.add(
            type.label, answer.group.labels[g],
            {curve.time[i], curve.atRisk[i], of.eventsAt[i], curve.censoredAt[i], of.incidence[i],
             error, limits.lower, limits.upper, of.hazard[i], std::sqrt(of.hazardVariance[i])});
      }
    }
  }
  return table.begin(request.status, text::joined(request.group))
      .column(key::kTime, request.time, Kind::kTime, &Row::time)
      .column(key::kAtRisk, "at risk", Kind::kCount, &Row::atRisk)
      .column(key::kEvents, "events", Kind::kCount, &Row::events)
      .column(key::kCensored, "censored", Kind::kCount, &Row::censored)
      .column(key::kCumulativeIncidence, "incidence", Kind::kProbability, &Row::incidence)
      .column(key::kStandardError, "std error", Kind::kProbability, &Row::standardError)
      .limits(request.alpha, Kind::kProbability)
      .column(key::kCumulativeHazard, "hazard", Kind::kEstimate, &Row::hazard)
      .column(key::kHazardStandardError, "std error", Kind::kEstimate, &Row::hazardError)
      .made();
}

}  // namespace survmeth::analysis
