// Counts and quartiles, the curves themselves with their bands, the actuarial table.
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "analysis/life/describe.h"
#include "report/build.h"
#include "report/keys.h"
#include "text/lists.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using engine::curves::Band;
using engine::curves::Curve;
using engine::curves::Quantile;
using report::Kind;

report::Table summaryTable(const LifeAnswer& answer) {
  const auto counts = [&](const char* key, const char* heading, double Curve::*member) {
    return report::columnOf(key, heading, Kind::kCount, answer.curves, member);
  };
  const auto times = [&](const char* key, const std::string& heading, Quantile LifeSummary::*of,
                         double Quantile::*member) {
    return report::columnOf(key, heading, Kind::kTime, answer.summaries,
                            [of, member](const LifeSummary& row) { return row.*of.*member; });
  };
  const std::string level = report::confidence(answer.request.alpha);
  using Row = LifeSummary;
  return report::tableOf(
      "summary", "Median survival",
      {lifeGroups(answer),
       report::numberColumn(key::kRows, "rows", Kind::kCount, answer.rows.groups.counts),
       counts(key::kN, "n", &Curve::n), counts(key::kEvents, "events", &Curve::events),
       counts(key::kCensored, "censored", &Curve::censored),
       times(key::kMedian, "median", &Row::median, &Quantile::time),
       times(key::kLower, level + " lower", &Row::median, &Quantile::lower),
       times(key::kUpper, level + " upper", &Row::median, &Quantile::upper),
       times(key::kLowerQuartile, "25%", &Row::lowerQuartile, &Quantile::time),
       times(key::kUpperQuartile, "75%", &Row::upperQuartile, &Quantile::time),
       report::columnOf(key::kFollowUp, "follow-up", Kind::kTime, answer.summaries,
                        &Row::followUp)});
}

// What heads the parts of a long table: nothing where there is one.
report::Column partsOf(const LifeAnswer& answer) {
  return report::labelColumn(key::kGroup, text::joined(answer.request.group), answer.labels());
}

// A row for each interval of each group.
report::Table intervalTable(const LifeAnswer& answer) {
  using Row = LifeInterval;
  using enum Kind;
  return report::partedRowsOf("actuarial", "Actuarial table", partsOf(answer), answer.intervals)
      .column(key::kIntervalStart, answer.request.time + " from", kTime, &Row::lower)
      .column(key::kIntervalEnd, "to below", kTime, &Row::upper)
      .column(key::kEntering, "entering", kCount, &Row::entering)
      .column(key::kEvents, "events", kCount, &Row::events)
      .column(key::kCensored, "censored", kCount, &Row::censored)
      .column(key::kEffective, "effective", kCount, &Row::effective)
      .column(key::kEventProbability, "event probability", kProbability, &Row::conditional)
      .column(key::kSurvivalAtStart, "survival at start", kProbability, &Row::survivalAtStart)
      .column(key::kSurvivalAtEnd, "survival at end", kProbability, &Row::survivalAtEnd)
      .column(key::kStandardError, "std error", kProbability, &Row::standardError)
      .limits(report::confidence(answer.request.alpha), kProbability, &Row::limits)
      .column(key::kDensity, "density", kEstimate, &Row::density)
      .column(key::kDensityStandardError, "std error", kEstimate, &Row::densityError)
      .column(key::kHazard, "hazard", kEstimate, &Row::hazard)
      .column(key::kHazardStandardError, "std error", kEstimate, &Row::hazardError)
      .column(key::kMedianResidual, "median residual", kTime, &Row::medianResidual)
      .column(key::kMedianResidualStandardError, "std error", kTime, &Row::medianResidualError)
      .table();
}

// The interval and the critical value of each group's band.
report::Table bandTable(const LifeAnswer& answer) {
  return report::rowsOf("bands", std::string(lifeBandName(answer)) + " bands", answer.bands)
      .with(lifeGroups(answer))
      .column(key::kFrom, "from", Kind::kTime, &Band::from)
      .column(key::kTo, "to", Kind::kTime, &Band::to)
      .column(key::kCritical, "critical value", Kind::kStatistic, &Band::critical)
      .table();
}

