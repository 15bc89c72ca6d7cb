#include <optional>

#include "analysis/all.h"
#include "analysis/declare.h"
#include "analysis/life/describe.h"
#include "analysis/life/request.h"
#include "analysis/life/run.h"

namespace survmeth::analysis {
namespace {

using engine::Role;
using engine::WeightKind;
using engine::curves::BandKind;
using engine::curves::Flat;
using engine::curves::LowerLimit;
using engine::curves::Scale;

using Declared = Declaring<LifeRequest, LifeAnswer>;

Range timesFrom0() {
  return {
      .least = 0, .ascending = true, .expected = "ascending numbers from 0, separated by commas"};
}

std::vector<std::pair<std::string, Scale>> scales() {
  return {{"log-log", Scale::kLogLog},
          {"log", Scale::kLog},
          {"plain", Scale::kPlain},
          {"logit", Scale::kLogit},
          {"arcsine", Scale::kArcsine}};
}

void addData(Declared& made) {
  made.formula("formula", &LifeRequest::formula,
               "Columns in one: Surv(time, status) ~ group + strata(site); docs/formula.md")
      .column("time", &LifeRequest::time, Role::kTime, numbersFrom(0),
              "Column of times, numbers from 0")
      .column("event", &LifeRequest::event, Role::kEvent, labels(),
              "Column of events: 1, true, yes or dead; censored 0, false, no or alive; or 2 and 1")
      .labels("event-value", &LifeRequest::eventValues, "event",
              "The values that are events, separated by commas; all others are censored", "V,W,...")
      .column("entry", &LifeRequest::entry, Role::kEntry, numbers(),
              "Column of times (with --from of dates) after which rows are at risk")
      .column("from", &LifeRequest::from, Role::kEntry, numbers(),
              "Column of dates at which time begins, in place of --time")
      .column("to", &LifeRequest::to, Role::kTime, numbers(), "Column of dates at which it ends")
      .choice("unit", &LifeRequest::unit,
              {{"days", LifeUnit::kDays},
               {"weeks", LifeUnit::kWeeks},
               {"months", LifeUnit::kMonths},
               {"years", LifeUnit::kYears}},
              "Unit of the times between dates; a year is 365.25 days, a month a twelfth")
      .crossed("group", &LifeRequest::group, Role::kGroup,
               "Column of groups, text or numbers; of several each combination")
      .crossed("strata", &LifeRequest::strata, Role::kStrata,
               "Column of strata within which the groups are compared; of several each combination")
      .column("weight", &LifeRequest::weight, Role::kWeight, numbersFrom(0),
              "Column of frequencies, numbers from 0: the same as --weights")
      .column("weights", &LifeRequest::weights, Role::kWeight, numbersFrom(0),
              "Column with the weights of rows")
      .choice("weights-are", &LifeRequest::weightsAre,
              {{"frequencies", WeightKind::kFrequencies}, {"sampling", WeightKind::kSampling}},
              "What weights mean; sampling implies robust variances")
      .column("cluster", &LifeRequest::cluster, Role::kCluster, labels(),
              "Column of rows that belong together; implies robust variances")
      .column("id", &LifeRequest::id, Role::kSubject, labels(),
              "Column of subjects of several rows, which may not overlap; a cluster where one has "
              "several events")
      .flag("robust", &LifeRequest::robust, "Robust variances, by cluster, subject or row")
      .number("tie-tolerance", &LifeRequest::tieTolerance,
              {.least = 0, .expected = "a number not below 0"},
              "Difference up to which times are one, also in units of their mean; 0: equal only")
      .without("1.49e-08");
}

void addCurves(Declared& made) {
  made.alpha(&LifeRequest::alpha)
      .choice("estimate", &LifeRequest::estimate,
              {{"km", LifeEstimate::kKaplanMeier},
               {"nelson-aalen", LifeEstimate::kNelsonAalen},
               {"fleming-harrington", LifeEstimate::kFlemingHarrington}},
              "Kaplan-Meier, or exp(-H) with the cumulative hazard's treatment of ties")
      .choice("conf", &LifeRequest::limits, scales(), "Limits")
      .choice("conf-lower", &LifeRequest::lowerLimit,
              {{"usual", LowerLimit::kUsual},
               {"modified", LowerLimit::kModified},
               {"peto", LowerLimit::kPeto}},
              "Error of the lower limits, which may grow with censorings")
      .choice("band", &LifeRequest::band,
              {{"none", std::nullopt},
               {"hall-wellner", BandKind::kHallWellner},
               {"equal-precision", BandKind::kEqualPrecision}},
              "Band that holds for all times together; drawn in place of the limits")
      .number("band-from", &LifeRequest::bandFrom, {.least = 0, .expected = "a number not below 0"},
              "Where the band begins", "T")
      .without("the first event")
      .number("band-to", &LifeRequest::bandTo, above(0), "Where it ends", "T")
      .without("the last event with survivors")
      .choice("table", &LifeRequest::table,
              {{"none", LifeTable::kNone},
               {"km", LifeTable::kKaplanMeier},
               {"curves", LifeTable::kCurves},
               {"actuarial", LifeTable::kActuarial}},
              "Also print the table; curves: that of the estimate")
      .without("actuarial with --width or --bounds, else none")
      .number("width", &LifeRequest::width, above(0), "Width of the actuarial table's intervals",
              "W")
      .numbers("bounds", &LifeRequest::bounds, timesFrom0(),
               "Bounds of the actuarial table's intervals");
}

void addReadings(Declared& made) {
  made.choice("flat", &LifeRequest::flat,
              {{"middle", Flat::kMidpoint}, {"first", Flat::kFirst}, {"last", Flat::kLast}},
              "Time of a quantile along which the curve runs")
      .numbers("quantiles", &LifeRequest::quantiles,
               {.least = 0,
                .most = 1,
                .open = true,
                .ascending = true,
                .expected = "ascending numbers between 0 and 1, separated by commas"},
               "Shares that have failed: the times by which they have, with limits")
      .numbers("at", &LifeRequest::at, timesFrom0(),
               "Times at which survival is given, with limits")
      .choice(
          "difference", &LifeRequest::difference,
          {{"none", std::nullopt},
           {"plain", Scale::kPlain},
           {"log", Scale::kLog},
           {"log-log", Scale::kLogLog},
           {"logit", Scale::kLogit},
           {"arcsine", Scale::kArcsine}},
          "Transform of survival at these times whose difference from the first group is tested")
      .number("tau", &LifeRequest::tau, above(0),
              "Time to which mean survival is restricted; the groups against the first", "T")
      .flag("means", &LifeRequest::means,
            "Restricted means, without --tau to the smallest of the groups' last times")
      .number("hazard", &LifeRequest::hazard, above(0), "Bandwidth of the smoothed hazard", "B")
      .flag("rates", &LifeRequest::rates, "Events per person-time, and ratios to the first group")
      .numbers("cuts", &LifeRequest::cuts,
               {.least = 0,
                .open = true,
                .ascending = true,
                .expected = "ascending numbers above 0, separated by commas"},
               "Times that part the rates into intervals (after, to]")
      .numbers("risk-at", &LifeRequest::riskAt, timesFrom0(),
               "Times of the table of those at risk, and of that under the figures")
      .without("the ticks of the figures")
      .texts("risk-rows", &LifeRequest::riskRows, Role::kValue,
             "Rows of the table under the figures: at-risk, events, cumulative-events, censored")
      .without("at-risk");
}

void addComparisons(Declared& made) {
  made.texts("tests", &LifeRequest::tests, Role::kValue,
             "Tests: logrank, gehan-breslow, tarone-ware, peto-peto, modified-peto-peto, fh:P:Q of "
             "Fleming and Harrington, or all: the first five and fh:0:1")
      .without("logrank,gehan-breslow,tarone-ware")
      .flag("trend", &LifeRequest::trend, "Tests against the order of the groups")
      .numbers("scores", &LifeRequest::scores, {.expected = "numbers separated by commas"},
               "Scores of the groups in order, for the tests of trend")
      .choice("pairs", &LifeRequest::pairs, pairChoices(),
              "First test of each two groups, and how their p-values are adjusted")
      .flag("hazard-ratios", &LifeRequest::hazardRatios, "Hazard ratios of two groups")
      .texts("combination", &LifeRequest::combination, Role::kValue,
             "One test of the largest of several weights: usual (fh:0:0, fh:1:0, fh:0:1, fh:1:1), "
             "or up to four tests as --tests names them; of more than two groups each pair")
      .text("permutations", &LifeRequest::permutations, Role::kValue,
            "Also the tests by so many random permutations of the groups within strata, or exact: "
            "by all",
            "N|exact")
      .number("seed", &LifeRequest::seed,
              {.least = 0,
               .most = 9007199254740991,
               .whole = true,
               .expected = "a whole number from 0 to 9007199254740991"},
              "Of the random permutations: the same seed, the same p-values", "N")
      .without("1");
}

// A describer of the declaration that needs no request beside the answer.
template <class Part>
auto of(Part (*describe)(const LifeAnswer&)) {
  return [describe](const LifeAnswer& answer, const LifeRequest&) { return describe(answer); };
}

void addReport(Declared& made) {
  const auto curves = [](const LifeRequest& request) {
    return request.table == LifeTable::kKaplanMeier || request.table == LifeTable::kCurves;
  };
  made.tables({"summary", "tests", "events", "strata", "pairs", "hazardRatios", "combination",
               "combinationTests", "permutation"})
      .longTable("kaplanMeier", of(lifeKaplanMeierTable), curves)
      .longTable("curves", of(lifeCurveTable), curves)
      .tables({"bands", "actuarial", "quantiles", "survivalAt", "survivalContrasts",
               "restrictedMeans", "meanContrasts", "rates", "rateRatios"})
      .longTable("atRisk", of(lifeRiskTable),
                 [](const LifeRequest& request) { return !request.riskAt.empty(); })
      .longTable("hazard", of(lifeHazardTable))
      .figure("survival", of(lifeSurvivalFigure))
      .figure("incidence", of(lifeIncidenceFigure))
      .figure("cumulativeHazard", of(lifeCumulativeHazardFigure))
      .figure("logLog", of(lifeLogLogFigure))
      .figure("hazard", of(lifeHazardFigure));
}

}  // namespace

Declaration lifeDeclaration() {
  auto made = declare<LifeRequest, LifeAnswer>(
      "life", "Survival curves, their medians and the tests that compare them");
  addData(made);
  addCurves(made);
  addReadings(made);
  addComparisons(made);
  addReport(made);
  return made
      .details(
          "The columns stand in options or in a formula. Product-limit curves, Greenwood variance, "
          "log-log limits; the median is where a curve crosses 1/2, its limits where the curve's "
          "limits do. Files always hold the curves' table and that of those at risk.")
      .example("survmeth life data/leukemia.csv --time weeks --event relapse --group treatment")
      .example(
          "survmeth life data/leukemia.csv --time weeks --event relapse --table km --out results "
          "--plot curves.svg")
      .example(
          "survmeth life data/veteran.csv --formula 'Surv(time, status) ~ celltype + strata(trt)' "
          "--means --pairs holm")
      .leastRows(2)
      .check(checkLife)
      .adjustColumns(wantLifeColumns)
      .outlivesData()
      .fit(fitLife)
      .describe(describeLife);
}

}  // namespace survmeth::analysis
