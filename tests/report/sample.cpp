#include "tests/report/sample.h"

#include <cmath>
#include <limits>

namespace survmeth::report::test {

Report sample() {
  Report report;
  report.analysis = "life";
  report.title = "Survival by treatment";
  report.summary = "Half of those on placebo relapsed within 8 weeks, of those on 6-MP within 23.";
  report.data = {"data/leukemia.csv", "5f2c", 43, 42};
  report.plan = {{"time", std::string("weeks")},
                 {"event", std::vector<std::string>{"relapse", "death"}},
                 {"level", 0.95, true},
                 {"ratio", 2.5},
                 {"bounds", std::vector<double>{0, 4.5}},
                 {"exact", true},
                 {"plain", false}};
  report.facts = {{"n", "Subjects", Kind::kCount, 42.0},
                  {"logLikelihood", "Log-likelihood", Kind::kStatistic, -729.48870},
                  {"limits", "", Kind::kLabel, std::string("log-log")},
                  {"weighted", "Weighted", Kind::kLabel, false},
                  {"bound", "Bound", Kind::kEstimate, std::monostate()}};
  const double none = std::nan("");
  Table groups = tableOf({labels("group", "treatment", {"6-MP", "placebo"}),
                          numbers("n", "n", Kind::kCount, {21, 21}),
                          numbers("median", "median", Kind::kTime, {23, 8}),
                          numbers("lower", "95% lower", Kind::kTime, {13, 4}),
                          numbers("upper", "95% upper", Kind::kTime, {none, 11})});
  groups.id = "groups";
  groups.caption = "Median survival";
  groups.remarks = {"The upper limit of 6-MP is not reached."};
  Table curve = tableOf({labels("group", "treatment", {"6-MP", "6-MP", "placebo"}),
                         numbers("time", "weeks", Kind::kTime, {6, 7, 1}),
                         numbers("survival", "survival", Kind::kProbability,
                                 {0.857142857142857, 0.806722689075630, 0.904761904761905})});
  curve.id = "curve";
  curve.caption = "Kaplan-Meier table";
  curve.partedBy = "group";
  Table residuals = tableOf({numbers("line", "line", Kind::kCount, {2, 3}),
                             numbers("residual", "residual", Kind::kEstimate,
                                     {0.1, -std::numeric_limits<double>::infinity()})});
  residuals.id = "residuals";
  residuals.caption = "Residuals";
  residuals.display = Display::kFilesOnly;
  report.tables = {groups, curve, residuals};
  Figure figure;
  figure.id = "survival";
  figure.title = "Survival";
  figure.caption = "Kaplan-Meier curves of both groups.";
  Panel panel;
  panel.x = {.label = "weeks", .least = 0.0, .most = std::nullopt, .ticks = {}, .categories = {}};
  panel.y = {.label = "survival", .least = {}, .most = {}, .ticks = {}, .categories = {}};
  Series series;
  series.name = "6-MP";
  series.kind = SeriesKind::kStep;
  series.x = {0, 6, 7};
  series.y = {1, 0.857142857142857, 0.806722689075630};
  series.ticks = {6};
  panel.series = {series};
  panel.references = {{true, 23, "median"}};
  figure.panels = {panel};
  figure.riskTable = RiskTable{"At risk", {0, 10}, {"6-MP"}, {{21, 15}}};
  report.figures = {figure};
  report.methods = {{"Curve: product-limit.", "Kaplan & Meier, JASA 53 (1958) 457-481"},
                    {"Limits: 95% log-log from the Greenwood sum.", ""}};
  report.notes = {{"rowsLeftOut", "1 of 43 rows left out: missing in \"weeks\" (1)", {"weeks"}}};
  return report;
}

std::vector<std::string> hostileLabels() {
  return {"",
          "a \"quoted\" 'label'",
          "<script>alert(1)</script>",
          "</td></table><b onmouseover=alert(1)>&amp;",
          "two\nlines\r\nand a\ttab",
          "\x1b[31mred\x07 \x7f",
          "\xC2\x9B"
          "31m",
          "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D",
          "\xE2\x80\xAE"
          "turned",
          "\xE5\xAF\xBE\xE7\x85\xA7",
          "\xF0\x9F\x9A\x91 ambulance",
          "comma, semicolon; tab",
          "not UTF-8: \xFF\xC3",
          "=1+1",
          std::string(300, 'x'),
          "\\back\\slash"};
}

Report hostile() {
  const std::vector<std::string> all = hostileLabels();
  Report report;
  std::string together;
  for (const std::string& each : all) together += each + ' ';
  report.analysis = report.title = report.summary = together;
  report.data = {together, together, 1, 1};
  report.plan = {{"column", all}};
  for (std::size_t i = 0; i < all.size(); ++i) {
    report.facts.push_back({"fact" + std::to_string(i), all[i], Kind::kLabel, all[i]});
    report.methods.push_back({all[i], all[i]});
    report.notes.push_back({"code", all[i], {all[i]}});
  }
  Table table =
      tableOf({labels("label", together, all),
               numbers("number", together, Kind::kEstimate, std::vector<double>(all.size(), 0.5))});
  table.caption = together;
  table.remarks = all;
  report.tables = {table};
  table.id = "parted";
  table.partedBy = "label";
  report.tables.push_back(table);
  Figure figure;
  figure.id = "figure";
  figure.title = figure.caption = together;
  Panel panel;
  panel.title = panel.x.label = panel.y.label = together;
  panel.x.categories = all;
  Series series;
  series.name = together;
  series.labels = all;
  series.x = series.y = std::vector<double>(all.size(), 1);
  panel.series = {series};
  panel.references = {{false, 0, together}};
  figure.panels = {panel};
  figure.riskTable =
      RiskTable{together, {0}, all, std::vector<std::vector<double>>(all.size(), {1})};
  report.figures = {figure};
  return report;
}

}  // namespace survmeth::report::test
