// The declaration of survmeth predict for fits of survmeth finegray, and what it says.
#include "analysis/finegray/predict.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "analysis/stepFigure.h"
#include "engine/curves/limits.h"
#include "model/response.h"
#include "numerics/elementary.h"
#include "numerics/partOfProgress.h"
#include "report/build.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using report::Kind;

constexpr std::size_t kShownRows = 100;

// As proportional hazards are asked, of one type of event.
CoxPredictRequest askedOf(const FineGrayPredictRequest& request, std::size_t type) {
  CoxPredictRequest asked;
  asked.fit = {request.fit, &request.fit->fits[type]};
  asked.at = request.at;
  asked.curves = request.curves;
  asked.alpha = request.alpha;
  return asked;
}

FineGrayPredictions fitPredictions(const frame::Frame& data, const FineGrayPredictRequest& request,
                                   numerics::Progress& progress) {
  FineGrayPredictions made;
  const std::size_t count = request.fit->fits.size();
  for (std::size_t i = 0; i < count; ++i) {
    numerics::PartOfProgress part(progress, i, count);
    made.types.push_back(predictCox(request.fit->fits[i], data, askedOf(request, i), part));
  }
  return made;
}

double quantileOf(const FineGrayPredictRequest& request) {
  return engine::curves::normalQuantile(1 - request.alpha);
}

IncidenceAtTime incidenceOf(const CoxSurvival& of, const FineGrayPredictRequest& request) {
  if (std::isnan(of.hazard)) return {.time = of.time};
  return incidenceOf(of.time, {of.hazard, of.hazardError}, quantileOf(request), request.scale);
}

// Rows that are each about a type of event and a line.
class LineTable {
 public:
  explicit LineTable(const FineGrayPredictRequest& request) : request_(request) {}
  void add(std::size_t type, double line, const std::string& stratum) {
    events_.push_back(request_.fit->events[type]);
    lines_.push_back(line);
    strata_.push_back(stratum);
  }
  report::Table begin(const char* id, std::string caption) {
    report::Table table =
        report::tableOf(id, std::move(caption),
                        {report::labelColumn(key::kEvent, request_.fit->status, std::move(events_)),
                         report::numberColumn(key::kLine, "line", Kind::kCount, lines_)});
    if (!request_.fit->fits.front().strata.empty()) {
      table.columns.push_back(report::labelColumn(key::kStratum, "stratum", std::move(strata_)));
    }
    return table;
  }

 private:
  const FineGrayPredictRequest& request_;
  std::vector<std::string> events_, strata_;
  std::vector<double> lines_;
};

std::string stratumOf(const CoxPredictions& made, std::size_t row) {
  return made.stratum.empty() ? "" : made.stratum[row];
}

report::Table riskTable(const FineGrayPredictions& made, const FineGrayPredictRequest& request) {
  struct Row {
    double predictor, standardError, risk, lower, upper;
  };
  LineTable lines(request);
  std::vector<Row> rows;
  for (std::size_t type = 0; type < made.types.size(); ++type) {
    const CoxPredictions& each = made.types[type];
    for (std::size_t i = 0; i < each.line.size(); ++i) {
      const double centre = each.predictor[i], spread = quantileOf(request) * each.standardError[i];
      lines.add(type, each.line[i], stratumOf(each, i));
      rows.push_back({centre, each.standardError[i], numerics::exp(centre),
                      numerics::exp(centre - spread), numerics::exp(centre + spread)});
    }
  }
  report::Table table =
      lines.begin("predictions", "Subdistribution hazard relative to the means of the covariates");
  const std::string level = report::confidence(request.alpha);
  const auto add = [&](const char* name, std::string heading, double Row::*member) {
    table.columns.push_back(
        report::columnOf(name, std::move(heading), Kind::kEstimate, rows, member));
  };
  add(key::kLinearPredictor, "linear predictor", &Row::predictor);
  add(key::kStandardError, "std error", &Row::standardError);
  add(key::kRisk, "risk", &Row::risk);
  add(key::kLower, level + " lower", &Row::lower);
  add(key::kUpper, level + " upper", &Row::upper);
  return table;
}

report::Table incidenceTable(LineTable& lines, const std::vector<IncidenceAtTime>& points,
                             const char* id, std::string caption,
                             const FineGrayPredictRequest& request) {
  report::Table table = lines.begin(id, std::move(caption));
  table.columns.push_back(
      report::columnOf(key::kTime, "time", Kind::kTime, points, &IncidenceAtTime::time));
  addIncidenceColumns(points, request.alpha, table);
  return table;
}

report::Report describe(const FineGrayPredictions& made, const FineGrayPredictRequest& request) {
  report::Report report;
  report.title = "Predicted cumulative incidence";
  const std::size_t rows = made.types.front().line.size();
  report.summary = text::counted(rows, "row", "rows") + ", " +
                   text::counted(made.types.size(), "type of event", "types of events") + ".";
  report.facts = {report::levelFact(request.alpha)};
  report.tables = {riskTable(made, request)};
  std::size_t unknown = 0;
  if (!request.at.empty()) {
    LineTable lines(request);
    std::vector<IncidenceAtTime> points;
    for (std::size_t type = 0; type < made.types.size(); ++type) {
      const CoxPredictions& each = made.types[type];
      for (std::size_t i = 0; i < each.at.size(); ++i) {
        for (const CoxSurvival& at : each.at[i]) {
          lines.add(type, each.line[i], stratumOf(each, i));
          points.push_back(incidenceOf(at, request));
          unknown += std::isnan(at.hazard) ? 1 : 0;
        }
      }
    }
    report.tables.push_back(incidenceTable(lines, points, "incidenceAt",
                                           "Cumulative incidence of the new data", request));
  }
  report.methods = {
      {"risk: exp(x'b) less its value at the means of the fit's covariates; limits: Wald", ""},
      incidenceMethod(request.alpha, request.scale)};
  if (unknown > 0) {
    report.notes.push_back(
        {"afterFollowUp", text::counted(unknown, "incidence is", "incidences are") +
                              " unknown: the time is after the last of the fit's stratum"});
  }
  if (rows > kShownRows) {
    for (report::Table& table : report.tables) table.display = report::Display::kFilesOnly;
    report.notes.push_back({"manyRows", "more than " + std::to_string(kShownRows) +
                                            " rows: the predictions are in --json and --out"});
  }
  return report;
}

