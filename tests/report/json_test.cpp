// The report as JSON: the layout to the letter, and everything as another parser reads it.
#include "report/json.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>

#include "tests/report/sample.h"

namespace survmeth::report {
namespace {

using nlohmann::json;
using test::labels;
using test::numbers;
using test::reportOf;
using test::tableOf;

constexpr double kInfinite = std::numeric_limits<double>::infinity();

TEST(Json, HasItsMembersInOrder) {
  EXPECT_EQ(toJson(test::sample(), {.version = "1.2"}), R"json({
  "schema": "survmeth-report/1",
  "program": "survmeth",
  "version": "1.2",
  "analysis": "life",
  "title": "Survival by treatment",
  "summary": "Half of those on placebo relapsed within 8 weeks, of those on 6-MP within 23.",
  "data": {
    "name": "data/leukemia.csv",
    "digest": "5f2c",
    "rows": {"read": 43, "used": 42, "leftOut": 1}
  },
  "plan": {
    "time": "weeks",
    "event": ["relapse","death"],
    "level": 0.95,
    "ratio": 2.5,
    "bounds": [0,4.5],
    "exact": true,
    "plain": false
  },
  "facts": {
    "n": 42,
    "logLikelihood": -729.4887,
    "limits": "log-log",
    "weighted": false,
    "bound": null
  },
  "tables": {
    "groups": {
      "caption": "Median survival",
      "columns": [
        {"key": "group", "heading": "treatment", "kind": "label"},
        {"key": "n", "heading": "n", "kind": "count"},
        {"key": "median", "heading": "median", "kind": "time"},
        {"key": "lower", "heading": "95% lower", "kind": "time"},
        {"key": "upper", "heading": "95% upper", "kind": "time"}
      ],
      "values": {
        "group": ["6-MP","placebo"],
        "n": [21,21],
        "median": [23,8],
        "lower": [13,4],
        "upper": [null,11]
      }
    },
    "curve": {
      "caption": "Kaplan-Meier table",
      "columns": [
        {"key": "group", "heading": "treatment", "kind": "label"},
        {"key": "time", "heading": "weeks", "kind": "time"},
        {"key": "survival", "heading": "survival", "kind": "probability"}
      ],
      "values": {
        "group": ["6-MP","6-MP","placebo"],
        "time": [6,7,1],
        "survival": [0.857142857142857,0.80672268907563,0.904761904761905]
      }
    },
    "residuals": {
      "caption": "Residuals",
      "columns": [
        {"key": "line", "heading": "line", "kind": "count"},
        {"key": "residual", "heading": "residual", "kind": "estimate"}
      ],
      "values": {
        "line": [2,3],
        "residual": [0.1,null]
      }
    }
  },
  "methods": [
    {
      "text": "Curve: product-limit.",
      "reference": "Kaplan & Meier, JASA 53 (1958) 457-481"
    },
    {
      "text": "Limits: 95% log-log from the Greenwood sum.",
      "reference": ""
    }
  ],
  "notes": [
    {
      "code": "rowsLeftOut",
      "text": "1 of 43 rows left out: missing in \"weeks\" (1)",
      "names": ["weeks"]
    }
  ]
}
)json");
}

TEST(Json, OfNothingIsStillAWholeReport) {
  const json parsed = json::parse(toJson({}, {}));
  EXPECT_EQ(parsed.at("plan"), json::object());
  EXPECT_EQ(parsed.at("facts"), json::object());
  EXPECT_EQ(parsed.at("tables"), json::object());
  EXPECT_EQ(parsed.at("methods"), json::array());
  EXPECT_EQ(parsed.at("notes"), json::array());
  EXPECT_EQ(parsed.at("data").at("rows").at("read"), 0);
}

TEST(Json, EveryNumberReadsBackAsTheSameDouble) {
  const std::vector<double> values = {0.1,
                                      1.0 / 3,
                                      1e-300,
                                      5e-324,
                                      1.7976931348623157e308,
                                      -0.0,
                                      9007199254740991.0,
                                      9007199254740993.0,
                                      1e22,
                                      -123456.75,
                                      2.5e-5,
                                      1e15};
  const json parsed =
      json::parse(toJson(reportOf(tableOf({numbers("x", "", Kind::kEstimate, values)})), {}));
  const json& read = parsed.at("tables").at("table").at("values").at("x");
  ASSERT_EQ(read.size(), values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(read[i].get<double>()),
              std::bit_cast<std::uint64_t>(values[i]))
        << values[i];
  }
}

