#include "analysis/curveReadings.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "report/build.h"
#include "report/keys.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;
namespace key = report::key;
using report::Kind;

curves::Scale scaleOf(CurveLimits limits) {
  switch (limits) {
    case CurveLimits::kLogLog:
      return curves::Scale::kLogLog;
    case CurveLimits::kLog:
      return curves::Scale::kLog;
    case CurveLimits::kPlain:
      break;
  }
  return curves::Scale::kPlain;
}

// A table of as many rows for each group as it has items.
template <class Item>
class ItemTable {
 public:
  ItemTable(std::string id, std::string caption, const std::vector<std::vector<Item>>& groups,
            const CurveNames& names)
      : table_(report::tableOf(std::move(id), std::move(caption), {})) {
    std::vector<std::string> labels;
    for (std::size_t g = 0; g < groups.size(); ++g) {
      labels.insert(labels.end(), groups[g].size(), names.labels[g]);
      items_.insert(items_.end(), groups[g].begin(), groups[g].end());
    }
    table_.columns.push_back(report::labelColumn(
        key::kGroup, names.group.empty() ? "group" : names.group, std::move(labels)));
  }
  ItemTable& add(const char* key, std::string heading, Kind kind, double Item::*member) {
    table_.columns.push_back(report::columnOf(key, std::move(heading), kind, items_,
                                              [member](const Item& item) { return item.*member; }));
    return *this;
  }
  report::Table made() { return std::move(table_); }

 private:
  report::Table table_;
  std::vector<Item> items_;
};

// A reading with its number at risk.
struct At : curves::Reading {
  double atRisk = kNone;
};

report::Table survivalAtTable(const Readings& readings, const CurveNames& names) {
  const std::string level = report::confidence(names.alpha) + " ";
  std::vector<std::vector<At>> at(readings.at.size());
  for (std::size_t g = 0; g < at.size(); ++g) {
    for (std::size_t i = 0; i < readings.at[g].size(); ++i) {
      at[g].push_back({readings.at[g][i], readings.risk[g][i].atRisk});
    }
  }
  return ItemTable<At>("survivalAt", "Survival at " + names.time, at, names)
      .add(key::kTime, names.time, Kind::kTime, &At::time)
      .add(key::kAtRisk, "at risk", Kind::kCount, &At::atRisk)
      .add(key::kSurvival, "survival", Kind::kProbability, &At::survival)
      .add(key::kStandardError, "std error", Kind::kProbability, &At::standardError)
      .add(key::kLower, level + "lower", Kind::kProbability, &At::lower)
      .add(key::kUpper, level + "upper", Kind::kProbability, &At::upper)
      .made();
}

report::Table meansTable(const Readings& readings, const CurveNames& names) {
  using Mean = curves::RestrictedMean;
  const std::string level = report::confidence(names.alpha) + " ";
  std::vector<std::vector<Mean>> means;
  for (const Mean& mean : readings.means) means.push_back({mean});
  return ItemTable<Mean>(
             "restrictedMeans",
             "Mean survival restricted to " + text::brief(readings.means.front().horizon), means,
             names)
      .add(key::kMean, "mean", Kind::kEstimate, &Mean::mean)
      .add(key::kStandardError, "std error", Kind::kEstimate, &Mean::standardError)
      .add(key::kLower, level + "lower", Kind::kEstimate, &Mean::lower)
      .add(key::kUpper, level + "upper", Kind::kEstimate, &Mean::upper)
      .add(key::kTimeLost, "time lost", Kind::kEstimate, &Mean::lost)
      .made();
}