std::optional<report::Table> curveTable(const FineGrayPredictions& made,
                                        const FineGrayPredictRequest& request) {
  if (!request.curves) return std::nullopt;
  LineTable lines(request);
  std::vector<IncidenceAtTime> points;
  for (std::size_t type = 0; type < made.types.size(); ++type) {
    const CoxPredictions& each = made.types[type];
    for (std::size_t i = 0; i < each.curves.size(); ++i) {
      for (const CoxSurvival& at : each.curves[i].points) {
        lines.add(type, each.line[i], each.curves[i].stratum);
        points.push_back(incidenceOf(at, request));
      }
    }
  }
  return incidenceTable(lines, points, "curves",
                        "Cumulative incidence of the new data at every event time", request);
}

// The last event of any type in each stratum: so far is known who is free of each.
std::map<std::string, double> lastEvents(const FineGrayPredictions& made) {
  std::map<std::string, double> last;
  for (const CoxPredictions& type : made.types) {
    for (const CoxPredictedCurve& each : type.curves) {
      if (each.points.empty()) continue;
      double& end = last[each.stratum];
      end = std::max(end, each.points.back().time);
    }
  }
  return last;
}

// A panel for each type of event, a curve for each row.
std::optional<report::Figure> curveFigure(const FineGrayPredictions& made,
                                          const FineGrayPredictRequest& request) {
  report::Figure figure;
  figure.id = "predictedIncidence";
  figure.title = "Predicted cumulative incidence";
  figure.caption = "At the covariates of each row with " + report::confidence(request.alpha) +
                   " limits (" + nameOf(request.scale) + ")";
  const std::map<std::string, double> ends = lastEvents(made);
  for (std::size_t type = 0; type < made.types.size(); ++type) {
    std::vector<IncidenceCurve> curves;
    for (const CoxPredictedCurve& each : made.types[type].curves) {
      if (each.points.empty() || curves.size() == kDrawnCurves) continue;
      IncidenceCurve& curve = curves.emplace_back();
      if (made.types[type].line.size() > 1) curve.name = "line " + each.name;
      if (!each.stratum.empty()) curve.name += (curve.name.empty() ? "" : ", ") + each.stratum;
      for (const CoxSurvival& at : each.points) curve.points.push_back(incidenceOf(at, request));
      const double end = ends.at(each.stratum);
      if (curve.points.back().time < end) {
        curve.points.push_back(curve.points.back());
        curve.points.back().time = end;
      }
    }
    if (curves.empty()) continue;
    figure.panels.push_back(incidencePanel(curves, 0));
    figure.panels.back().title = request.fit->status + " " + request.fit->events[type];
  }
  if (figure.panels.empty()) return std::nullopt;
  shareAxes(figure);
  const std::size_t rows = made.types.front().line.size();
  if (rows > kDrawnCurves) {
    figure.caption +=
        "; the first " + std::to_string(kDrawnCurves) + " of " + text::grouped(rows) + " are drawn";
  }
  figure.caption += ".";
  return figure;
}

}  // namespace

Declaration fineGrayPredictDeclaration() {
  return declare<FineGrayPredictRequest, FineGrayPredictions>(
             "predict", "Predicted incidences for new data from a saved fit")
      .numbers("at", &FineGrayPredictRequest::at,
               {.least = 0, .ascending = true, .expected = "ascending numbers not below 0"},
               "Times of predicted incidence")
      .choice("conf", &FineGrayPredictRequest::scale, incidenceScales(), "Limits of incidence")
      .number("alpha", &FineGrayPredictRequest::alpha, between(0, 1),
              "Significance level; limits have level 1 - A", "A")
      .without("0.05")
      .table("curves", &FineGrayPredictRequest::curves, "curves",
             "File for the curves at all event times (CSV)")
      .tables({"predictions", "incidenceAt"})
      .longTable("curves", curveTable)
      .figure("predictedIncidence", curveFigure)
      .details(
          "The new data have the columns of the fit's covariates and strata. A level or a stratum "
          "that the fit does not know is an error that names it.")
      .example("survmeth predict pbc.fit data/pbc.csv --at 365,1000")
      .follows(&FineGrayPredictRequest::fit)
      .adjustColumns([](const FineGrayPredictRequest& request, const std::vector<std::string>&,
                        std::vector<frame::Wanted>& wanted) {
        for (const frame::Wanted& each : request.fit->fits.front().columns) wanted.push_back(each);
      })
      .completeRows([](const frame::Frame& data, const FineGrayPredictRequest& request) {
        return model::completeRows(request.fit->fits.front().coding.formula(), data);
      })
      .fit(fitPredictions)
      .describe(describe);
}

}  // namespace survmeth::analysis
