// Quantiles, survival at given times and its differences between the groups.
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "analysis/life/describe.h"
#include "analysis/life/itemTable.h"
#include "analysis/limits.h"
#include "report/build.h"
#include "report/keys.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;
namespace key = report::key;
using report::Kind;

report::Table quantileTable(const LifeAnswer& answer) {
  using curves::Quantile;
  return ItemTable<Quantile>("quantiles", "Quantiles of " + answer.request.time,
                             answer.readings.quantiles, lifeGroups(answer))
      .add(key::kProbability, "probability", Kind::kProbability, &Quantile::probability)
      .add(key::kTime, answer.request.time, Kind::kTime, &Quantile::time)
      .limits(report::confidence(answer.request.alpha), Kind::kTime)
      .made();
}

// A reading with its number at risk.
struct At : curves::Reading {
  double atRisk = kNone;
};

report::Table survivalAtTable(const LifeAnswer& answer) {
  const LifeReadings& readings = answer.readings;
  std::vector<std::vector<At>> at(readings.at.size());
  for (std::size_t g = 0; g < at.size(); ++g) {
    for (std::size_t i = 0; i < readings.at[g].size(); ++i) {
      at[g].push_back({readings.at[g][i], readings.risk[g][i].atRisk});
    }
  }
  return ItemTable<At>("survivalAt", "Survival at " + answer.request.time, at, lifeGroups(answer))
      .add(key::kTime, answer.request.time, Kind::kTime, &At::time)
      .add(key::kAtRisk, "at risk", Kind::kCount, &At::atRisk)
      .add(key::kSurvival, "survival", Kind::kProbability, &At::survival)
      .add(key::kStandardError, "std error", Kind::kProbability, &At::standardError)
      .limits(report::confidence(answer.request.alpha), Kind::kProbability)
      .made();
}

// A difference at its time.
struct Difference : curves::Contrast {
  double time = kNone;
};

std::string transformName(curves::Scale scale) {
  switch (scale) {
    case curves::Scale::kPlain:
      return "survival";
    case curves::Scale::kLog:
      return "log S";
    case curves::Scale::kLogLog:
      return "log(-log S)";
    case curves::Scale::kLogit:
      return "logit S";
    case curves::Scale::kArcsine:
      break;
  }
  return "arcsin sqrt S";
}

report::Table differenceTable(const LifeAnswer& answer) {
  const LifeReadings& readings = answer.readings;
  std::vector<std::vector<Difference>> rows(readings.contrastAt.size());
  for (std::size_t g = 0; g < rows.size(); ++g) {
    for (std::size_t i = 0; i < readings.contrastAt[g].size(); ++i) {
      rows[g].push_back({readings.contrastAt[g][i], readings.at[g][i].time});
    }
  }
  return ItemTable<Difference>("survivalContrasts",
                               "Differences of " + transformName(*answer.request.difference) +
                                   " from " + answer.labels().front(),
                               rows, lifeGroups(answer))
      .add(key::kTime, answer.request.time, Kind::kTime, &Difference::time)
      .add(key::kDifference, "difference", Kind::kEstimate, &Difference::estimate)
      .add(key::kStandardError, "std error", Kind::kEstimate, &Difference::standardError)
      .limits(report::confidence(answer.request.alpha), Kind::kEstimate)
      .add(key::kZ, "z", Kind::kStatistic, &Difference::z)
      .add(key::kPValue, "p-value", Kind::kPValue, &Difference::pValue)
      .made();
}

}  // namespace

void addLifeReadings(const LifeAnswer& answer, report::Report& report) {
  if (!answer.readings.quantiles.empty()) {
    report.tables.push_back(quantileTable(answer));
    report.methods.push_back(
        {"quantiles: where the curve falls to 1 - probability, in the manner of the median",
         "Brookmeyer & Crowley, Biometrics 38 (1982) 29-41"});
  }
  if (answer.readings.at.empty()) return;
  report.tables.push_back(survivalAtTable(answer));
  if (answer.readings.contrastAt.size() < 2) return;
  report.tables.push_back(differenceTable(answer));
  report.methods.push_back({"differences of survival: of " +
                                transformName(*answer.request.difference) +
                                " at one time, of independent groups",
                            "Klein, Logan, Harhoff & Andersen, Stat Med 26 (2007) 4505-4519"});
}

}  // namespace survmeth::analysis
