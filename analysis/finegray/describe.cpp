// Tables, methods and notes of survmeth finegray.
#include <cmath>
#include <string>
#include <utility>

#include "Dist/Dist"
#include "analysis/estimate.h"
#include "analysis/eventTables.h"
#include "analysis/finegray/finegray.h"
#include "engine/curves/limits.h"
#include "numerics/elementary.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace finegray = engine::finegray;
namespace key = report::key;
using report::Kind;

// A coefficient of one type of event.
struct Row {
  double coef, standardError, z = kNone, pValue = kNone, ratio, lower = kNone, upper = kNone;
};

Row rowOf(double coef, double error, double z) {
  Row row{coef, error, kNone, kNone, numerics::exp(coef)};
  if (!std::isfinite(error)) return row;
  row.z = coef / error;
  row.pValue = 2 * CDFNormalStd(-std::fabs(row.z));
  row.lower = numerics::exp(coef - z * error);
  row.upper = numerics::exp(coef + z * error);
  return row;
}

// One row for each type of event and covariate; `of` gives its coefficient and standard error.
template <class Of>
report::Table coefficientTable(const FineGrayAnswer& answer, const char* id, std::string caption,
                               const char* ratio, Of of) {
  const double z = engine::curves::normalQuantile(1 - answer.alpha);
  std::vector<std::string> events, names;
  std::vector<Row> rows;
  for (const FineGrayOfType& type : answer.types) {
    for (std::size_t j = 0; j < answer.names.size(); ++j) {
      const auto [coef, error] = of(type, j);
      events.push_back(type.label);
      names.push_back(answer.names[j]);
      rows.push_back(rowOf(coef, error, z));
    }
  }
  const std::string level = report::confidence(answer.alpha);
  return report::rowsOf(id, std::move(caption), rows)
      .with(report::labelColumn(key::kEvent, answer.status, std::move(events)))
      .with(report::labelColumn(key::kName, "covariate", std::move(names)))
      .column(key::kCoef, "coef", Kind::kEstimate, &Row::coef)
      .column(key::kStandardError, "std error", Kind::kEstimate, &Row::standardError)
      .column(key::kZ, "z", Kind::kStatistic, &Row::z)
      .column(key::kPValue, "p-value", Kind::kPValue, &Row::pValue)
      .column(key::kHazardRatio, ratio, Kind::kEstimate, &Row::ratio)
      .column(key::kLower, level + " lower", Kind::kEstimate, &Row::lower)
      .column(key::kUpper, level + " upper", Kind::kEstimate, &Row::upper)
      .table();
}

struct Tested {
  std::string event, name;
  double chiSquare, degreesOfFreedom, pValue;
};

report::Table testTable(const FineGrayAnswer& answer) {
  std::vector<Tested> rows;
  for (const FineGrayOfType& type : answer.types) {
    const auto add = [&](const std::string& name, const engine::cox::ChiSquareTest& test) {
      rows.push_back({type.label, name, test.chiSquare, static_cast<double>(test.degreesOfFreedom),
                      test.pValue});
    };
    for (const engine::cox::TermTest& each : type.fit.terms)
      add(answer.terms[each.term], each.test);
    add("all terms", type.fit.wald);
    add("pseudo likelihood ratio", type.fit.likelihoodRatio);
  }
  return report::rowsOf("tests", "Wald tests of terms", rows)
      .column(key::kEvent, answer.status, Kind::kLabel, &Tested::event)
      .column(key::kTest, "term", Kind::kLabel, &Tested::name)
      .test([](const Tested& each) { return each; })
      .table();
}

report::Table fitTable(const FineGrayAnswer& answer) {
  const auto number = [](auto member) {
    return [member](const FineGrayOfType& type) { return static_cast<double>(type.fit.*member); };
  };
  using finegray::Fit;
  return report::rowsOf("fits", "Fits", answer.types)
      .column(key::kEvent, answer.status, Kind::kLabel, &FineGrayOfType::label)
      .column(key::kRows, "rows", Kind::kCount, number(&Fit::rows))
      .column(key::kEvents, "events", Kind::kCount, number(&Fit::events))
      .column(key::kCompeting, "competing", Kind::kCount, number(&Fit::competing))
      .column(key::kNullLogLikelihood, "log-likelihood, null", Kind::kStatistic,
              number(&Fit::logLikelihoodNull))
      .column(key::kLogLikelihood, "log-likelihood", Kind::kStatistic, number(&Fit::logLikelihood))
      .table();
}

