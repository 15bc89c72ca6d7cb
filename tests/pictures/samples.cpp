#include "tests/pictures/samples.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace survmeth::pictures::test {

using report::Figure;
using report::Panel;
using report::Series;
using report::SeriesKind;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

Panel panelOf(const std::string& xLabel, const std::string& yLabel) {
  Panel panel;
  panel.x.label = xLabel;
  panel.y.label = yLabel;
  return panel;
}

void wantProbabilities(report::Axis& axis) {
  axis.least = 0;
  axis.most = 1;
  axis.percent = true;
}

Series line(const std::string& name, std::vector<double> x, std::vector<double> y) {
  Series series;
  series.name = name;
  series.x = std::move(x);
  series.y = std::move(y);
  return series;
}

Figure figureOf(const std::string& id, const std::string& title, std::vector<Panel> panels) {
  Figure figure;
  figure.id = id;
  figure.title = title;
  figure.panels = std::move(panels);
  return figure;
}

}  // namespace

std::vector<double> uniform(std::size_t n, unsigned seed) {
  std::mt19937 bits(seed);
  std::vector<double> values;
  for (std::size_t i = 0; i < n; ++i) values.push_back((bits() + 0.5) / 4294967296.0);
  return values;
}

Figure survival(std::size_t groups) {
  Panel panel = panelOf("Time since randomisation (weeks)", "Survival");
  wantProbabilities(panel.y);
  panel.x.least = 0;
  report::RiskTable table;
  table.title = "At risk";
  for (int t = 0; t <= 100; t += 20) table.breaks.push_back(t);
  std::vector<Series> curves;
  for (std::size_t g = 0; g < groups; ++g) {
    const std::string name = "treatment = arm " + std::to_string(g + 1);
    Series curve, band;
    curve.kind = SeriesKind::kStep;
    band.kind = SeriesKind::kBand;
    band.stepped = true;
    curve.name = band.name = name;
    std::vector<double> atRisk(table.breaks.size());
    double level = 1;
    const std::vector<double> fall = uniform(30, static_cast<unsigned>(g) + 1);
    for (std::size_t i = 0; i < fall.size(); ++i) {
      const double time = 100.0 * static_cast<double>(i) / 29;
      if (i > 0) level *= 1 - (0.2 + 0.8 * fall[i]) * 0.03 * (1 + static_cast<double>(g) * 0.6);
      const double half = 0.014 * std::sqrt(static_cast<double>(i)) * (0.3 + level);
      curve.x.push_back(time);
      curve.y.push_back(level);
      band.x.push_back(time);
      band.lower.push_back(std::max(level - half, 0.0));
      band.upper.push_back(std::min(level + half, 1.0));
      if (i % 5 == 3) curve.ticks.push_back(time + 1);
      for (std::size_t b = 0; b < atRisk.size(); ++b) {
        if (table.breaks[b] >= time) atRisk[b] = std::floor(120 * level);
      }
    }
    panel.series.push_back(band);
    curves.push_back(curve);
    table.rows.push_back(name);
    table.counts.push_back(atRisk);
  }
  panel.series.insert(panel.series.end(), curves.begin(), curves.end());
  Figure figure = figureOf("survival", "Survival by treatment, 95% limits (log-log)", {panel});
  figure.riskTable = table;
  return figure;
}

Figure roc() {
  Panel panel = panelOf("1 − specificity", "Sensitivity");
  wantProbabilities(panel.x);
  wantProbabilities(panel.y);
  panel.equalUnits = true;
  for (const double power : {0.25, 0.45, 0.8}) {
    Series curve = line("marker to the power " + std::to_string(power).substr(0, 4), {}, {});
    for (int i = 0; i <= 40; ++i) {
      curve.x.push_back(i / 40.0);
      curve.y.push_back(std::pow(i / 40.0, power));
    }
    panel.series.push_back(curve);
  }
  Series chance = line("", {0, 1}, {0, 1});
  chance.guide = true;
  panel.series.push_back(chance);
  return figureOf("roc", "ROC curves, positive: outcome = poor", {panel});
}

Figure blandAltman(std::size_t n) {
  Panel panel = panelOf("Mean of both methods (mmol/l)", "Difference (mmol/l)");
  Series points;
  points.kind = SeriesKind::kPoints;
  const std::vector<double> x = uniform(n, 3), a = uniform(n, 4), b = uniform(n, 5);
  for (std::size_t i = 0; i < n; ++i) {
    points.x.push_back(4 + 8 * x[i]);
    points.y.push_back(0.2 + (a[i] + b[i] - 1) * 1.2);
  }
  for (const double at : {-0.75, 0.2, 1.15}) {
    Series band;
    band.kind = SeriesKind::kBand;
    band.name = "95% limits of each line";
    band.x = {-kInfinity, kInfinity};
    band.lower = {at - 0.08, at - 0.08};
    band.upper = {at + 0.08, at + 0.08};
    panel.series.push_back(band);
  }
  panel.series.push_back(points);
  panel.references = {{false, 0, "zero"},
                      {false, 0.2, "bias 0.20"},
                      {false, 1.15, "upper limit 1.15"},
                      {false, -0.75, "lower limit −0.75"}};
  return figureOf("agreement", "Differences against means", {panel});
}

