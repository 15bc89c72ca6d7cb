#include "cli/coxReport.h"

#include <algorithm>
#include <cmath>

#include "cli/shell/gnuplot.h"
#include "cli/shell/numbers.h"
#include "cli/shell/textTable.h"

namespace cli {
namespace {

using survmeth::CoxCoefficient;
using survmeth::CoxModel;
using survmeth::CoxTest;

constexpr const char* kMethod = "Cox regression, Breslow's treatment of ties";

Json testJson(const CoxTest& test) {
  return {{"chiSquare", number(test.chiSquare)},
          {"degreesOfFreedom", number(test.degreesOfFreedom)},
          {"pValue", number(test.p)}};
}

std::string centreText(const CoxModel& model) {
  std::string text;
  for (std::size_t j = 0; j < model.centre.size(); ++j) {
    if (model.coefficients[j].constant) continue;
    text += (text.empty() ? "" : ", ") + model.coefficients[j].name + " " + brief(model.centre[j]);
  }
  return text;
}

}  // namespace

std::string coxText(const CoxReport& report) {
  const CoxModel& model = report.model;
  std::string text = std::string(kMethod) + "\n" + grouped(model.n) + " rows, " +
                     counted(model.events, "event", "events");
  if (!report.strata.empty()) {
    text +=
        ", " + counted(report.stratumNames.size(), "stratum", "strata") + " of " + report.strata;
  }
  text += "\n\n";
  if (report.selected) {
    text += "Backward removal at p " + brief(report.removeAt) + " (Wald): ";
    if (model.removed.empty()) text += "nothing removed";
    for (std::size_t i = 0; i < model.removed.size(); ++i) {
      text +=
          (i > 0 ? ", " : "") + model.removed[i].name + " (p " + pValue(model.removed[i].p) + ")";
    }
    text += "\n\n";
  }
  TextTable table({{""},
                   {"coef", kRight},
                   {"exp(coef)", kRight},
                   {"se", kRight},
                   {"z", kRight},
                   {"p", kRight},
                   {confidence(report.alpha) + "% lower", kRight},
                   {"upper", kRight}});
  for (const CoxCoefficient& c : model.coefficients) {
    table.row({c.name, brief(c.coef), brief(c.hazardRatio), brief(c.se), fixed(c.z, 2), pValue(c.p),
               brief(c.lower), brief(c.upper)});
  }
  text += table.text() + "\n";
  TextTable tests({{"all coefficients 0"}, {"chi-square", kRight}, {"df", kRight}, {"p", kRight}});
  const auto row = [&tests](const char* name, const CoxTest& test) {
    tests.row({name, fixed(test.chiSquare, 4), brief(test.degreesOfFreedom), pValue(test.p)});
  };
  row("likelihood ratio", model.likelihoodRatio);
  row("score", model.score);
  row("Wald", model.wald);
  text += tests.text();
  text += "\nLog-likelihood " + fixed(model.logLikNull, 4) + " without, " + fixed(model.logLik, 4) +
          " with the covariates, " + counted(model.iterations, "iteration", "iterations") +
          "\nConcordance " + fixed(model.concordance, 4) + " (Harrell)\n";
  text += "Limits are those of exp(coef). The baseline holds at " + centreText(model) + ".\n";
  return text;
}

Json coxJson(const Session& session, const Table& table, const CoxReport& report) {
  const CoxModel& model = report.model;
  Json json = session.json(table);
  json["method"] = kMethod;
  json["time"] = report.time;
  json["event"] = report.event;
  json["strata"] = report.strata.empty() ? Json() : Json(report.strata);
  json["stratumNames"] = report.stratumNames;
  json["alpha"] = number(report.alpha);
  json["n"] = model.n;
  json["events"] = model.events;
  json["coefficients"] = Json::array();
  for (std::size_t j = 0; j < model.coefficients.size(); ++j) {
    const CoxCoefficient& c = model.coefficients[j];
    json["coefficients"].push_back({{"name", c.name},
                                    {"coef", number(c.coef)},
                                    {"hazardRatio", number(c.hazardRatio)},
                                    {"standardError", number(c.se)},
                                    {"z", number(c.z)},
                                    {"pValue", number(c.p)},
                                    {"lower", number(c.lower)},
                                    {"upper", number(c.upper)},
                                    {"mean", number(model.centre[j])}});
  }
  json["tests"] = {{"likelihoodRatio", testJson(model.likelihoodRatio)},
                   {"score", testJson(model.score)},
                   {"wald", testJson(model.wald)}};
  json["logLikelihood"] = {{"null", number(model.logLikNull)}, {"model", number(model.logLik)}};
  json["iterations"] = model.iterations;
  json["concordance"] = number(model.concordance);
  json["removed"] = Json::array();
  for (const survmeth::CoxRemoval& removed : model.removed) {
    json["removed"].push_back({{"name", removed.name},
                               {"chiSquare", number(removed.chiSquare)},
                               {"pValue", number(removed.p)}});
  }
  json["notes"] = session.notes();
  return json;
}

std::string coxResiduals(const Table& table, const CoxReport& report) {
  const CoxModel& model = report.model;
  std::string text = "line,time,event,martingale,deviance";
  for (const CoxCoefficient& c : model.coefficients) {
    CsvWriter quoted({"schoenfeld " + c.name});
    text += "," + quoted.text().substr(0, quoted.text().size() - 1);
  }
  text += "\n";
  CsvWriter csv({});
  csv.text() = std::move(text);
  for (std::size_t i = 0; i < table.rows; ++i) {
    csv.cell(static_cast<double>(table.line(i)));
    csv.cell(table.columns[0].numbers[i]);
    csv.cell(table.columns[1].labels[table.columns[1].codes[i]]);
    csv.cell(model.martingale[i]);
    csv.cell(model.deviance[i]);
    for (const std::vector<double>& column : model.schoenfeld) csv.cell(column[i]);
    csv.endRow();
  }
  return csv.text();
}

std::string coxBaseline(const CoxReport& report) {
  CsvWriter csv({"stratum", "time", "cumulative hazard", "survival"});
  for (std::size_t s = 0; s < report.model.baseline.size(); ++s) {
    const survmeth::CoxBaseline& baseline = report.model.baseline[s];
    for (std::size_t k = 0; k < baseline.time.size(); ++k) {
      csv.cell(report.strata.empty() ? "all" : report.stratumNames[s]);
      csv.cell(baseline.time[k]);
      csv.cell(baseline.cumulativeHazard[k]);
      csv.cell(baseline.survival[k]);
      csv.endRow();
    }
  }
  return csv.text();
}

std::string coxPlot(const std::string& file, const CoxReport& report) {
  const Picture picture = pictureOf(file);
  std::vector<CoxCoefficient> rows = report.model.coefficients;
  std::erase_if(rows, [](const CoxCoefficient& c) { return c.constant; });
  const int count = static_cast<int>(rows.size());
  double least = 1, most = 1;
  for (const CoxCoefficient& c : rows) {
    least = std::min(least, c.lower);
    most = std::max(most, c.upper);
  }
  const double margin = std::pow(most / least, 0.08);
  std::string script = terminalLine(picture, 820, 150 + 34 * count);
  script += "set title " +
            gnuplotText("Hazard ratios with " + confidence(report.alpha) + "% limits") + "\n";
  script += "set logscale x\nset xrange [" + exact(least / margin) + ":" + exact(most * margin) +
            "]\nset yrange [" + exact(-count + 0.4) + ":0.6]\n";
  script +=
      "set xlabel 'hazard ratio (log scale)'\nset border 1 lc rgb '#333333'\n"
      "set tics nomirror out\nset rmargin 26\n"
      "set arrow from 1, graph 0 to 1, graph 1 nohead dt (4,4) lc rgb '#777777'\n"
      "set ytics (";
  for (int i = 0; i < count; ++i) {
    script += (i > 0 ? ", " : "") + gnuplotText(rows[i].name) + " " + std::to_string(-i);
  }
  script += ") scale 0\n";
  // A narrow range needs its own marks: the powers of ten may lie outside it.
  if (most / least < 30) {
    script += "set xtics (0.05, 0.1, 0.2, 0.3, 0.5, 0.7, 1, 1.5, 2, 3, 5, 7, 10, 20)\n";
  }
  std::string block = "$rows << EOD\n";
  for (int i = 0; i < count; ++i) {
    block += exact(rows[i].hazardRatio) + " " + std::to_string(-i) + " " + exact(rows[i].lower) +
             " " + exact(rows[i].upper) + "\n";
    script += "set label " +
              gnuplotText(brief(rows[i].hazardRatio, 3) + " (" + brief(rows[i].lower, 3) + " to " +
                          brief(rows[i].upper, 3) + ")") +
              " at graph 1.03, first " + std::to_string(-i) + " left\n";
  }
  return script + block + "EOD\n" +
         "plot $rows using 1:2:3:4 with xerrorbars pt 5 ps 1 lw 1.8 lc rgb '#0072B2' "
         "notitle\n";
}

}  // namespace cli
