// Incidences at the covariates' means at every event time, their figure, and the residuals.
#include <string>
#include <utility>
#include <vector>

#include "analysis/finegray/finegray.h"
#include "analysis/stepFigure.h"
#include "engine/curves/limits.h"
#include "engine/finegray/hazards.h"
#include "numerics/partOfProgress.h"
#include "report/build.h"
#include "report/numbers.h"

namespace survmeth::analysis {
namespace {

namespace finegray = engine::finegray;
namespace key = report::key;
using report::Kind;

// Rows of each event time of each type of event and stratum.
template <class Work>
void eachTime(const FineGrayAnswer& answer, const Work& work) {
  for (const FineGrayOfType& type : answer.types) {
    const auto& a = type.fit.problem->rows.arrangement;
    for (std::size_t s = 0; s < a.strata(); ++s) {
      for (std::size_t k = a.stratumTime[s]; k < a.stratumTime[s + 1]; ++k) work(type, s, k);
    }
  }
}

// Labels and times of such rows.
report::Table timeTable(const FineGrayAnswer& answer, const char* id, std::string caption) {
  std::vector<std::string> events, strata;
  std::vector<double> times;
  eachTime(answer, [&](const FineGrayOfType& type, std::size_t s, std::size_t k) {
    const auto& a = type.fit.problem->rows.arrangement;
    events.push_back(type.label);
    strata.push_back(answer.strata.empty() ? "all" : answer.strata[a.stratumCode[s]]);
    times.push_back(a.time[k]);
  });
  return report::tableOf(id, std::move(caption),
                         {report::labelColumn(key::kEvent, answer.status, std::move(events)),
                          report::labelColumn(key::kStratum, "stratum", std::move(strata)),
                          report::numberColumn(key::kTime, "time", Kind::kTime, times)});
}

}  // namespace

const engine::cox::BaselineHazard& FineGrayHazard::of(const finegray::Fit& fit,
                                                      numerics::Progress& progress) const {
  const std::lock_guard<std::mutex> lock(made_->mutex);
  if (!made_->hazard) made_->hazard.emplace(finegray::hazardSums(fit, progress));
  return *made_->hazard;
}

std::vector<std::vector<IncidenceAtTime>> fineGrayCurves(const FineGrayOfType& type,
                                                         const FineGrayAnswer& answer,
                                                         const FineGrayRequest& request,
                                                         numerics::Progress& progress) {
  const engine::cox::BaselineHazard& hazard = type.hazard(progress);
  const double z = engine::curves::normalQuantile(1 - request.alpha);
  std::vector<std::vector<IncidenceAtTime>> curves;
  for (const std::uint32_t stratum : hazard.strata()) {
    curves.push_back(incidencesOf(hazard.at(answer.means, 0, stratum), z, request.incidenceScale));
  }
  return curves;
}

std::optional<report::Table> fineGrayBaseline(const FineGrayAnswer& answer,
                                              const FineGrayRequest& request,
                                              numerics::Progress& progress) {
  report::Table table =
      timeTable(answer, "baseline", "Cumulative incidence at the covariates' means");
  std::vector<IncidenceAtTime> all;
  for (std::size_t i = 0; i < answer.types.size(); ++i) {
    numerics::PartOfProgress part(progress, i, answer.types.size());
    for (const auto& curve : fineGrayCurves(answer.types[i], answer, request, part)) {
      all.insert(all.end(), curve.begin(), curve.end());
    }
  }
  addIncidenceColumns(all, request.alpha, table);
  return table;
}

std::optional<report::Figure> fineGrayFigure(const FineGrayAnswer& answer,
                                             const FineGrayRequest& request,
                                             numerics::Progress& progress) {
  if (answer.types.empty()) return {};
  report::Figure figure;
  figure.id = "incidence";
  figure.title = "Cumulative incidence at the covariates' means";
  figure.caption =
      "By proportional subdistribution hazards, each type of event by a model of its own, with " +
      report::confidence(request.alpha) + " limits (" + nameOf(request.incidenceScale) + ").";
  std::vector<std::string> names;
  std::vector<std::vector<std::vector<IncidenceAtTime>>> curves;
  for (std::size_t i = 0; i < answer.types.size(); ++i) {
    numerics::PartOfProgress part(progress, i, answer.types.size());
    names.push_back(answer.status + " " + answer.types[i].label);
    curves.push_back(fineGrayCurves(answer.types[i], answer, request, part));
  }
  const auto& first = answer.types.front().fit.problem->rows.arrangement;
  for (std::size_t s = 0; s < first.strata(); ++s) {
    std::vector<IncidenceCurve> drawn;
    for (std::size_t i = 0; i < curves.size(); ++i) drawn.push_back({names[i], curves[i][s]});
    // The end of follow-up.
    const double end = first.codeTime[first.exitCode[first.stratumRow[s + 1] - 1]];
    figure.panels.push_back(incidencePanel(drawn, end));
    if (!answer.strata.empty()) {
      figure.panels.back().title = answer.strata[first.stratumCode[s]];
    }
  }
  shareAxes(figure);
  return figure;
}

std::optional<report::Table> fineGrayResiduals(const FineGrayAnswer& answer,
                                               const FineGrayRequest&) {
  report::Table table =
      timeTable(answer, "residuals", "Covariates of the events less their weighted means");
  std::vector<std::vector<double>> columns(answer.names.size());
  for (const FineGrayOfType& type : answer.types) {
    for (const std::vector<double>& row : finegray::schoenfeld(type.fit)) {
      for (std::size_t j = 0; j < row.size(); ++j) columns[j].push_back(row[j]);
    }
  }
  for (std::size_t j = 0; j < columns.size(); ++j) {
    table.columns.push_back(
        report::numberColumn(std::string(key::kSchoenfeld) + " " + answer.names[j], answer.names[j],
                             Kind::kEstimate, columns[j]));
  }
  return table;
}

}  // namespace survmeth::analysis