std::vector<report::Method> methodsOf(const FineGrayRequest& request) {
  std::vector<report::Method> methods = {
      {"model: proportional subdistribution hazards, the other types competing; events of one time "
       "against the whole risk set (Breslow)",
       "Fine & Gray, JASA 94 (1999) 496-509"},
      {std::string("weights of those with another event: G(t-) / G(exit-), the Kaplan-Meier "
                   "estimate of the censoring") +
           (request.censoring.empty() ? "" : " within " + request.censoring) +
           (request.censoringTies == finegray::CensoringTies::kAtRisk
                ? "; events and censorings of one time beside each other"
                : "; events before censorings of one time") +
           "; where rows enter late, also that of the entries",
       "Geskus, Biometrics 67 (2011) 39-49"}};
  std::string errors = request.errors == finegray::Errors::kEstimatedWeights
                           ? "standard errors: sandwich that counts the estimated censoring curve"
                           : "standard errors: sandwich, the censoring weights taken as known";
  if (!request.cluster.empty()) errors += ", by cluster of " + request.cluster;
  methods.push_back({std::move(errors), ""});
  methods.push_back(incidenceMethod(request.alpha, request.incidenceScale));
  if (request.zph) {
    methods.push_back(
        {"proportional subdistribution hazards: score test of coefficients that change with " +
             fineGrayTime(*request.zph) +
             ", its variance from what each row does to the score; beside it by the information "
             "alone",
         "Zhou, Fine & Laird, Stat Med 32 (2013) 3804-3811; Grambsch & Therneau, Biometrika 81 "
         "(1994) 515-526"});
  }
  if (request.causeSpecific) {
    methods.push_back(
        {"cause-specific: proportional hazards of each type with the others censored, "
         "ties by Efron's method",
         "Prentice et al., Biometrics 34 (1978) 541-554"});
  }
  return methods;
}

report::Table readingTable(const FineGrayAnswer& answer, const FineGrayRequest& request) {
  std::vector<std::string> events, strata;
  std::vector<IncidenceAtTime> all;
  for (const FineGrayOfType& type : answer.types) {
    const auto& codes = type.fit.problem->rows.arrangement.stratumCode;
    for (std::size_t s = 0; s < type.at.size(); ++s) {
      for (const IncidenceAtTime& each : type.at[s]) {
        events.push_back(type.label);
        strata.push_back(answer.strata.empty() ? "all" : answer.strata[codes[s]]);
        all.push_back(each);
      }
    }
  }
  report::Table table =
      report::tableOf("incidenceAt", "Cumulative incidence at the covariates' means",
                      {report::labelColumn(key::kEvent, answer.status, std::move(events))});
  if (!answer.strata.empty()) {
    table.columns.push_back(report::labelColumn(key::kStratum, "stratum", std::move(strata)));
  }
  table.columns.push_back(
      report::columnOf(key::kTime, "time", Kind::kTime, all, &IncidenceAtTime::time));
  addIncidenceColumns(all, request.alpha, table);
  return table;
}

}  // namespace

report::Report describeFineGray(const FineGrayAnswer& answer, const FineGrayRequest& request) {
  report::Report report;
  report.title = "Subdistribution hazards (Fine and Gray)";
  for (const FineGrayOfType& type : answer.types) {
    if (!report.summary.empty()) report.summary += " ";
    report.summary +=
        type.label + ": " + text::counted(type.fit.events, "event", "events") +
        ". All coefficients 0? Wald test: " + report::pValueInWords(type.fit.wald.pValue) + ".";
  }
  report.facts = {censorFact(answer.event), report::levelFact(answer.alpha)};
  report.tables = {fitTable(answer),
                   coefficientTable(answer, "coefficients",
                                    "Coefficients and subdistribution hazard ratios", "ratio",
                                    [](const FineGrayOfType& type, std::size_t j) {
                                      return std::pair(type.fit.coefficients[j],
                                                       type.fit.standardError(j));
                                    }),
                   testTable(answer)};
  if (request.zph) report.tables.push_back(fineGrayProportionality(answer));
  if (!request.incidenceTimes.empty()) report.tables.push_back(readingTable(answer, request));
  if (request.causeSpecific) {
    report.tables.push_back(coefficientTable(
        answer, "causeSpecific", "Coefficients and ratios of the cause-specific hazards",
        "hazard ratio", [](const FineGrayOfType& type, std::size_t j) {
          return std::pair(type.causeSpecific->coefficients[j],
                           type.causeSpecific->standardError(j));
        }));
  }
  report.methods = methodsOf(request);
  if (!answer.event.censored) report.notes.push_back({"noneCensored", "no row is censored"});
  if (answer.types.empty()) {
    report.notes.push_back({"noEvents", "no row is an event: there is nothing to fit"});
  } else if (!answer.event.competing()) {
    report.notes.push_back(
        {"oneEventType", "there is only one type of event: nothing competes with it"});
  }
  std::size_t unknown = 0;
  for (const FineGrayOfType& type : answer.types) {
    for (const auto& curve : type.at) {
      for (const IncidenceAtTime& each : curve) unknown += std::isnan(each.incidence) ? 1 : 0;
    }
  }
  if (unknown > 0) {
    report.notes.push_back(
        {"afterFollowUp", text::counted(unknown, "incidence is", "incidences are") +
                              " unknown: the time is after the last of the stratum"});
  }
  return report;
}

}  // namespace survmeth::analysis