Figure deming(std::size_t n) {
  Panel panel = panelOf("Method A (mg/dl)", "Method B (mg/dl)");
  panel.equalUnits = true;
  Series points;
  points.kind = SeriesKind::kPoints;
  const std::vector<double> x = uniform(n, 6), noise = uniform(n, 7);
  for (std::size_t i = 0; i < n; ++i) {
    points.x.push_back(50 + 100 * x[i]);
    points.y.push_back(60 + 95 * x[i] + 20 * (noise[i] - 0.5));
  }
  Series identity = line("identity", {-1000, 1000}, {-1000, 1000});
  identity.guide = true;
  panel.series = {points, identity, line("Deming line", {-1000, 1000}, {-937.5, 962.5})};
  return figureOf("deming", "Deming regression of method B on method A", {panel});
}

Figure forest() {
  Panel panel = panelOf("Hazard ratio (log scale)", "");
  panel.x.scale = report::Scale::kLog;
  panel.y.scale = report::Scale::kCategory;
  panel.y.categories = {"age (by 10 years)",
                        "female",
                        "male",
                        "placebo",
                        "low dose",
                        "high dose, taken twice a day with a meal for as long as tolerated",
                        "never reached"};
  panel.y.categoryGroups = {"", "sex", "sex", "treatment", "treatment", "treatment", "treatment"};
  Series points;
  points.kind = SeriesKind::kPoints;
  points.x = {1.34, 1, 1.71, 1, 0.62, 0.41, 0.55};
  points.y = {0, 1, 2, 3, 4, 5, 6};
  points.left = {1.1, kNone, 1.02, kNone, 0.4, 0.22, 0};
  points.right = {1.63, kNone, 2.87, kNone, 0.96, 0.76, kInfinity};
  points.labels = {"1.34 (1.10 to 1.63)", "1 (reference)",       "1.71 (1.02 to 2.87)",
                   "1 (reference)",       "0.62 (0.40 to 0.96)", "0.41 (0.22 to 0.76)",
                   "0.55 (0 to ∞)"};
  points.labelsHeading = "Hazard ratio (95% limits)";
  panel.series = {points};
  panel.references = {{true, 1, ""}};
  return figureOf("forest", "Hazard ratios with 95% limits", {panel});
}

Figure incidence() {
  Panel panel = panelOf("Years", "Cumulative incidence");
  wantProbabilities(panel.y);
  panel.x.least = 0;
  for (int cause = 0; cause < 3; ++cause) {
    static const char* const kNames[] = {"relapse", "death in remission", "graft failure"};
    Series area = line(kNames[cause], {}, {});
    area.kind = SeriesKind::kArea;
    area.stepped = true;
    for (int i = 0; i <= 10; ++i) {
      area.x.push_back(i);
      area.y.push_back((0.3 - 0.08 * cause) * (1 - std::exp(-0.3 * i)));
    }
    panel.series.push_back(area);
  }
  return figureOf("incidence", "Cumulative incidence of the competing causes", {panel});
}

Figure scales() {
  std::vector<Panel> panels;
  for (const report::Scale scale : {report::Scale::kLinear, report::Scale::kLog,
                                    report::Scale::kCloglog, report::Scale::kProbit}) {
    Panel panel = panelOf("Time", "Failed");
    panel.title = "Weibull, shape 1.5";
    panel.y.scale = scale;
    panel.y.percent = true;
    if (scale != report::Scale::kLinear) panel.x.scale = report::Scale::kLog;
    Series curve = line("distribution", {}, {});
    for (int i = 1; i <= 60; ++i) {
      const double time = 0.1 * i;
      curve.x.push_back(time);
      curve.y.push_back(-std::expm1(-std::pow(time / 3, 1.5)));
    }
    panel.series.push_back(curve);
    panels.push_back(panel);
  }
  return figureOf("scales", "One distribution on four scales", panels);
}

Figure bars() {
  Panel panel = panelOf("Stage", "Patients");
  panel.x.scale = report::Scale::kCategory;
  panel.x.categories = {"I", "II", "III, with spread to the neighbouring nodes", "IV"};
  Series counts = line("", {0, 1, 2, 3}, {12, 30, 22, 5});
  counts.kind = SeriesKind::kBars;
  panel.series = {counts};
  return figureOf("stages", "Patients by stage", {panel});
}

Figure scatter(const std::vector<double>& x, const std::vector<double>& y) {
  Panel panel = panelOf("x", "y");
  Series points;
  points.kind = SeriesKind::kPoints;
  points.x = x;
  points.y = y;
  panel.series = {points};
  return figureOf("scatter", "Points", {panel});
}

}  // namespace survmeth::pictures::test
