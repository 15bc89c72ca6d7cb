// Events per person-time, who is at risk when, and smoothed hazards.
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "analysis/life/describe.h"
#include "analysis/life/itemTable.h"
#include "analysis/stepFigure.h"
#include "report/build.h"
#include "report/keys.h"
#include "text/numbers.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;
namespace key = report::key;
using report::Kind;

report::Table rateTable(const LifeAnswer& answer) {
  using curves::Rate;
  return ItemTable<Rate>("rates", "Events per person-time", answer.readings.rates,
                         lifeGroups(answer))
      .add(key::kFrom, answer.request.time + " after", Kind::kTime, &Rate::from)
      .add(key::kTo, "to", Kind::kTime, &Rate::to)
      .add(key::kEvents, "events", Kind::kCount, &Rate::events)
      .add(key::kPersonTime, "person-time", Kind::kEstimate, &Rate::personTime)
      .add(key::kRate, "rate", Kind::kEstimate, &Rate::rate)
      .limits(report::confidence(answer.request.alpha), Kind::kEstimate)
      .made();
}

// The ratio of an interval.
struct Ratio : curves::RateRatio {
  double from = kNone, to = kNone;
};

report::Table ratioTable(const LifeAnswer& answer) {
  const LifeReadings& readings = answer.readings;
  std::vector<std::vector<Ratio>> rows(readings.rateRatios.size());
  for (std::size_t g = 0; g < rows.size(); ++g) {
    for (std::size_t i = 0; i < readings.rateRatios[g].size(); ++i) {
      rows[g].push_back(
          {readings.rateRatios[g][i], readings.rates[g][i].from, readings.rates[g][i].to});
    }
  }
  return ItemTable<Ratio>("rateRatios", "Rates over that of " + answer.labels().front(), rows,
                          lifeGroups(answer))
      .add(key::kFrom, answer.request.time + " after", Kind::kTime, &Ratio::from)
      .add(key::kTo, "to", Kind::kTime, &Ratio::to)
      .add(key::kRatio, "ratio", Kind::kEstimate, &Ratio::ratio)
      .limits(report::confidence(answer.request.alpha), Kind::kEstimate)
      .add(key::kPValue, "p-value", Kind::kPValue, &Ratio::pValue)
      .made();
}

// A count at its time.
struct Count : curves::RiskCount {
  double time = kNone;
};

}  // namespace

void addLifeRates(const LifeAnswer& answer, report::Report& report) {
  const LifeReadings& readings = answer.readings;
  if (!readings.hazards.empty()) {
    report.methods.push_back(
        {"hazard: Epanechnikov's kernel of bandwidth " + text::brief(*answer.request.hazard) +
             " over the steps of the cumulative hazard, boundary kernels at both ends; limits on "
             "the logarithmic scale",
         "Ramlau-Hansen, Ann Statist 11 (1983) 453-466; Klein & Moeschberger, Survival Analysis, "
         "2nd ed. (2003) 6.2"});
  }
  if (readings.rates.empty()) return;
  report.tables.push_back(rateTable(answer));
  if (readings.rateRatios.size() > 1) report.tables.push_back(ratioTable(answer));
  if (answer.robust) {
    report.methods.push_back(
        {"rates: events over person-time; no exact limits, for rows are "
         "weighted by sampling or depend on each other",
         ""});
    return;
  }
  report.methods.push_back(
      {"rates: events over person-time in intervals (after, to], exact Poisson limits; ratios: "
       "exact given the sum of the events",
       "Garwood, Biometrika 28 (1936) 437-442"});
}

std::optional<report::Table> lifeRiskTable(const LifeAnswer& answer) {
  const std::vector<double> times = lifeRiskTimes(answer);
  const auto found = curves::riskTable(answer.rows.response(), answer.rows.rows(),
                                       answer.rows.groupCodes(), times);
  std::vector<std::vector<Count>> counts(found.size());
  for (std::size_t g = 0; g < found.size(); ++g) {
    for (std::size_t i = 0; i < times.size(); ++i) counts[g].push_back({found[g][i], times[i]});
  }
  return ItemTable<Count>("atRisk", "At risk", counts, lifeGroups(answer))
      .add(key::kTime, answer.request.time, Kind::kTime, &Count::time)
      .add(key::kAtRisk, "at risk", Kind::kCount, &Count::atRisk)
      .add(key::kEvents, "events since", Kind::kCount, &Count::events)
      .add(key::kCumulativeEvents, "events until", Kind::kCount, &Count::cumulativeEvents)
      .add(key::kCumulativeCensored, "censored until", Kind::kCount, &Count::cumulativeCensored)
      .made();
}

std::optional<report::Table> lifeHazardTable(const LifeAnswer& answer) {
  if (answer.readings.hazards.empty()) return {};
  using curves::HazardRate;
  return ItemTable<HazardRate>("hazard", "Smoothed hazard", answer.readings.hazards,
                               lifeGroups(answer))
      .add(key::kTime, answer.request.time, Kind::kTime, &HazardRate::time)
      .add(key::kHazard, "hazard", Kind::kEstimate, &HazardRate::rate)
      .add(key::kStandardError, "std error", Kind::kEstimate, &HazardRate::standardError)
      .limits(report::confidence(answer.request.alpha), Kind::kEstimate)
      .made();
}

}  // namespace survmeth::analysis