TEST(Json, WholeNumbersHaveNoPoint) {
  const std::string text = toJson(
      reportOf(tableOf({numbers("x", "", Kind::kCount, {0, -3, 1e6, 9007199254740991.0})})), {});
  EXPECT_NE(text.find("\"x\": [0,-3,1000000,9007199254740991]"), std::string::npos) << text;
}

TEST(Json, WhatDoesNotExistAndWhatIsInfiniteIsNull) {
  const json parsed = json::parse(toJson(
      reportOf(tableOf({numbers("x", "", Kind::kTime, {std::nan(""), kInfinite, -kInfinite})})),
      {}));
  EXPECT_EQ(parsed.at("tables").at("table").at("values").at("x"),
            json({nullptr, nullptr, nullptr}));
}

TEST(Json, EveryLabelComesBack) {
  const json parsed = json::parse(toJson(test::hostile(), {.figures = true}));
  const std::vector<std::string> all = test::hostileLabels();
  const json& values = parsed.at("tables").at("table").at("values").at("label");
  ASSERT_EQ(values.size(), all.size());
  for (std::size_t i = 0; i < all.size(); ++i) {
    const std::string expected =
        all[i] == "not UTF-8: \xFF\xC3" ? "not UTF-8: \xEF\xBF\xBD\xEF\xBF\xBD" : all[i];
    EXPECT_EQ(values[i].get<std::string>(), expected);
    EXPECT_EQ(parsed.at("plan").at("column")[i].get<std::string>(), expected);
  }
}

TEST(Json, FiguresComeOnRequest) {
  EXPECT_FALSE(json::parse(toJson(test::sample(), {})).contains("figures"));
  const json parsed = json::parse(toJson(test::sample(), {.figures = true}));
  EXPECT_EQ(parsed.at("figures"), json::parse(R"json([{
    "id": "survival", "title": "Survival", "caption": "Kaplan-Meier curves of both groups.",
    "panels": [{
      "title": "",
      "x": {"label": "weeks", "scale": "linear", "least": 0},
      "y": {"label": "survival", "scale": "linear"},
      "series": [{"name": "6-MP", "kind": "step", "x": [0, 6, 7],
                  "y": [1, 0.857142857142857, 0.806722689075630], "ticks": [6]}],
      "references": [{"vertical": true, "at": 23, "label": "median"}]}],
    "riskTable": {"title": "At risk", "breaks": [0, 10], "rows": ["6-MP"], "counts": [[21, 15]]}
  }])json"));
}

TEST(Json, ATableOfRowsForPanelsSaysSo) {
  Report report = test::sample();
  report.figures[0].riskTable->eachPanel = true;
  const json figure = json::parse(toJson(report, {.figures = true}))["figures"][0];
  EXPECT_EQ(figure["riskTable"]["eachPanel"], true);
}

TEST(Json, GroupsOfCategoriesGuidesAndHeadingsOfLabelsAreMembersWhereTheyAreSet) {
  Report report = test::sample();
  Panel& panel = report.figures[0].panels[0];
  panel.y.categoryGroups = {"sex", "sex"};
  panel.series[0].guide = true;
  panel.series[0].labelsHeading = "Hazard ratio";
  const json figure = json::parse(toJson(report, {.figures = true}))["figures"][0]["panels"][0];
  EXPECT_EQ(figure["y"]["categoryGroups"], (json{"sex", "sex"}));
  EXPECT_EQ(figure["x"].count("categoryGroups"), 0u);
  EXPECT_EQ(figure["series"][0]["guide"], true);
  EXPECT_EQ(figure["series"][0]["labelsHeading"], "Hazard ratio");
}

TEST(Json, TheSameReportGivesTheSameBytes) {
  EXPECT_EQ(toJson(test::hostile(), {}), toJson(test::hostile(), {}));
}

}  // namespace
}  // namespace survmeth::report
