// Restricted means and what the groups' means differ by.
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

report::Table meansTable(const LifeAnswer& answer) {
  using Mean = curves::RestrictedMean;
  std::vector<std::vector<Mean>> means;
  for (const Mean& mean : answer.readings.means) means.push_back({mean});
  const std::string level = report::confidence(answer.request.alpha);
  return ItemTable<Mean>(
             "restrictedMeans",
             "Mean survival restricted to " + text::brief(answer.readings.means.front().horizon),
             means, lifeGroups(answer))
      .add(key::kMean, "mean", Kind::kEstimate, &Mean::mean)
      .add(key::kStandardError, "std error", Kind::kEstimate, &Mean::standardError)
      .limits(level, Kind::kEstimate)
      .add(key::kTimeLost, "time lost", Kind::kEstimate, &Mean::lost)
      .add(key::kTimeLostLower, level + " lower", Kind::kEstimate, &Mean::lostLower)
      .add(key::kTimeLostUpper, level + " upper", Kind::kEstimate, &Mean::lostUpper)
      .made();
}

// An estimate of a group against the first.
struct Against : curves::Contrast {
  std::string statistic;
};

report::Table contrastsTable(const LifeAnswer& answer) {
  std::vector<std::vector<Against>> rows(1);  // none of the first group
  for (const curves::MeanContrasts& each : answer.readings.contrasts) {
    rows.push_back({{each.difference, "difference of means"},
                    {each.ratio, "ratio of means"},
                    {each.lostRatio, "ratio of times lost"}});
  }
  report::Table table =
      ItemTable<Against>("meanContrasts", "Restricted means against " + answer.labels().front(),
                         rows, lifeGroups(answer))
          .add(key::kStatistic, "", Kind::kLabel, &Against::statistic)
          .add(key::kEstimate, "estimate", Kind::kEstimate, &Against::estimate)
          .add(key::kStandardError, "std error", Kind::kEstimate, &Against::standardError)
          .limits(report::confidence(answer.request.alpha), Kind::kEstimate)
          .add(key::kZ, "z", Kind::kStatistic, &Against::z)
          .add(key::kPValue, "p-value", Kind::kPValue, &Against::pValue)
          .made();
  table.remarks.push_back("The standard error of a ratio is that of its logarithm.");
  return table;
}

std::string varianceInWords(const LifeAnswer& answer) {
  if (answer.robust) return "variance: robust";
  return "variance: sum of the squared area from each event time on, times " +
         std::string(answer.request.estimate == LifeEstimate::kKaplanMeier
                         ? "d / (n (n - d))"
                         : "the variance of the hazard's step");
}

}  // namespace

void addLifeMeans(const LifeAnswer& answer, report::Report& report) {
  const LifeReadings& readings = answer.readings;
  if (readings.means.empty()) return;
  report.tables.push_back(meansTable(answer));
  const std::string horizon = answer.request.tau ? ""
                                                 : std::string(" to ") +
                                                       text::brief(readings.means.front().horizon) +
                                                       ", the smallest of the groups' last times";
  report.methods.push_back({"restricted means: area under the curve from 0" + horizon + "; " +
                                varianceInWords(answer) + "; ratios on the logarithmic scale",
                            "Klein & Moeschberger, Survival Analysis, 2nd ed. (2003) 4.5"});
  if (!readings.contrasts.empty()) report.tables.push_back(contrastsTable(answer));
  for (std::size_t g = 0; g < readings.means.size(); ++g) {
    if (!readings.means[g].extended) continue;
    const std::string& label = answer.labels()[g];
    report.notes.push_back(
        {"beyondFollowUp",
         (answer.request.group.empty() ? std::string("follow-up")
                                       : "follow-up of the group " + text::quote(label)) +
             " ends before tau; the mean takes survival as constant from there",
         {label}});
  }
}

}  // namespace survmeth::analysis
