#include "analysis/all.h"
#include "analysis/declare.h"
#include "analysis/life/describe.h"
#include "analysis/life/request.h"
#include "analysis/life/run.h"

namespace survmeth::analysis {

using engine::Role;
using engine::curves::Scale;

Declaration lifeDeclaration() {
  return declare<LifeRequest, LifeAnswer>(
             "life", "Survival curves, their medians and the tests that compare them")
      .column("time", &LifeRequest::time, Role::kTime, numbersFrom(0),
              "Column of times, numbers from 0")
      .required()
      .column("event", &LifeRequest::event, Role::kEvent, labels(),
              "Column of events: 1, true, yes or dead; censored 0, false, no or alive; or 2 and 1")
      .required()
      .labels("event-value", &LifeRequest::eventValues, "event",
              "The values that are events, separated by commas; all others are censored", "V,W,...")
      .crossed("group", &LifeRequest::group, Role::kGroup,
               "Column of groups, text or numbers; of several each combination")
      .column("weight", &LifeRequest::weight, Role::kWeight, numbersFrom(0),
              "Column of frequencies, numbers from 0")
      .alpha(&LifeRequest::alpha)
      .choice("conf", &LifeRequest::limits,
              {{"log-log", Scale::kLogLog}, {"log", Scale::kLog}, {"plain", Scale::kPlain}},
              "Limits")
      .choice("table", &LifeRequest::table,
              {{"none", LifeTable::kNone},
               {"km", LifeTable::kKaplanMeier},
               {"actuarial", LifeTable::kActuarial}},
              "Also print the table")
      .without("actuarial with --width or --bounds, else none")
      .number("width", &LifeRequest::width, above(0), "Width of the actuarial table's intervals",
              "W")
      .numbers("bounds", &LifeRequest::bounds,
               {.least = 0,
                .ascending = true,
                .expected = "ascending numbers from 0, separated by commas"},
               "Bounds of the actuarial table's intervals")
      .numbers("quantiles", &LifeRequest::quantiles,
               {.least = 0,
                .most = 1,
                .open = true,
                .ascending = true,
                .expected = "ascending numbers between 0 and 1, separated by commas"},
               "Shares that have failed: the times by which they have, with limits")
      .numbers("at", &LifeRequest::at,
               {.least = 0,
                .ascending = true,
                .expected = "ascending numbers from 0, separated by commas"},
               "Times at which survival is given, with limits")
      .number("tau", &LifeRequest::tau, above(0),
              "Time to which mean survival is restricted; the groups against the first", "T")
      .details(
          "Product-limit curves, Greenwood variance, log-log limits; the median is where a curve "
          "crosses 1/2, its limits where the curve's limits do. Files always hold the "
          "Kaplan-Meier table.")
      .example("survmeth life data/leukemia.csv --time weeks --event relapse --group treatment")
      .example(
          "survmeth life data/leukemia.csv --time weeks --event relapse --table km --out results "
          "--plot curves.svg")
      .tables({"summary", "tests", "events"})
      .longTable(
          "kaplanMeier", lifeCurveTable,
          [](const LifeRequest& request) { return request.table == LifeTable::kKaplanMeier; })
      .tables({"actuarial", "quantiles", "survivalAt", "restrictedMeans", "meanContrasts"})
      .figure("survival", lifeSurvivalFigure)
      .leastRows(2)
      .check(checkLife)
      .fit(fitLife)
      .describe(describeLife);
}

}  // namespace survmeth::analysis
