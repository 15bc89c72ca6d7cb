// How the curves were estimated, and what of the data leaves them valid.
#include <string>
#include <utility>
#include <vector>

#include "analysis/life/describe.h"
#include "analysis/limits.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;

report::Method curveMethod(const LifeAnswer& answer) {
  const std::string error = "; standard error: ";
  switch (answer.request.estimate) {
    case LifeEstimate::kKaplanMeier:
      return {
          "curve: product-limit (Kaplan-Meier)" + error + (answer.robust ? "robust" : "Greenwood"),
          "Kaplan & Meier, JASA 53 (1958) 457-481"};
    case LifeEstimate::kNelsonAalen:
      return {"curve: exp(-H), H rises by d / n (Nelson-Aalen)" + error +
                  (answer.robust ? "robust" : "of H, sum of d / n^2"),
              "Aalen, Ann Statist 6 (1978) 701-726"};
    case LifeEstimate::kFlemingHarrington:
      break;
  }
  return {
      "curve: exp(-H), H rises by 1 / n + 1 / (n - 1) + ... + 1 / (n - d + 1) "
      "(Fleming-Harrington)" +
          error + (answer.robust ? "robust" : "of H, sum of the squares"),
      "Fleming & Harrington, Comm Statist 13 (1984) 2469-2486"};
}

std::string robustness(const LifeAnswer& answer) {
  if (!answer.rows.clustered()) return "variances: robust, by row";
  return "variances: robust, by " +
         std::string(answer.rows.clustersAreSubjects ? "subject, " : "cluster, ") +
         text::counted(answer.rows.clusters.labels.size(), "of them", "of them");
}

std::string lowerLimitInWords(curves::LowerLimit lower) {
  if (lower == curves::LowerLimit::kModified) {
    return "; the lower limit widened by sqrt(m / n), m at risk at the last event";
  }
  return lower == curves::LowerLimit::kPeto ? "; the lower limit by Peto's error sqrt((1 - S) / n)"
                                            : "";
}

std::string flatInWords(curves::Flat flat) {
  if (flat == curves::Flat::kFirst) return "the first time where it runs at 1/2";
  return flat == curves::Flat::kLast ? "the last time where it runs at 1/2"
                                     : "the middle where it runs at 1/2";
}

void addBandMethod(const LifeAnswer& answer, report::Report& report) {
  if (answer.bands.empty()) return;
  const bool hallWellner = answer.request.band == curves::BandKind::kHallWellner;
  report.methods.push_back(
      {std::string(lifeBandName(answer)) + " bands: hold for all times of their interval together",
       hallWellner ? "Hall & Wellner, Biometrika 67 (1980) 133-143; Borgan & Liestol, Scand J "
                     "Statist 17 (1990) 35-41"
                   : "Nair, Technometrics 26 (1984) 265-275; Borgan & Liestol, Scand J Statist 17 "
                     "(1990) 35-41"});
}

void addDataMethods(const LifeAnswer& answer, report::Report& report) {
  const LifeRequest& request = answer.request;
  const auto add = [&report](std::string text, std::string reference = "") {
    report.methods.push_back({std::move(text), std::move(reference)});
  };
  if (request.byDates()) {
    add(std::string("times: ") + nameOf(request.unit) + " from " + request.from + " to " +
        request.to +
        (request.unit == LifeUnit::kMonths  ? ", of 365.25 / 12 days"
         : request.unit == LifeUnit::kYears ? ", of 365.25 days"
                                            : ""));
  }
  if (request.tolerance() > 0) {
    add("times: those that differ by no more than " + report::brief(request.tolerance(), 3) +
        ", absolutely or in units of the mean distinct time, are tied");
  }
  if (request.lateEntry()) {
    add("late entry: at risk after " + request.entry + ", up to and including " + request.time);
  }
  if (!request.weightColumn().empty()) {
    add(request.sampling() ? "weights: inverse probabilities of sampling"
                           : "weights: frequencies of the rows");
  }
  if (answer.robust) add(robustness(answer), "Williams, Biometrics 51 (1995) 200-203");
}

}  // namespace

std::string lifeEstimateName(const LifeAnswer& answer) {
  switch (answer.request.estimate) {
    case LifeEstimate::kKaplanMeier:
      return "Kaplan-Meier";
    case LifeEstimate::kNelsonAalen:
      return "Nelson-Aalen exp(-H)";
    case LifeEstimate::kFlemingHarrington:
      break;
  }
  return "Fleming-Harrington exp(-H)";
}

void addLifeMethods(const LifeAnswer& answer, report::Report& report) {
  const LifeRequest& request = answer.request;
  report.methods = {
      curveMethod(answer),
      {"limits: " + report::confidence(request.alpha) + " " + limitsName(request.limits) +
           (answer.robust                                    ? " from the robust variance"
            : request.estimate == LifeEstimate::kKaplanMeier ? " from the Greenwood sum"
                                                             : " from the variance of H") +
           lowerLimitInWords(request.lowerLimit),
       ""},
      {"median: where the curve crosses 1/2, " + flatInWords(request.flat) +
           "; limits: where the curve's limits do; quartiles likewise; follow-up: the median of "
           "the curve with censorings as events",
       "Brookmeyer & Crowley, Biometrics 38 (1982) 29-41; Schemper & Smith, Control Clin Trials 17 "
       "(1996) 343-346"}};
  addBandMethod(answer, report);
  if (!answer.intervals.empty()) {
    report.methods.push_back(
        {"actuarial table: intervals [from, to), the censored at risk for half of theirs; "
         "standard errors: Greenwood, Gehan",
         "Cutler & Ederer, J Chron Dis 8 (1958) 699-712; Gehan, J Chron Dis 21 (1969) 629-644"});
  }
  addDataMethods(answer, report);
}

void addLifeNotes(const LifeAnswer& answer, report::Report& report) {
  const auto add = [&report](const char* code, std::string text,
                             std::vector<std::string> names = {}) {
    report.notes.push_back({code, std::move(text), std::move(names)});
  };
  if (!answer.rows.eventNote.empty()) add("eventCoding", answer.rows.eventNote);
  if (!(answer.events > 0)) {
    add("noEvents", "no row is an event: the curves stay at 1 and there is no median");
  }
  if (!(answer.censored > 0)) add("noneCensored", "every row is an event, none is censored");
  answer.rows.noteWeights(report.notes);
  if (answer.rows.gaps) report.notes.push_back(*answer.rows.gaps);
  if (!answer.rows.several()) return;
  if (!answer.comparison.exists()) {
    return add("noTest", "no comparison test exists: " + answer.comparison.reason);
  }
  for (std::size_t g = 0; g < answer.curves.size(); ++g) {
    const std::string& label = answer.labels()[g];
    if (answer.comparison.included[g]) continue;
    add("groupNotIncluded",
        "the group " + text::quote(label) +
            " has no part in the tests: nobody in it is at risk at an event time",
        {label});
  }
}

}  // namespace survmeth::analysis