report::Table contrastsTable(const Readings& readings, const CurveNames& names) {
  std::vector<std::string> groups, statistics;
  std::vector<curves::Contrast> rows;
  for (std::size_t i = 0; i < readings.contrasts.size(); ++i) {
    const curves::MeanContrasts& contrasts = readings.contrasts[i];
    const std::pair<const char*, curves::Contrast> each[] = {
        {"difference of means", contrasts.difference},
        {"ratio of means", contrasts.ratio},
        {"ratio of times lost", contrasts.lostRatio}};
    for (const auto& [statistic, contrast] : each) {
      groups.push_back(names.labels[i + 1]);
      statistics.emplace_back(statistic);
      rows.push_back(contrast);
    }
  }
  const std::string level = report::confidence(names.alpha) + " ";
  const auto column = [&](const char* key, std::string heading, Kind kind,
                          double curves::Contrast::*member) {
    return report::columnOf(key, std::move(heading), kind, rows,
                            [member](const curves::Contrast& row) { return row.*member; });
  };
  report::Table table = report::tableOf(
      "meanContrasts", "Restricted means against " + names.labels.front(),
      {report::labelColumn(key::kGroup, names.group, std::move(groups)),
       report::labelColumn(key::kStatistic, "", std::move(statistics)),
       column(key::kEstimate, "estimate", Kind::kEstimate, &curves::Contrast::estimate),
       column(key::kStandardError, "std error", Kind::kEstimate, &curves::Contrast::standardError),
       column(key::kLower, level + "lower", Kind::kEstimate, &curves::Contrast::lower),
       column(key::kUpper, level + "upper", Kind::kEstimate, &curves::Contrast::upper),
       column(key::kZ, "z", Kind::kStatistic, &curves::Contrast::z),
       column(key::kPValue, "p-value", Kind::kPValue, &curves::Contrast::pValue)});
  table.remarks.push_back("The standard error of a ratio is that of its logarithm.");
  return table;
}

}  // namespace

Readings readingsOf(const SurvivalData& data, const ReadingsRequest& request, double alpha,
                    CurveLimits limits) {
  Readings result;
  if (request.quantiles.empty() && request.at.empty() && !request.tau) return result;
  const std::vector<std::uint32_t> event(data.event.begin(), data.event.end());
  const engine::Response response{{}, data.time, event, 1};
  engine::Rows rows;
  rows.weight = data.weight;
  const curves::Groups groups{data.group, data.groups};
  curves::Options options;
  options.scale = scaleOf(limits);
  options.level = 1 - alpha;
  const curves::Sample sample(response, rows, groups, 0.0);
  const std::vector<curves::Curve> estimates = curves::estimate(sample, rows, options);
  for (const curves::Curve& curve : estimates) {
    if (!request.quantiles.empty()) {
      result.quantiles.push_back(curves::quantiles(curve, request.quantiles));
    }
    if (!request.at.empty()) {
      result.at.push_back(curves::readings(curve, request.at, false, options.scale));
    }
  }
  if (!request.at.empty()) result.risk = curves::riskTable(response, rows, groups, request.at);
  if (request.tau) {
    result.means = curves::restrictedMeans(sample, rows, estimates, options, *request.tau);
    for (std::size_t g = 1; g < result.means.size(); ++g) {
      result.contrasts.push_back(
          curves::compareMeans(result.means[0], result.means[g], options.level));
    }
  }
  return result;
}

void describeReadings(const Readings& readings, const CurveNames& names, report::Report& report) {
  if (!readings.quantiles.empty()) {
    using curves::Quantile;
    const std::string level = report::confidence(names.alpha) + " ";
    report.tables.push_back(
        ItemTable<Quantile>("quantiles", "Quantiles of " + names.time, readings.quantiles, names)
            .add(key::kProbability, "probability", Kind::kProbability, &Quantile::probability)
            .add(key::kTime, names.time, Kind::kTime, &Quantile::time)
            .add(key::kLower, level + "lower", Kind::kTime, &Quantile::lower)
            .add(key::kUpper, level + "upper", Kind::kTime, &Quantile::upper)
            .made());
    report.methods.push_back(
        {"quantiles: where the curve falls to 1 - probability, in the manner of the median",
         "Brookmeyer & Crowley, Biometrics 38 (1982) 29-41"});
  }
  if (!readings.at.empty()) report.tables.push_back(survivalAtTable(readings, names));
  if (readings.means.empty()) return;
  report.tables.push_back(meansTable(readings, names));
  report.methods.push_back(
      {"restricted means: area under the curve from 0; variance: sum of the squared area from "
       "each event time on, times d / (n (n - d)); ratios on the logarithmic scale",
       "Klein & Moeschberger, Survival Analysis, 2nd ed. (2003) 4.5"});
  if (!readings.contrasts.empty()) report.tables.push_back(contrastsTable(readings, names));
  for (std::size_t g = 0; g < readings.means.size(); ++g) {
    if (!readings.means[g].extended) continue;
    report.notes.push_back(
        {"beyondFollowUp",
         (names.group.empty() ? std::string("follow-up")
                              : "follow-up of the group " + text::quote(names.labels[g])) +
             " ends before tau; the mean takes survival as constant from there",
         {names.labels[g]}});
  }
}

}  // namespace survmeth::analysis
