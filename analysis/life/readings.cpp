// Quantiles, survival at given times, restricted means.
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "analysis/life/describe.h"
#include "analysis/life/itemTable.h"
#include "report/build.h"
#include "report/keys.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;
namespace key = report::key;
using report::Kind;

report::Table quantileTable(const LifeAnswer& answer, const LifeRequest& request) {
  using curves::Quantile;
  return ItemTable<Quantile>("quantiles", "Quantiles of " + request.time, answer.readings.quantiles,
                             lifeGroups(answer, request))
      .add(key::kProbability, "probability", Kind::kProbability, &Quantile::probability)
      .add(key::kTime, request.time, Kind::kTime, &Quantile::time)
      .limits(report::confidence(request.alpha), Kind::kTime)
      .made();
}

// A reading with its number at risk.
struct At : curves::Reading {
  double atRisk = kNone;
};

report::Table survivalAtTable(const LifeAnswer& answer, const LifeRequest& request) {
  const LifeReadings& readings = answer.readings;
  std::vector<std::vector<At>> at(readings.at.size());
  for (std::size_t g = 0; g < at.size(); ++g) {
    for (std::size_t i = 0; i < readings.at[g].size(); ++i) {
      at[g].push_back({readings.at[g][i], readings.risk[g][i].atRisk});
    }
  }
  return ItemTable<At>("survivalAt", "Survival at " + request.time, at, lifeGroups(answer, request))
      .add(key::kTime, request.time, Kind::kTime, &At::time)
      .add(key::kAtRisk, "at risk", Kind::kCount, &At::atRisk)
      .add(key::kSurvival, "survival", Kind::kProbability, &At::survival)
      .add(key::kStandardError, "std error", Kind::kProbability, &At::standardError)
      .limits(report::confidence(request.alpha), Kind::kProbability)
      .made();
}

report::Table meansTable(const LifeAnswer& answer, const LifeRequest& request) {
  using Mean = curves::RestrictedMean;
  std::vector<std::vector<Mean>> means;
  for (const Mean& mean : answer.readings.means) means.push_back({mean});
  return ItemTable<Mean>(
             "restrictedMeans",
             "Mean survival restricted to " + text::brief(answer.readings.means.front().horizon),
             means, lifeGroups(answer, request))
      .add(key::kMean, "mean", Kind::kEstimate, &Mean::mean)
      .add(key::kStandardError, "std error", Kind::kEstimate, &Mean::standardError)
      .limits(report::confidence(request.alpha), Kind::kEstimate)
      .add(key::kTimeLost, "time lost", Kind::kEstimate, &Mean::lost)
      .made();
}

// An estimate of a group against the first.
struct Against : curves::Contrast {
  std::string statistic;
};

report::Table contrastsTable(const LifeAnswer& answer, const LifeRequest& request) {
  std::vector<std::vector<Against>> rows(1);  // none of the first group
  for (const curves::MeanContrasts& each : answer.readings.contrasts) {
    rows.push_back({{each.difference, "difference of means"},
                    {each.ratio, "ratio of means"},
                    {each.lostRatio, "ratio of times lost"}});
  }
  report::Table table =
      ItemTable<Against>("meanContrasts",
                         "Restricted means against " + answer.rows.groups.labels.front(), rows,
                         lifeGroups(answer, request))
          .add(key::kStatistic, "", Kind::kLabel, &Against::statistic)
          .add(key::kEstimate, "estimate", Kind::kEstimate, &Against::estimate)
          .add(key::kStandardError, "std error", Kind::kEstimate, &Against::standardError)
          .limits(report::confidence(request.alpha), Kind::kEstimate)
          .add(key::kZ, "z", Kind::kStatistic, &Against::z)
          .add(key::kPValue, "p-value", Kind::kPValue, &Against::pValue)
          .made();
  table.remarks.push_back("The standard error of a ratio is that of its logarithm.");
  return table;
}

void addMeans(const LifeAnswer& answer, const LifeRequest& request, report::Report& report) {
  const LifeReadings& readings = answer.readings;
  report.tables.push_back(meansTable(answer, request));
  report.methods.push_back(
      {"restricted means: area under the curve from 0; variance: sum of the squared area from "
       "each event time on, times d / (n (n - d)); ratios on the logarithmic scale",
       "Klein & Moeschberger, Survival Analysis, 2nd ed. (2003) 4.5"});
  if (!readings.contrasts.empty()) report.tables.push_back(contrastsTable(answer, request));
  for (std::size_t g = 0; g < readings.means.size(); ++g) {
    if (!readings.means[g].extended) continue;
    const std::string& label = answer.rows.groups.labels[g];
    report.notes.push_back(
        {"beyondFollowUp",
         (request.group.empty() ? std::string("follow-up")
                                : "follow-up of the group " + text::quote(label)) +
             " ends before tau; the mean takes survival as constant from there",
         {label}});
  }
}

}  // namespace

void addLifeReadings(const LifeAnswer& answer, const LifeRequest& request, report::Report& report) {
  if (!answer.readings.quantiles.empty()) {
    report.tables.push_back(quantileTable(answer, request));
    report.methods.push_back(
        {"quantiles: where the curve falls to 1 - probability, in the manner of the median",
         "Brookmeyer & Crowley, Biometrics 38 (1982) 29-41"});
  }
  if (!answer.readings.at.empty()) report.tables.push_back(survivalAtTable(answer, request));
  if (!answer.readings.means.empty()) addMeans(answer, request, report);
}

}  // namespace survmeth::analysis