template <class Of>
std::vector<double> errorsOf(const Curve& curve, Of of) {
  std::vector<double> errors(curve.time.size());
  for (std::size_t i = 0; i < errors.size(); ++i) errors[i] = (curve.*of)(i);
  return errors;
}

// The limits of all bands one after another.
report::Column bandColumn(const LifeAnswer& answer, const char* key, const char* heading,
                          std::vector<double> Band::*member) {
  std::vector<double> values;
  for (const Band& band : answer.bands) {
    values.insert(values.end(), (band.*member).begin(), (band.*member).end());
  }
  return {key, heading, Kind::kProbability, std::move(values)};
}

report::Table curveTable(const LifeAnswer& answer, const char* id, const std::string& caption) {
  const std::string level = report::confidence(answer.request.alpha);
  const auto standardErrors = [](const Curve& curve) {
    return errorsOf(curve, &Curve::standardError);
  };
  const auto hazardErrors = [](const Curve& curve) { return errorsOf(curve, &Curve::hazardError); };
  report::Table table =
      report::partedRowsOf(id, caption, partsOf(answer), answer.curves, &Curve::time)
          .numbers(key::kTime, answer.request.time, Kind::kTime, &Curve::time)
          .numbers(key::kAtRisk, "at risk", Kind::kCount, &Curve::atRisk)
          .numbers(key::kEvents, "events", Kind::kCount, &Curve::eventsAt)
          .numbers(key::kCensored, "censored", Kind::kCount, &Curve::censoredAt)
          .numbers(key::kSurvival, "survival", Kind::kProbability, &Curve::survival)
          .numbers(key::kStandardError, "std error", Kind::kProbability, standardErrors)
          .numbers(key::kLower, level + " lower", Kind::kProbability, &Curve::lower)
          .numbers(key::kUpper, level + " upper", Kind::kProbability, &Curve::upper)
          .numbers(key::kCumulativeHazard, "cumulative hazard", Kind::kEstimate, &Curve::hazard)
          .numbers(key::kCumulativeHazardStandardError, "std error", Kind::kEstimate, hazardErrors)
          .table();
  if (!answer.bands.empty()) {
    table.columns.push_back(bandColumn(answer, key::kBandLower, "band lower", &Band::lower));
    table.columns.push_back(bandColumn(answer, key::kBandUpper, "band upper", &Band::upper));
  }
  return table;
}

}  // namespace

report::Column lifeGroups(const LifeAnswer& answer) {
  const std::vector<std::string>& columns = answer.request.group;
  return report::labelColumn(key::kGroup, columns.empty() ? "group" : text::joined(columns),
                             answer.labels());
}

const char* lifeBandName(const LifeAnswer& answer) {
  return answer.request.band == engine::curves::BandKind::kHallWellner ? "Hall-Wellner"
                                                                       : "Equal-precision";
}

void addLifeTables(const LifeAnswer& answer, report::Report& report) {
  report.tables.push_back(summaryTable(answer));
  if (!answer.intervals.empty()) report.tables.push_back(intervalTable(answer));
  if (!answer.bands.empty()) report.tables.push_back(bandTable(answer));
}

std::optional<report::Table> lifeKaplanMeierTable(const LifeAnswer& answer) {
  if (answer.request.estimate != LifeEstimate::kKaplanMeier) return {};
  return curveTable(answer, "kaplanMeier", "Kaplan-Meier table");
}

std::optional<report::Table> lifeCurveTable(const LifeAnswer& answer) {
  if (answer.request.estimate == LifeEstimate::kKaplanMeier) return {};
  return curveTable(answer, "curves", lifeEstimateName(answer) + " table");
}

}  // namespace survmeth::analysis
